// SPDX-License-Identifier: GPL-3.0-or-later
// A change of an ini document touches one line and keeps every other byte. Every text round-trips. A line typed by hand
// means what it says.

#include "core/app/inidocument.h"
#include "core/app/settings.h"

#include <QRandomGenerator>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;

namespace {

constexpr QStringView Section = u"ini";

/// The document for bytes that are text.
IniDocument parsed(const QByteArray &bytes)
{
    const std::optional<IniDocument> document = IniDocument::parse(bytes);
    if (!document)
        qFatal("these bytes are no text");
    return *document;
}

QString value(const IniDocument &document, QStringView key)
{
    return document.value(Section, key);
}

} // namespace

class TestIniDocument : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bytesStayAsTheyAre();
    void zeroBytesAreNoText();
    void randomValues();
    void valuesTypedByHand_data();
    void valuesTypedByHand();
    void keysTypedByHand();
    void theLastOfEqualKeysCounts();
    void onlyTheLinesOfWrittenKeysChange();
    void windowsLineEndsStay();
    void aNewKeyGoesToTheEndOfItsSection();
    void aNewSectionGoesToTheEndOfTheFile();
};

void TestIniDocument::bytesStayAsTheyAre()
{
    for (const QByteArray &bytes : {QByteArray(), QByteArray("\n"), QByteArray("\r\n\r\r\n"), QByteArray("[ini"),
             QByteArray("[ini]\ntags=1"), QByteArray("\xEF\xBB\xBF"), QByteArray("\xff\xfe=\x80\n")})
        QCOMPARE(parsed(bytes).toBytes(), bytes);
}

void TestIniDocument::zeroBytesAreNoText()
{
    QVERIFY(!IniDocument::parse(QByteArray(1, '\0')));
    QVERIFY(!IniDocument::parse(QByteArray("[ini]\ntags=1\n") + '\0'));
    QVERIFY(!IniDocument::parse(QByteArray("\xff\xfe[\0i\0", 6)));
}

void TestIniDocument::randomValues()
{
    const QString alphabet = u" \t\n\r\"\\@,;#=[]()%u0041escapdé🎵\u0085\ufeff"_s + QChar(0xd83d) + QChar(0xde00);
    QRandomGenerator random(4);
    for (int i = 0; i < 20000; ++i) {
        QString text = random.bounded(4) == 0 ? u"@escaped("_s : QString();
        for (int length = random.bounded(12); length > 0; --length)
            text += alphabet[random.bounded(int(alphabet.size()))];
        IniDocument document;
        document.setValue(Section, settingskey::RenameVar, text);
        document.setValue(Section, settingskey::Tags, u"2"_s);
        const IniDocument read = parsed(document.toBytes());
        QCOMPARE(read.value(Section, settingskey::RenameVar), text);
        QCOMPARE(read.value(Section, settingskey::Tags), u"2"_s);
    }
}

void TestIniDocument::valuesTypedByHand_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("value");

    QTest::newRow("an unquoted comma list") << QByteArray("ruta=/a, b,c") << u"/a, b,c"_s;
    QTest::newRow("backslashes") << QByteArray("ruta=C:\\Music\\new") << u"C:\\Music\\new"_s;
    QTest::newRow("backslashes in quotes") << QByteArray("ruta=\"C:\\Music\\new\"") << u"C:\\Music\\new"_s;
    QTest::newRow("blanks around") << QByteArray("  ruta =  /a b\t ") << u"/a b"_s;
    QTest::newRow("quotes keep blanks") << QByteArray("ruta=\" a \"") << u" a "_s;
    QTest::newRow("one quote") << QByteArray("ruta=\"a") << u"\"a"_s;
    QTest::newRow("no comment behind a value") << QByteArray("ruta=/a;b # c") << u"/a;b # c"_s;
    QTest::newRow("a bad escape stands as it is") << QByteArray("ruta=@escaped(\\u00zz)") << u"@escaped(\\u00zz)"_s;
    QTest::newRow("a cut escape stands as it is") << QByteArray("ruta=@escaped(a\\u00)") << u"@escaped(a\\u00)"_s;
    QTest::newRow("Latin-1") << QByteArray("ruta=/M\xfasica") << u"/Música"_s;
    QTest::newRow("nothing") << QByteArray("ruta=") << QString();
    QTest::newRow("in a comment") << QByteArray("; ruta=/a") << QString();
    QTest::newRow("another case is another key") << QByteArray("Ruta=/a") << QString();
    QTest::newRow("no equals") << QByteArray("ruta") << QString();
}

