// SPDX-License-Identifier: GPL-3.0-or-later
/// Contract: whatever a file's name or tag holds, JSON is valid UTF-8 and decodes to the same text, a line of fields
/// stays one line, and nothing commands a terminal.
#include "cli/text.h"
#include "core/platform/filesystem.h"
#include "core/platform/standardstreams.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

using namespace Qt::StringLiterals;

namespace ravlin::cli {

namespace {

QByteArray json(QStringView text)
{
    QByteArray result;
    appendJsonString(result, text);
    return result;
}

} // namespace

class TestText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { platform::prepareStandardStreams(); }

    void jsonString_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("empty") << QString() << QByteArray("\"\"");
        QTest::newRow("plain") << u"a/b c"_s << QByteArray("\"a/b c\"");
        QTest::newRow("quotes and backslashes") << u"\"\\\""_s << QByteArray("\"\\\"\\\\\\\"\"");
        QTest::newRow("line ends") << u"a\r\n\tb"_s << QByteArray("\"a\\r\\n\\tb\"");
        QTest::newRow("controls") << u"\u0001\u001f\u007f\u009b"_s << QByteArray("\"\\u0001\\u001f\\u007f\\u009b\"");
        QTest::newRow("zero") << QString(QChar(0)) << QByteArray("\"\\u0000\"");
        QTest::newRow("beyond ASCII") << u"ñ 夜"_s << QByteArray("\"ñ 夜\"");
        QTest::newRow("beyond the basic plane") << u"\U0001F3B5"_s << QByteArray("\"\xF0\x9F\x8E\xB5\"");
        QTest::newRow("byte of a name") << platform::decodePath(QByteArray("a\xFF.mp3"))
                                        << QByteArray("\"a\\udcff.mp3\"");
        QTest::newRow("high half alone") << QString(QChar(0xD83C)) + u'x' << QByteArray("\"\\ud83cx\"");
        QTest::newRow("high half at the end") << QString(QChar(0xD83C)) << QByteArray("\"\\ud83c\"");
        QTest::newRow("low half behind a pair")
            << u"\U0001F3B5"_s + QChar(0xDC80) << QByteArray("\"\xF0\x9F\x8E\xB5\\udc80\"");
    }
    void jsonString()
    {
        QFETCH(QString, text);
        QFETCH(QByteArray, expected);
        QCOMPARE(json(text), expected);
        QVERIFY(json(text).isValidUtf8());
    }

    void jsonComesBackForEveryUnit()
    {
        QString text;
        for (char32_t unit = 0; unit < 0xD800; ++unit)
            text += QChar(static_cast<char16_t>(unit));
        QJsonParseError error;
        const QJsonDocument parsed = QJsonDocument::fromJson('[' + json(text) + ']', &error);
        QCOMPARE(error.error, QJsonParseError::NoError);
        QCOMPARE(parsed.array().first().toString(), text);
    }

    void fieldsStayOnTheirLine_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("plain") << u"a b"_s << QByteArray("a b");
        QTest::newRow("tab and line ends") << u"a\tb\nc\rd"_s << QByteArray("a\\tb\\nc\\rd");
        QTest::newRow("backslash") << u"a\\tb"_s << QByteArray("a\\\\tb");
        QTest::newRow("bytes of a name") << platform::decodePath(QByteArray("\xE9.mp3")) << QByteArray("\xE9.mp3");
    }
    void fieldsStayOnTheirLine()
    {
        QFETCH(QString, text);
        QFETCH(QByteArray, expected);
        QCOMPARE(tabSeparatedField(text), expected);
    }

    void terminalIsNotCommanded()
    {
        const QString text = u"a\u001b[31m\u009b\n"_s + platform::decodePath(QByteArray("\x9B")) + u"\U0001F3B5"_s;
        QCOMPARE(printable(text), u"a\uFFFD[31m\uFFFD\uFFFD\uFFFD\U0001F3B5"_s);
        QCOMPARE(encoded(text, true), u"a\uFFFD[31m\uFFFD\n\uFFFD\U0001F3B5"_s.toUtf8());
        QCOMPARE(encoded(text, false), "a\x1b[31m\xC2\x9B\n\x9B" + u"\U0001F3B5"_s.toUtf8());
    }

    void width_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("columns");
        QTest::newRow("ASCII") << u"abc"_s << 3;
        QTest::newRow("accents") << u"Ñandú"_s << 5;
        QTest::newRow("combining mark") << u"e\u0301"_s << 1;
        QTest::newRow("Japanese") << u"夜の図書館"_s << 10;
        QTest::newRow("emoji") << u"\U0001F3B5"_s << 2;
        QTest::newRow("control") << u"\u0007"_s << 0;
    }
    void width()
    {
        QFETCH(QString, text);
        QFETCH(int, columns);
        QCOMPARE(displayWidth(text), columns);
    }
};

} // namespace ravlin::cli

QTEST_APPLESS_MAIN(ravlin::cli::TestText)
#include "tst_text.moc"
