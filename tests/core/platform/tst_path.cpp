// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: every sequence of bytes that can be a file's name survives decodePath and encodePath, valid UTF-8 reads as
// the text it is, and no two names decode to the same path. folderPrefix and nameOf split a path without loss; folderOf
// climbs to the root and stays there; withoutEndSeparator never turns a root into something else; isPlainName is true
// only for names that stay in their folder.

#include "core/platform/path.h"
#include "support/nativepath.h"

#include <QtTest>

#include <random>
#include <set>

using namespace ravlin::platform;
using ravlin::test::native;

class TestPath : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void decodesText_data();
    void decodesText();
    void keepsInvalidBytes_data();
    void keepsInvalidBytes();
    void everyByteRoundTrips();
    void everyPairOfBytesRoundTripsDistinctly();
    void everyCodePointRoundTrips();
    void randomBytesRoundTrip();
    void agreesWithQtOnValidText();
    void encodesForeignSurrogatesVisibly();
    void splitsPaths_data();
    void splitsPaths();
    void separatorsAtTheEnd_data();
    void separatorsAtTheEnd();
    void plainNamesStayInTheirFolder_data();
    void plainNamesStayInTheirFolder();
};

void TestPath::decodesText_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QByteArray("") << QString();
    QTest::newRow("ascii") << QByteArray("01 - Song.mp3") << QStringLiteral("01 - Song.mp3");
    QTest::newRow("control characters") << QByteArray("a\n\t\x7f") << QStringLiteral("a\n\t\u007f");
    QTest::newRow("accents") << QByteArray("Caf\xC3\xA9") << QStringLiteral("Café");
    QTest::newRow("decomposed stays decomposed") << QByteArray("e\xCC\x81") << QStringLiteral("e\u0301");
    QTest::newRow("Japanese") << QByteArray("\xE6\xAD\x8C") << QStringLiteral("歌");
    QTest::newRow("emoji") << QByteArray("\xF0\x9F\x8E\xB5") << QStringLiteral("🎵");
    QTest::newRow("last code point") << QByteArray("\xF4\x8F\xBF\xBF") << QStringLiteral("\U0010FFFF");
}

void TestPath::decodesText()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, text);
    QCOMPARE(decodePath(bytes), text);
    QCOMPARE(encodePath(text), bytes);
}

void TestPath::keepsInvalidBytes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");
    const auto escaped = [](const QByteArray &bytes) {
        QString text;
        for (const char c : bytes)
            text += QChar(static_cast<char16_t>(0xDC00 + static_cast<uchar>(c)));
        return text;
    };
    const auto row = [&](const char *name, const QByteArray &bytes) {
        QTest::newRow(name) << bytes << escaped(bytes);
        QTest::newRow(qPrintable(QString::fromLatin1(name) + QStringLiteral(", inside a name")))
            << ("a" + bytes + ".mp3") << QString(u'a' + escaped(bytes) + QStringLiteral(".mp3"));
    };
    row("Latin-1 letter", "\xE9");
    row("lone continuation", "\x80");
    row("overlong slash, two bytes", "\xC0\xAF");
    row("overlong slash, three bytes", "\xE0\x80\xAF");
    row("overlong slash, four bytes", "\xF0\x80\x80\xAF");
    row("overlong zero", "\xC0\x80");
    row("encoded high surrogate", "\xED\xA0\x80");
    row("encoded surrogate pair", "\xED\xA0\xBC\xED\xBE\xB5");
    row("encoded escape", "\xED\xB2\x80");
    row("beyond the last code point", "\xF4\x90\x80\x80");
    row("five-byte form", "\xF8\x88\x80\x80\x80");
    row("bytes that never occur", "\xFE\xFF");
    row("truncated two-byte form", "\xC3");
    row("truncated three-byte form", "\xE6\xAD");
    row("truncated four-byte form", "\xF0\x9F\x8E");
}

void TestPath::keepsInvalidBytes()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, text);
    QCOMPARE(decodePath(bytes), text);
    QCOMPARE(encodePath(text), bytes);
}

void TestPath::everyByteRoundTrips()
{
    QByteArray all;
    for (int byte = 0; byte < 256; ++byte) {
        const QByteArray one(1, static_cast<char>(byte));
        QCOMPARE(encodePath(decodePath(one)), one);
        all += one;
    }
    QCOMPARE(encodePath(decodePath(all)), all);
}

void TestPath::everyPairOfBytesRoundTripsDistinctly()
{
    std::set<QString> texts;
    for (int pair = 0; pair < 0x10000; ++pair) {
        const QByteArray bytes{
            QByteArray(1, static_cast<char>(pair >> 8)) + QByteArray(1, static_cast<char>(pair & 0xFF))};
        const QString text = decodePath(bytes);
        QCOMPARE(encodePath(text), bytes);
        texts.insert(text);
    }
    QCOMPARE(texts.size(), size_t(0x10000));
}

void TestPath::everyCodePointRoundTrips()
{
    for (char32_t codePoint = 0; codePoint <= 0x10FFFF; ++codePoint) {
        if (QChar::isSurrogate(codePoint))
            continue;
        const QString text = QString::fromUcs4(&codePoint, 1);
        const QByteArray bytes = encodePath(text);
        if (bytes != text.toUtf8() || decodePath(bytes) != text)
            QFAIL(qPrintable(QStringLiteral("U+%1").arg(uint(codePoint), 0, 16)));
    }
}

