// SPDX-License-Identifier: GPL-3.0-or-later
// Upper and lower case by the rules of languages, as in Unicode's SpecialCasing.txt and locale data; the same on every
// system.

#include "core/naming/lettercase.h"

#include <QRandomGenerator>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;

namespace {

const QLocale English(QLocale::English);
const QLocale Turkish(QLocale::Turkish);
const QLocale Azerbaijani(QLocale::Azerbaijani);
const QLocale Lithuanian(QLocale::Lithuanian);
const QLocale Greek(QLocale::Greek);
const QLocale Armenian(QLocale::Armenian);

QString decomposed(const QString &text)
{
    return text.normalized(QString::NormalizationForm_D);
}

} // namespace

class TestLetterCase : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lowerSigma_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("at the end") << u"ΟΔΟΣ"_s << u"οδος"_s;
        QTest::newRow("inside") << u"ΟΣΟ"_s << u"οσο"_s;
        QTest::newRow("alone") << u"Σ"_s << u"σ"_s;
        QTest::newRow("at the start") << u"ΣΑ"_s << u"σα"_s;
        QTest::newRow("two") << u"ΑΣΣ"_s << u"ασς"_s;
        QTest::newRow("words") << u"ΑΣ ΒΣ-ΓΣ,"_s << u"ας βς-γς,"_s;
        QTest::newRow("before an apostrophe inside a word") << u"ΑΣ'Β"_s << u"ασ'β"_s;
        QTest::newRow("before an apostrophe at its end") << u"ΑΣ' Β"_s << u"ας' β"_s;
        QTest::newRow("behind a mark") << u"Α\u0301Σ"_s << u"α\u0301ς"_s;
        QTest::newRow("before a mark") << u"ΑΣ\u0301"_s << u"ας\u0301"_s;
        QTest::newRow("behind a number") << u"1Σ"_s << u"1σ"_s;
        QTest::newRow("Latin letters around") << u"AΣ AΣB"_s << u"aς aσb"_s;
        QTest::newRow("letters beyond the basic plane") << u"𐐀Σ Σ𐐀"_s << u"𐐨ς σ𐐨"_s;
        QTest::newRow("a small one stays") << u"ας σ"_s << u"ας σ"_s;
    }
    void lowerSigma()
    {
        QFETCH(QString, text);
        for (const QLocale &locale : {Greek, English, Turkish, Lithuanian, QLocale::c()})
            QTEST(lowerCase(text, locale), "expected");
    }

    void turkishAndAzerbaijani()
    {
        for (const QLocale &locale : {Turkish, Azerbaijani}) {
            QCOMPARE(upperCase(u"istanbul ısparta"_s, locale), u"İSTANBUL ISPARTA"_s);
            QCOMPARE(lowerCase(u"İSTANBUL ISPARTA"_s, locale), u"istanbul ısparta"_s);
            QCOMPARE(lowerCase(u"I\u0307I\u0323\u0307I\u0301\u0307"_s, locale), u"ii\u0323ı\u0301\u0307"_s);
            QCOMPARE(upperCase(u"straße ﬁ"_s, locale), u"STRASSE FI"_s);
        }
        QCOMPARE(upperCase(u"istanbul"_s, English), u"ISTANBUL"_s);
        QCOMPARE(lowerCase(u"İI"_s, English), u"i\u0307i"_s);
    }

    void lithuanian()
    {
        QCOMPARE(lowerCase(u"Ì Í Ĩ I\u0300 J\u0303 Į\u0301 I J"_s, Lithuanian),
            u"i\u0307\u0300 i\u0307\u0301 i\u0307\u0303 i\u0307\u0300 j\u0307\u0303 į\u0307\u0301 i j"_s);
        QCOMPARE(upperCase(u"i\u0307\u0300 j\u0307\u0303 į\u0307\u0301 i\u0307 ė e\u0307"_s, Lithuanian),
            u"I\u0300 J\u0303 Į\u0301 I Ė E\u0307"_s);
        QCOMPARE(lowerCase(u"Ì"_s, English), u"ì"_s);
    }

    void greekCapitalsHaveNoAccents()
    {
        QCOMPARE(upperCase(u"άνοιξη έρωτας"_s, Greek), u"ΑΝΟΙΞΗ ΕΡΩΤΑΣ"_s);
        QCOMPARE(upperCase(u"α\u0301νοιξη Όχι"_s, Greek), u"ΑΝΟΙΞΗ ΟΧΙ"_s);
        QCOMPARE(upperCase(u"Μαΐου μάιος άυλος νεράιδα"_s, Greek), u"ΜΑΪΟΥ ΜΑΪΟΣ ΑΫΛΟΣ ΝΕΡΑΪΔΑ"_s);
        QCOMPARE(upperCase(u"μαι\u0308\u0301ου"_s, Greek), u"ΜΑΙ\u0308ΟΥ"_s);
        QCOMPARE(upperCase(u"ᾳ ᾧ"_s, Greek), u"ΑΙ ΩΙ"_s);
        QCOMPARE(upperCase(u"ή ἤ ήταν αυτή"_s, Greek), u"Ή Ή ΗΤΑΝ ΑΥΤΗ"_s);
        QCOMPARE(upperCase(u"café é"_s, Greek), u"CAFÉ É"_s);
        QCOMPARE(upperCase(u"άνοιξη"_s, English), u"ΆΝΟΙΞΗ"_s);
    }

    void armenianCapitalsHaveNoLigature()
    {
        QCOMPARE(upperCase(u"և"_s, Armenian), u"ԵՎ"_s);
        QCOMPARE(upperCase(u"և"_s, English), u"ԵՒ"_s);
    }

    void agreesWithIcuWhereQtHasIt()
    {
        if (Turkish.toUpper(u"i"_s) == u"I"_s)
            QSKIP("Qt is built without ICU");
        constexpr QStringView Pieces = u"aBiIıİjJįĮìÍĩſßﬁǅªʰⓐΣσςΑάἄᾳᾴΆΕέΗήἤῃῄιίϊΐΪΙΟόυύϋΰΥωώᾧΩϓϒµ1 -'.:’·"
                                       u"\u0300\u0301\u0302\u0303\u0304\u0306\u0307\u0313\u0314\u0323\u0328\u0342"
                                       u"\u0345\u00AD日և";
        QRandomGenerator random(20);
        for (int i = 0; i < 20000; ++i) {
            QString text;
            for (int length = random.bounded(9); length > 0; --length)
                text += Pieces[random.bounded(Pieces.size())];
            for (const QLocale &locale : {English, Turkish, Azerbaijani, Lithuanian, Greek, Armenian}) {
                const QString what = locale.name() + u' ' + text + u" > "_s;
                QCOMPARE(what + decomposed(upperCase(text, locale)), what + decomposed(locale.toUpper(text)));
                QCOMPARE(what + decomposed(lowerCase(text, locale)), what + decomposed(locale.toLower(text)));
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestLetterCase)
#include "tst_lettercase.moc"
