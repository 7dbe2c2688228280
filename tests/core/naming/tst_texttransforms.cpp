// SPDX-License-Identifier: GPL-3.0-or-later
// The text transforms: the exact rules of each mode on plain texts, the user's locale for letters, and for every text
// that valid UTF-16 stays valid. CleanFileName() removes exactly what the passes of its rule remove, in linear time.

#include "core/naming/texttransforms.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;

namespace {

const QLocale English(QLocale::English, QLocale::UnitedStates);
const QLocale Turkish(QLocale::Turkish, QLocale::Turkey);
const QLocale GreekLocale(QLocale::Greek, QLocale::Greece);

bool isValidUtf16(QStringView text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i].isLowSurrogate())
            return false;
        if (text[i].isHighSurrogate()) {
            ++i;
            if (i == text.size() || !text[i].isLowSurrogate())
                return false;
        }
    }
    return true;
}

QString randomText(QRandomGenerator &random, const QStringList &pieces, int longest)
{
    QString text;
    const int length = random.bounded(longest + 1);
    for (int i = 0; i < length; ++i)
        text += pieces[random.bounded(int(pieces.size()))];
    return text;
}

/// Letters, marks and signs that grow, shrink, depend on context or take two UTF-16 units.
QStringList oddPieces()
{
    return {u"a"_s, u"B"_s, u"7"_s, u" "_s, u"-"_s, u"."_s, u"("_s, u"¿"_s, u"'"_s, u"ß"_s, u"ŉ"_s, u"ﬁ"_s, u"İ"_s,
        u"ı"_s, u"i"_s, u"I"_s, u"Σ"_s, u"σ"_s, u"ς"_s, u"ΐ"_s, u"ά"_s, u"ǆ"_s, u"\u0301"_s, u"\u0307"_s, u"\u0345"_s,
        u"\ufe0f"_s, u"\u200d"_s, u"𐐨"_s, u"𐐀"_s, u"😀"_s, u"𝅘𝅥𝅮"_s, u"日"_s, u"\0"_s, u"%"_s, u"1"_s, u"_"_s};
}

qsizetype characterSize(const QString &text, qsizetype at)
{
    const auto codePoint = [&text](qsizetype i) -> QString {
        if (i >= text.size())
            return {};
        const bool pair = text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
        return text.mid(i, pair ? 2 : 1);
    };
    const auto isMark = [](const QString &c) { return !c.isEmpty() && QChar::isMark(c.toUcs4().front()); };
    qsizetype end = at + codePoint(at).size();
    while (isMark(codePoint(end)))
        end += codePoint(end).size();
    return end - at;
}

/// The rule of CleanFileName, pass by pass and quadratic.
QString cleanedByTheRule(QString text)
{
    bool changed = true;
    while (changed) {
        changed = false;
        for (const QChar forbidden : u"\\/:*?\"<>|"_s) {
            const qsizetype at = text.indexOf(forbidden);
            if (at < 0)
                continue;
            const bool takesFollower = forbidden == u'>' || forbidden == u'|';
            text.remove(at, 1 + (takesFollower ? characterSize(text, at + 1) : 0));
            changed = true;
        }
    }
    return text;
}

/// The rule of capitals, separator by separator, for texts whose letters keep their length.
QString capitalizedByTheRule(const QString &text)
{
    QString result = text.left(1).toUpper() + text.mid(1).toLower();
    for (const QChar separator : u" ()?¿=¡!/\\_-+&%$#@,."_s) {
        qsizetype position = 0;
        while ((position = result.indexOf(separator, position) + 1) > 0)
            result = result.left(position) + result.mid(position, 1).toUpper() + result.mid(position + 1);
    }
    return result;
}

} // namespace

