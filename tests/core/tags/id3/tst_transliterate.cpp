// SPDX-License-Identifier: GPL-3.0-or-later
// Texts for fields that hold only Latin-1: similar letters, else one '?' for each character that a reader sees. No
// character disappears or is cut.

#include "core/tags/id3/transliterate.h"

#include <QTest>

using namespace ravlin;

class TestTransliterate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void texts_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("latin");
        const auto row = [](const char *name, const char *text, const char *latin) {
            QTest::newRow(name) << QString::fromUtf8(text) << QString::fromUtf8(latin);
        };
        row("ASCII", "plain", "plain");
        row("Latin-1", "Größe, Ça va? ½ µ", "Größe, Ça va? ½ µ");
        row("accents of other alphabets", "Dvořák Łódź Erdős Şölen", "Dvorák Lódz Erdos Sölen");
        row("letters without decomposition", "ĐđĦħıŁłŒœƏəƒ", "DdHhiLlOEoeEef");
        row("combining marks that compose", "Bjo\u0308rk e\u0301", "Björk é");
        row("combining marks that do not", "x\u0301y\u0304", "xy");
        row("a mark alone", "\u0301", "?");
        row("a mark on a blank", "a \u0301 b", "a? b");
        row("an accent that stands on a blank by itself", "\u02D8", "?");
        row("a wide blank", "a\u3000b", "a b");
        row("Cyrillic", "Кино Щёлкунчик", "Kino Shchelkunchik");
        row("Cyrillic in pieces", "и\u0306", "i");
        row("Ukrainian", "Їжак Ґанок", "Yizhak Ganok");
        row("Greek", "Ελλάδα Ψυχή", "Ellada Psychi");
        row("Japanese", "日本語", "???");
        row("Japanese with marks", "がぎ", "??");
        row("Korean", "한국", "??");
        row("full width", "ＡＢＣ１２", "ABC12");
        row("ligatures and roman numerals", "ﬁn Ⅳ №", "fin IV No");
        row("typography", "“a” – ‘b’… €™", "\"a\" - 'b'... EUR(TM)");
        row("mathematical letters", "𝐀𝐁", "AB");
        row("emoji", "🎵", "?");
        row("emoji with a skin tone", "👍🏽!", "?!");
        row("emoji joined to one", "👩‍👩‍👧‍👦x", "?x");
        row("a flag", "🇫🇷 x", "? x");
        row("a heart in colour", "❤️", "?");
        row("a joiner alone", "\u200D", "?");
    }
    void texts()
    {
        QFETCH(QString, text);
        QFETCH(QString, latin);
        QCOMPARE(QString::fromLatin1(toLatin1Visibly(text, 1000)), latin);
    }

    void nothingIsCutInsideACharacter()
    {
        QCOMPARE(toLatin1Visibly(QStringLiteral("abcдщ"), 4), QByteArray("abcd"));
        for (const qsizetype size : {4, 5, 6, 7})
            QCOMPARE(toLatin1Visibly(QStringLiteral("abcdщe"), size), QByteArray("abcd"));
        QCOMPARE(toLatin1Visibly(QStringLiteral("abcdщe"), 8), QByteArray("abcdshch"));
        QCOMPARE(toLatin1Visibly(QStringLiteral("ab👩‍👧c"), 3), QByteArray("ab?"));
        QCOMPARE(toLatin1Visibly(QStringLiteral("abcde\u0301f"), 5), QByteArray("abcd\xE9"));
    }

    void neverBlankAndNeverLonger()
    {
        for (const QString &text : {QStringLiteral("日本"), QStringLiteral("щщщ"), QStringLiteral("🎵🎵"),
                 QString(40, u'Ω'), QString(QChar(0xD800)) + u'a', QStringLiteral("\u200B"), QStringLiteral(" \u0301"),
                 QStringLiteral("\u02D8")}) {
            for (const qsizetype size : {4, 28, 30}) {
                const QByteArray latin = toLatin1Visibly(text, size);
                QVERIFY2(!latin.trimmed().isEmpty(), qPrintable(text));
                QVERIFY(latin.size() <= size);
            }
        }
        QCOMPARE(toLatin1Visibly(QString(50, u' ') + QStringLiteral("abc"), 30), QByteArray("abc"));
        QCOMPARE(toLatin1Visibly(QStringLiteral("  abc"), 30), QByteArray("  abc"));
        // A zero character would end the field.
        QCOMPARE(toLatin1Visibly(QChar(0) + QStringLiteral("abc"), 30), QByteArray("abc"));
    }
};

QTEST_GUILESS_MAIN(TestTransliterate)
#include "tst_transliterate.moc"