void TestIniDocument::valuesTypedByHand()
{
    QFETCH(QByteArray, line);
    IniDocument document = parsed("[ini]\n" + line + "\ntags=4\n");
    QTEST(value(document, settingskey::Ruta), "value");
    QCOMPARE(value(document, settingskey::Tags), u"4"_s);
}

void TestIniDocument::keysTypedByHand()
{
    IniDocument document = parsed(
        "\xEF\xBB\xBF[ ini ] ; ours\r\nrename var=%1 - %2\r\ndir%20rename%20var = %3\r\n[other]\r\nrename var=x\r\n");
    QCOMPARE(value(document, settingskey::RenameVar), u"%1 - %2"_s);
    QCOMPARE(value(document, settingskey::DirRenameVar), u"%3"_s);
    document.setValue(Section, settingskey::DirRenameVar, u"%4"_s);
    QCOMPARE(
        document.toBytes(), QByteArray("\xEF\xBB\xBF[ ini ] ; ours\r\nrename var=%1 - %2\r\ndir%20rename%20var =%4\r\n"
                                       "[other]\r\nrename var=x\r\n"));
}

void TestIniDocument::theLastOfEqualKeysCounts()
{
    IniDocument document = parsed("[ini]\ntags=1\n[x]\ntags=5\n[ini]\ntags=2\n");
    QCOMPARE(value(document, settingskey::Tags), u"2"_s);
    document.setValue(Section, settingskey::Tags, u"3"_s);
    QCOMPARE(document.toBytes(), QByteArray("[ini]\ntags=1\n[x]\ntags=5\n[ini]\ntags=3\n"));
    QCOMPARE(value(document, settingskey::Tags), u"3"_s);
}

void TestIniDocument::onlyTheLinesOfWrittenKeysChange()
{
    const QByteArray before =
        "# head\n\nstray line without meaning\n[foreign]\ntags=9\n; c\n[ini]\n  tags = 1\n"
        "unknown key=@ByteArray(\\x1)\n\n; ruta=old\nruta=/old\nbroken [\xff\xfe line\n[last]\nx=\"";
    QByteArray after = before;
    after.replace("ruta=/old\n", "ruta=/new\n");
    IniDocument document = parsed(before);
    QCOMPARE(value(document, settingskey::Tags), u"1"_s);
    document.setValue(Section, settingskey::Ruta, u"/new"_s);
    QCOMPARE(document.toBytes(), after);
}

void TestIniDocument::windowsLineEndsStay()
{
    IniDocument document = parsed("[ini]\r\ntags=1\r\nruta=C:\\a\r\n");
    QCOMPARE(value(document, settingskey::Ruta), u"C:\\a"_s);
    document.setValue(Section, settingskey::Tags, u"2"_s);
    document.setValue(Section, settingskey::Idioma, u"fr"_s);
    QCOMPARE(document.toBytes(), QByteArray("[ini]\r\ntags=2\r\nruta=C:\\a\r\nidioma=fr\r\n"));
}

void TestIniDocument::aNewKeyGoesToTheEndOfItsSection()
{
    IniDocument document = parsed("[ini]\ntags=1\n\n\n[other]\na=b");
    document.setValue(Section, settingskey::Idioma, u"es"_s);
    QCOMPARE(document.toBytes(), QByteArray("[ini]\ntags=1\nidioma=es\n\n\n[other]\na=b\n"));
}

void TestIniDocument::aNewSectionGoesToTheEndOfTheFile()
{
    IniDocument document = parsed("[other]\na=b");
    document.setValue(Section, settingskey::Idioma, u"es"_s);
    QCOMPARE(document.toBytes(), QByteArray("[other]\na=b\n\n[ini]\nidioma=es\n"));
}

QTEST_GUILESS_MAIN(TestIniDocument)
#include "tst_inidocument.moc"