class TestTextTransforms : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void convertCase_data();
    void convertCase();
    void theCallersTextStaysAsItIs();
    void everySeparatorIsFollowedByACapital();
    void theApostropheIsNoSeparator();
    void lettersFollowTheLocale();
    void lettersBeyondTheBasicPlaneConvertWhole();
    void lettersThatGrowShiftNoSeparator();
    void combiningMarksStayBehindTheirLetter();
    void greekKeepsAccentsAndFinalSigma();
    void capitalsEqualTheRuleOnRandomTexts();

    void exchangeSpaces_data();
    void exchangeSpaces();

    void substitutePlaceholder_data();
    void substitutePlaceholder();
    void substituteTakesOutTwoWholeCharacters();

    void cleanFileName_data();
    void cleanFileName();
    void cleaningEqualsTheRuleOnRandomTexts();
    void cleaningALongTextIsQuick();

    void validTextStaysValid();
    void brokenTextIsNoHarm();
};

void TestTextTransforms::convertCase_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("expected");

    QTest::newRow("upper") << u"Canción del Niño ü"_s << 10 << u"CANCIÓN DEL NIÑO Ü"_s;
    QTest::newRow("lower") << u"CANCIÓN DEL NIÑO Ü"_s << 11 << u"canción del niño ü"_s;
    QTest::newRow("capitals and brackets") << u"hello world (live)"_s << 12 << u"Hello World (Live)"_s;
    QTest::newRow("capitals from upper case") << u"ROCK-N-ROLL"_s << 12 << u"Rock-N-Roll"_s;
    QTest::newRow("one letter") << u"x"_s << 12 << u"X"_s;
    QTest::newRow("nothing, capitals") << QString() << 12 << QString();
    QTest::newRow("nothing, upper") << QString() << 10 << QString();
    QTest::newRow("nothing, lower") << QString() << 11 << QString();
    QTest::newRow("a separator as the last character") << u"end."_s << 12 << u"End."_s;
    QTest::newRow("the full stop is a separator") << u"a.b.c"_s << 12 << u"A.B.C"_s;
    QTest::newRow("a separator first") << u"(hello"_s << 12 << u"(Hello"_s;
    QTest::newRow("separators in a row") << u"a -- b  c"_s << 12 << u"A -- B  C"_s;
    QTest::newRow("a digit after a separator") << u"top 40hits"_s << 12 << u"Top 40hits"_s;
    QTest::newRow("accents") << u"¿qué ÁNGEL?éL ¡ñu!ñandú"_s << 12 << u"¿Qué Ángel?Él ¡Ñu!Ñandú"_s;
    QTest::newRow("mode 13 changes nothing") << u"hElLo wOrLd"_s << 13 << u"hElLo wOrLd"_s;
    QTest::newRow("mode 0 changes nothing") << u"hElLo wOrLd"_s << 0 << u"hElLo wOrLd"_s;
    QTest::newRow("a negative mode changes nothing") << u"hElLo"_s << -10 << u"hElLo"_s;
}

void TestTextTransforms::convertCase()
{
    QFETCH(QString, text);
    QFETCH(int, mode);
    QTEST(ConvertCase(text, mode), "expected");
    QTEST(ConvertCase(text, mode, English), "expected");
    QTEST(ConvertCase(text, mode, QLocale::c()), "expected");
}

void TestTextTransforms::theCallersTextStaysAsItIs()
{
    const QString text = u"a_b c/D"_s;
    QString given = text;
    QVERIFY(ConvertCase(given, 10) != text);
    QVERIFY(ExchangeSpaces(given, 10) != text);
    QVERIFY(CleanFileName(given) != text);
    QVERIFY(SubstitutePlaceholder(given, u"a_"_s, u"x"_s) != text);
    QCOMPARE(given, text);
}

void TestTextTransforms::everySeparatorIsFollowedByACapital()
{
    const QString separators = u" ()?¿=¡!/\\_-+&%$#@,."_s;
    QCOMPARE(separators.size(), 20);
    for (const QChar separator : separators)
        QCOMPARE(ConvertCase(u"aB"_s + separator + u"cD"_s, 12), u"Ab"_s + separator + u"Cd"_s);
    for (const QChar other : u"':;[]{}*\"<>|~^`´’–"_s)
        QCOMPARE(ConvertCase(u"aB"_s + other + u"cD"_s, 12), u"Ab"_s + other + u"cd"_s);
}