void TestPath::randomBytesRoundTrip()
{
    // Mostly bytes that begin or continue sequences, so that all kinds of broken sequences occur.
    std::mt19937 random(20240229);
    const QByteArray frequent("a/\x80\xBF\xA0\x9F\xC2\xC3\xE0\xED\xEF\xF0\xF4\xF5\xFF");
    for (int round = 0; round < 200'000; ++round) {
        QByteArray bytes(static_cast<qsizetype>(random() % 12), Qt::Uninitialized);
        for (char &byte : bytes)
            byte = random() % 4 == 0 ? static_cast<char>(random() & 0xFF)
                                     : frequent.at(static_cast<qsizetype>(random() % size_t(frequent.size())));
        const QByteArray back = encodePath(decodePath(bytes));
        if (back != bytes)
            QFAIL(bytes.toHex().constData());
    }
}

void TestPath::agreesWithQtOnValidText()
{
    std::mt19937 random(7);
    for (int round = 0; round < 20'000; ++round) {
        QString text;
        for (int i = 0; i < 8; ++i) {
            const auto codePoint = static_cast<char32_t>(random() % 0x110000);
            if (!QChar::isSurrogate(codePoint))
                text += QString::fromUcs4(&codePoint, 1);
        }
        QCOMPARE(encodePath(text), text.toUtf8());
        QCOMPARE(decodePath(text.toUtf8()), text);
    }
}

void TestPath::encodesForeignSurrogatesVisibly()
{
    // decodePath never makes these: no name on disk could stand for them.
    const QByteArray replacement("\xEF\xBF\xBD");
    QCOMPARE(encodePath(QString(QChar(0xD800))), replacement);
    QCOMPARE(encodePath(QString(QChar(0xDC7F))), replacement);
    QCOMPARE(encodePath(QString(QChar(0xDD00))), replacement);
    QCOMPARE(encodePath(QString(QChar(0xD83C)) + u'x'), replacement + "x");
}

constexpr bool HasDrives = Separator == u'\\';

void TestPath::splitsPaths_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("prefix");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("folder");
    const auto row = [](const char *tag, const char *path, const char *prefix, const char *name, const char *folder) {
        const auto text = [](const char *bytes) { return native(QString::fromUtf8(bytes)); };
        QTest::newRow(tag) << text(path) << text(prefix) << text(name) << text(folder);
    };
    row("in folders", "/music/cd1/Song.mp3", "/music/cd1/", "Song.mp3", "/music/cd1");
    row("in the root", "/Song.mp3", "/", "Song.mp3", "/");
    row("the root", "/", "/", "", "/");
    row("relative", "cd1/Song.mp3", "cd1/", "Song.mp3", "cd1");
    row("a bare name", "Song.mp3", "", "Song.mp3", ".");
    row("here", ".", "", ".", ".");
    if (!HasDrives)
        return;
    row("in a drive's root", "C:/Song.mp3", "C:/", "Song.mp3", "C:/");
    row("a drive's root", "C:/", "C:/", "", "C:/");
    row("in a share", "//server/share/Song.mp3", "//server/share/", "Song.mp3", "//server/share");
    row("a share", "//server/share", "//server/", "share", "//server/share");
}

void TestPath::splitsPaths()
{
    QFETCH(QString, path);
    QFETCH(QString, prefix);
    QFETCH(QString, name);
    QFETCH(QString, folder);
    QCOMPARE(nameStart(path), prefix.size());
    QCOMPARE(folderPrefix(path), prefix);
    QCOMPARE(nameOf(path), name);
    QCOMPARE(folderOf(path), folder);
    if (!name.isEmpty() && !prefix.isEmpty() && folder != path)
        QCOMPARE(inFolder(folder, name), path);
}

void TestPath::separatorsAtTheEnd_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("without");
    QTest::addColumn<QString>("with");
    const auto row = [](const char *path, const char *without, const char *with) {
        const auto text = [](const char *bytes) { return native(QString::fromUtf8(bytes)); };
        QTest::newRow(path) << text(path) << text(without) << text(with);
    };
    row("/music", "/music", "/music/");
    row("/music/", "/music", "/music/");
    row("/music//", "/music", "/music//");
    row("/", "/", "/");
    row("music/", "music", "music/");
    if (!HasDrives)
        return;
    row("C:/", "C:/", "C:/");
    row("C:/music/", "C:/music", "C:/music/");
    row("//server/share/", "//server/share", "//server/share/");
}

void TestPath::separatorsAtTheEnd()
{
    QFETCH(QString, path);
    QFETCH(QString, without);
    QFETCH(QString, with);
    QCOMPARE(withoutEndSeparator(path), without);
    QCOMPARE(withEndSeparator(path), with);
    QCOMPARE(inFolder(path, QStringLiteral("a.mp3")), with + QStringLiteral("a.mp3"));
}

void TestPath::plainNamesStayInTheirFolder_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("isPlain");
    QTest::newRow("a name") << QStringLiteral("Song.mp3") << true;
    QTest::newRow("three dots") << QStringLiteral("...") << true;
    QTest::newRow("empty") << QString() << false;
    QTest::newRow("here") << QStringLiteral(".") << false;
    QTest::newRow("above") << QStringLiteral("..") << false;
    QTest::newRow("slash") << QStringLiteral("a/b") << false;
    QTest::newRow("zero") << QStringLiteral("a") + QChar(0) + QStringLiteral("b") << false;
    QTest::newRow("backslash") << QStringLiteral("a\\b") << !HasDrives;
    QTest::newRow("colon") << QStringLiteral("C:b") << !HasDrives;
}

void TestPath::plainNamesStayInTheirFolder()
{
    QFETCH(QString, name);
    QFETCH(bool, isPlain);
    QCOMPARE(isPlainName(name), isPlain);
}

QTEST_APPLESS_MAIN(TestPath)
#include "tst_path.moc"
