// SPDX-License-Identifier: GPL-3.0-or-later
// Ordinary text is shown as it is. What could break a line, turn the text around it, or take long to lay out is
// replaced or cut, and no half of a character is left over.

#include "core/app/showntext.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;

class TestShownText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void ordinaryTextStays_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << QString();
        QTest::newRow("markup") << u"<b>R&B</b> &lt; \"x\" 100 %1"_s;
        QTest::newRow("accents") << u"Ñandú – café 𝄞"_s;
        QTest::newRow("Hebrew with marks") << u"שלום\u200F!\u200E \u061C"_s;
        QTest::newRow("joiners") << u"می\u200Cخواهم 👩\u200D👧\uFE0F"_s;
        QTest::newRow("as long as may be") << QString(MostLetters, u'w');
    }
    void ordinaryTextStays()
    {
        QFETCH(QString, text);
        QCOMPARE(shownLine(text), text);
        QCOMPARE(shownLines(text), text);
    }

    void oneLineHasNoControlCharacters()
    {
        QCOMPARE(shownLine(u"a\nb\rc\td"_s), u"a\u21B5b\u21B5c d"_s);
        QCOMPARE(shownLine(QString(QChar(0)) + u"\u001B[31m\u007F"_s), u"\uFFFD\uFFFD[31m\uFFFD"_s);
        QCOMPARE(shownLine(u"a\u0085\u009Fb\u2028c\u2029"_s), u"a\uFFFD\uFFFDb\uFFFDc\uFFFD"_s);
    }

    void whatTurnsTheTextAroundItIsShown()
    {
        for (const QChar code : u"\u202A\u202B\u202C\u202D\u202E\u2066\u2067\u2068\u2069"_s) {
            QCOMPARE(shownLine(u"a"_s + code + u"3pm"_s), u"a\uFFFD3pm"_s);
            QCOMPARE(shownLines(u"a"_s + code + u"3pm"_s), u"a\uFFFD3pm"_s);
        }
    }

    void whatIsNotUnicodeIsReplaced()
    {
        QString broken = u"caf"_s;
        broken += QChar(0xDCE9);
        broken += u"𝄞"_s;
        broken += QChar(0xD834);
        QCOMPARE(shownLine(broken), u"caf\uFFFD𝄞\uFFFD"_s);
        QCOMPARE(shownLines(broken), u"caf\uFFFD𝄞\uFFFD"_s);
    }

    void aLongLineLosesItsMiddle()
    {
        QCOMPARE(shownLine(u"0123456789"_s, 10), u"0123456789"_s);
        QCOMPARE(shownLine(u"0123456789a"_s, 10), u"01234…789a"_s);
        QCOMPARE(shownLine(QString(16 << 20, u'\n')).size(), MostLetters);
    }

    void noPairIsCutInHalf()
    {
        const QString clefs = u"𝄞"_s.repeated(1000);
        for (qsizetype most = 4; most < 30; ++most) {
            for (const QString &text : {clefs, u'x' + clefs, clefs + u'x'}) {
                for (const QString &shown : {shownLine(text, most), shownLines(text, most)}) {
                    QVERIFY(shown.isValidUtf16());
                    QVERIFY(!shown.contains(QChar::ReplacementCharacter));
                    QVERIFY(shown.size() <= most);
                    QVERIFY(shown.size() >= most - 2);
                    QCOMPARE(shown.count(u'…'), 1);
                }
            }
        }
    }

    void severalLinesStayAndLoseTheirEnd()
    {
        QCOMPARE(shownLines(u"a\nb\rc\td\n"_s), u"a\nb\u21B5c d\n"_s);
        QCOMPARE(shownLines(u"0123456789a"_s, 10), u"012345678…"_s);
        QCOMPARE(shownLines(u"a\nb\nc"_s, 100, 3), u"a\nb\nc"_s);
        QCOMPARE(shownLines(u"a\nb\nc\nd"_s, 100, 3), u"a\nb\nc…"_s);
        QCOMPARE(shownLines(QString(16 << 20, u'\n')).count(u'\n'), MostLines - 1);
        QCOMPARE(shownLines(QString(16 << 20, u'w')).size(), 2 * MostLetters);
    }
};

QTEST_APPLESS_MAIN(TestShownText)
#include "tst_showntext.moc"