void TestTextTransforms::theApostropheIsNoSeparator()
{
    QCOMPARE(ConvertCase(u"don't stop"_s, 12), u"Don't Stop"_s);
    QCOMPARE(ConvertCase(u"o'neil"_s, 12), u"O'neil"_s);
}

void TestTextTransforms::lettersFollowTheLocale()
{
    QCOMPARE(ConvertCase(u"istanbul izmir"_s, 10, Turkish), u"İSTANBUL İZMİR"_s);
    QCOMPARE(ConvertCase(u"ISPARTA"_s, 11, Turkish), u"ısparta"_s);
    QCOMPARE(ConvertCase(u"istanbul izmir ISI"_s, 12, Turkish), u"İstanbul İzmir Isı"_s);
    QCOMPARE(ConvertCase(u"istanbul izmir ISI"_s, 12, English), u"Istanbul Izmir Isi"_s);
}

void TestTextTransforms::lettersBeyondTheBasicPlaneConvertWhole()
{
    QCOMPARE(ConvertCase(u"𐐨𐐩"_s, 10, English), u"𐐀𐐁"_s);
    QCOMPARE(ConvertCase(u"𐐀𐐁"_s, 11, English), u"𐐨𐐩"_s);
    QCOMPARE(ConvertCase(u"𐐨𐐁 𐐩𐐀"_s, 12, English), u"𐐀𐐩 𐐁𐐨"_s);
    QCOMPARE(ConvertCase(u"😀a 😀b"_s, 12, English), u"😀a 😀b"_s);
}

void TestTextTransforms::lettersThatGrowShiftNoSeparator()
{
    QCOMPARE(ConvertCase(u"ßa ßb.c"_s, 12, English), u"ßa ßb.C"_s);
    QCOMPARE(ConvertCase(u"ﬁn ﬁn-x"_s, 12, English), u"ﬁn ﬁn-X"_s);
    QCOMPARE(ConvertCase(u"ŉa ŉb c"_s, 12, English), u"ŉa ŉb C"_s);
    QCOMPARE(ConvertCase(u"straße"_s, 10, English), u"STRASSE"_s);
    QCOMPARE(ConvertCase(u"İA İB c"_s, 12, English), u"İa I\u0307b C"_s);
}

void TestTextTransforms::combiningMarksStayBehindTheirLetter()
{
    QCOMPARE(ConvertCase(u"e\u0301te\u0301 e\u0301"_s, 12, English), u"E\u0301te\u0301 E\u0301"_s);
    // A mark directly behind a separator belongs to it: the mark has no case, and the letter is not the next character.
    QCOMPARE(ConvertCase(u"a.\u0308b"_s, 12, English), u"A.\u0308b"_s);
    QCOMPARE(ConvertCase(u"a.\u0345b"_s, 12, English), u"A.\u0345b"_s);
}

void TestTextTransforms::greekKeepsAccentsAndFinalSigma()
{
    QCOMPARE(ConvertCase(u"άνοιξη έρωτας"_s, 12, GreekLocale), u"Άνοιξη Έρωτας"_s);
    QCOMPARE(ConvertCase(u"ΟΔΟΣ ΑΣ"_s, 12, GreekLocale), u"Οδος Ας"_s);
    QCOMPARE(ConvertCase(u"ΑΣ"_s, 12, GreekLocale), u"Ας"_s);
}

void TestTextTransforms::capitalsEqualTheRuleOnRandomTexts()
{
    QRandomGenerator random(12);
    QStringList pieces;
    for (const QChar c : u"abCDéÑ7' ()?¿=¡!/\\_-+&%$#@,.日\u0301"_s)
        pieces += c;
    for (int i = 0; i < 20000; ++i) {
        const QString text = randomText(random, pieces, 24);
        QCOMPARE(ConvertCase(text, 12, English), capitalizedByTheRule(text));
    }
}

