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
        QTest::newRow("hidden") << u"\u2028\u2029\u202e\ufeff\u200b\u200c"_s
                                << QByteArray("\"\\u2028\\u2029\\u202e\\ufeff\\u200b\xE2\x80\x8C\"");
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

    void linesForEachReader_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("terminal");
        QTest::addColumn<QByteArray>("log");
        QTest::addColumn<QByteArray>("program");
        const auto row = [](const char *what, const QString &text, const QByteArray &terminal, const QByteArray &log,
                             const QByteArray &program) { QTest::newRow(what) << text << terminal << log << program; };
        const QString note = u"\U0001F3B5"_s;
        row("plain", u"añ/夜"_s + note, "añ/夜\xF0\x9F\x8E\xB5", "añ/夜\xF0\x9F\x8E\xB5", "añ/夜\xF0\x9F\x8E\xB5");
        row("empty", {}, "", "", "");
        row("backslashes stay", u"C:\\new"_s, "C:\\new", "C:\\new", "C:\\new");
        row("line breaks", u"a\nb\r\n"_s, "a\\nb\\r\\n", "a\\nb\\r\\n", "a\\nb\\r\\n");
        row("tab", u"a\tb"_s, "a\\tb", "a\\tb", "a\tb");
        row("escape sequence", u"\u001b[31m"_s, "\\x1b[31m", "\\x1b[31m", "\x1b[31m");
        row("zero and DEL", QString(QChar(0)) + u'\x7f', "\\x00\\x7f", "\\x00\\x7f", QByteArray("\0\x7f", 2));
        row("C1", u"\u0085\u009b"_s, "\\u0085\\u009b", "\\u0085\\u009b", "\xC2\x85\xC2\x9B");
        row("separators", u"\u2028\u2029"_s, "\\u2028\\u2029", "\\u2028\\u2029", "\xE2\x80\xA8\xE2\x80\xA9");
        row("direction", u"\u202Egpj.exe"_s, "\\u202egpj.exe", "\\u202egpj.exe", "\xE2\x80\xAEgpj.exe");
        row("joiners stay", u"می\u200Cخواهم\u200D\uFE0F"_s, u"می\u200Cخواهم\u200D\uFE0F"_s.toUtf8(),
            u"می\u200Cخواهم\u200D\uFE0F"_s.toUtf8(), u"می\u200Cخواهم\u200D\uFE0F"_s.toUtf8());
        row("bytes", platform::decodePath(QByteArray("\x9B\xE9")), "\\x9b\\xe9", "\\x9b\xE9", "\x9B\xE9");
        row("half a pair", QString(QChar(0xD83C)), "\\ud83c", "\\ud83c", "\xEF\xBF\xBD");
    }
    void linesForEachReader()
    {
        QFETCH(QString, text);
        QTEST(encodedLine(text, Reader::Terminal), "terminal");
        QTEST(encodedLine(text, Reader::Log), "log");
        QTEST(encodedLine(text, Reader::Program), "program");
        QTEST(printable(text).toUtf8(), "terminal");
    }

    void nothingThatCommandsOrHidesIsLeft()
    {
        for (int unit = 0; unit <= 0xFFFF; ++unit) {
            const QString shown = printable(QString(QChar(static_cast<char16_t>(unit))));
            const bool isOdd = unit < 0x20 || (unit >= 0x7F && unit < 0xA0) || unit == 0x61C || unit == 0x200B ||
                               unit == 0x200E || unit == 0x200F || (unit >= 0x2028 && unit <= 0x202E) ||
                               (unit >= 0x2066 && unit <= 0x2069) || unit == 0xFEFF ||
                               (unit >= 0xD800 && unit <= 0xDFFF);
            QCOMPARE(shown.startsWith(u'\\'), isOdd || unit == u'\\');
            QCOMPARE(shown.size() > 1, isOdd);
        }
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