void TestTextTransforms::exchangeSpaces_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("expected");

    QTest::newRow("runs are not collapsed") << u"a b  c"_s << 10 << u"a_b__c"_s;
    QTest::newRow("underscores by spaces") << u"_a__b c_"_s << 11 << u" a  b c "_s;
    QTest::newRow("spaces leave underscores") << u"a_b c"_s << 10 << u"a_b_c"_s;
    QTest::newRow("only the plain blank") << u"a\u00a0b\tc"_s << 10 << u"a\u00a0b\tc"_s;
    QTest::newRow("mode 12 changes nothing") << u"a b_c"_s << 12 << u"a b_c"_s;
    QTest::newRow("nothing") << QString() << 10 << QString();
}

void TestTextTransforms::exchangeSpaces()
{
    QFETCH(QString, text);
    QFETCH(int, mode);
    QTEST(ExchangeSpaces(text, mode), "expected");
}

void TestTextTransforms::substitutePlaceholder_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("token");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("expected");

    QTest::newRow("at the end") << u"%1 - %3"_s << u"%3"_s << u"Title"_s << u"%1 - Title"_s;
    QTest::newRow("only the first occurrence") << u"%1%1"_s << u"%1"_s << u"A"_s << u"A%1"_s;
    QTest::newRow("a missing token") << u"%1 - %3"_s << u"%2"_s << u"A"_s << u"%1 - %3"_s;
    QTest::newRow("an empty value") << u"a%1b"_s << u"%1"_s << QString() << u"ab"_s;
    QTest::newRow("an empty text") << QString() << u"%1"_s << u"A"_s << QString();
    QTest::newRow("a value that names a token") << u"%1"_s << u"%1"_s << u"%1%2"_s << u"%1%2"_s;
    QTest::newRow("a longer token takes two out") << u"abcd"_s << u"abc"_s << u"X"_s << u"Xcd"_s;
    QTest::newRow("a shorter token takes two out") << u"abcd"_s << u"b"_s << u"X"_s << u"aXd"_s;
    QTest::newRow("a shorter token at the end") << u"ab"_s << u"b"_s << u"X"_s << u"aX"_s;
}

void TestTextTransforms::substitutePlaceholder()
{
    QFETCH(QString, text);
    QFETCH(QString, token);
    QFETCH(QString, value);
    QTEST(SubstitutePlaceholder(text, token, value), "expected");
}

void TestTextTransforms::substituteTakesOutTwoWholeCharacters()
{
    QCOMPARE(SubstitutePlaceholder(u"a%😀b"_s, u"%"_s, u"X"_s), u"aXb"_s);
    QCOMPARE(SubstitutePlaceholder(u"😀%1😀"_s, u"%1"_s, u"𐐨"_s), u"😀𐐨😀"_s);
}

void TestTextTransforms::cleanFileName_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");

    QTest::newRow("bars in a row of letters") << u"a|b|c"_s << u"a"_s;
    QTest::newRow("> at the end") << u"x>"_s << u"x"_s;
    QTest::newRow("star and question mark") << u"a*b?c"_s << u"abc"_s;
    QTest::newRow("slash") << u"1/2"_s << u"12"_s;
    QTest::newRow("> takes the next along") << u"a>bc"_s << u"ac"_s;
    QTest::newRow("nothing in its place") << u"AC/DC"_s << u"ACDC"_s;
    QTest::newRow("blanks stay") << u"Who? Me"_s << u"Who Me"_s;
    QTest::newRow("each of the nine") << u"\\a/b:c*d?e\"f<g>h|i"_s << u"abcdefg"_s;
    QTest::newRow("nothing") << QString() << QString();
    QTest::newRow("nothing forbidden") << u"a.b - c's (d)"_s << u"a.b - c's (d)"_s;
    QTest::newRow("nothing but forbidden") << u"<>|?*"_s << QString();
    QTest::newRow("> takes a letter beyond the basic plane whole") << u"a>😀b"_s << u"ab"_s;
    QTest::newRow("> takes a composed letter") << u"a>éc"_s << u"ac"_s;
    QTest::newRow("> takes a decomposed letter") << u"a>e\u0301c"_s << u"ac"_s;
    QTest::newRow("> takes a sign with its variation selector") << u"a>❤\ufe0fc"_s << u"ac"_s;
    QTest::newRow("a mark behind a removed character stays") << u"a?\u0301b"_s << u"a\u0301b"_s;
}

void TestTextTransforms::cleanFileName()
{
    QFETCH(QString, text);
    QTEST(CleanFileName(text), "expected");
    QCOMPARE(CleanFileName(text), cleanedByTheRule(text));
}

void TestTextTransforms::cleaningEqualsTheRuleOnRandomTexts()
{
    QRandomGenerator random(9);
    const QStringList pieces{u"a"_s, u"b"_s, u"\\"_s, u"/"_s, u":"_s, u"*"_s, u"?"_s, u"\""_s, u"<"_s, u">"_s, u">"_s,
        u"|"_s, u"|"_s, u"😀"_s, u"\u0301"_s, u"𐨿"_s, QString(QChar(0xd83d)), QString(QChar(0xde00))};
    for (int i = 0; i < 100000; ++i) {
        const QString text = randomText(random, pieces, 20);
        QCOMPARE(CleanFileName(text), cleanedByTheRule(text));
    }
}

void TestTextTransforms::cleaningALongTextIsQuick()
{
    constexpr int Length = 1024 * 1024;
    const QString bars(Length, u'>');
    const QString mixed = u">|a/"_s.repeated(Length / 4);
    const QString marks = u'>' + QString(Length, QChar(0x301));
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(CleanFileName(bars), QString());
    QVERIFY(!CleanFileName(mixed).contains(u'/'));
    QCOMPARE(CleanFileName(marks), QString());
    // Quadratic time would be minutes; the bound leaves room for sanitizers and busy machines.
    QVERIFY2(timer.elapsed() < 10000, qPrintable(QString::number(timer.elapsed())));
}

void TestTextTransforms::validTextStaysValid()
{
    QRandomGenerator random(77);
    const QStringList pieces = oddPieces() + QStringList{u">"_s, u"|"_s, u"/"_s, u"?"_s};
    for (int i = 0; i < 20000; ++i) {
        const QString text = randomText(random, pieces, 16);
        const QString value = randomText(random, pieces, 4);
        QVERIFY(isValidUtf16(text));
        for (const QLocale &locale : {English, Turkish, GreekLocale, QLocale(QLocale::Lithuanian)}) {
            for (const int mode : {10, 11, 12})
                QVERIFY(isValidUtf16(ConvertCase(text, mode, locale)));
        }
        QVERIFY(isValidUtf16(CleanFileName(text)));
        QVERIFY(isValidUtf16(SubstitutePlaceholder(text, pieces[random.bounded(int(pieces.size()))], value)));
        QCOMPARE(ExchangeSpaces(text, 10).size(), text.size());
        QVERIFY(!ExchangeSpaces(text, 10).contains(u' '));
    }
}

void TestTextTransforms::brokenTextIsNoHarm()
{
    const QString high(QChar(0xd801));
    const QString low(QChar(0xdc28));
    QCOMPARE(ConvertCase(high, 12, English), high);
    QCOMPARE(ConvertCase(low + u"A"_s, 12, English), low + u"a"_s);
    QCOMPARE(ConvertCase(u"a "_s + high, 12, English), u"A "_s + high);
    QCOMPARE(SubstitutePlaceholder(u"%"_s + high, u"%"_s, u"X"_s), u"X"_s);
    QCOMPARE(CleanFileName(u">"_s + high), QString());
}

QTEST_GUILESS_MAIN(TestTextTransforms)
#include "tst_texttransforms.moc"
