// SPDX-License-Identifier: GPL-3.0-or-later
// The conversion pairs: modes by index in the list, the captions of the entries, what the settings remember of a pair
// and what they do not.

#include "core/app/settings.h"
#include "core/naming/conversion.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;

class TestConversion : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void modesAreThoseOfThePlacesInTheList()
    {
        QCOMPARE(conversionCount(ConversionKind::Case), 3);
        QCOMPARE(conversionMode(ConversionKind::Case, 0), 10);
        QCOMPARE(conversionMode(ConversionKind::Case, 1), 11);
        QCOMPARE(conversionMode(ConversionKind::Case, 2), 12);
        QCOMPARE(conversionMode(ConversionKind::Case, 3), -1);
        QCOMPARE(conversionMode(ConversionKind::Case, -1), -1);
        QCOMPARE(conversionCount(ConversionKind::Replace), 2);
        QCOMPARE(conversionMode(ConversionKind::Replace, 0), 10);
        QCOMPARE(conversionMode(ConversionKind::Replace, 1), 11);
        QCOMPARE(conversionMode(ConversionKind::Replace, 2), -1);
    }

    void captions()
    {
        QCOMPARE(conversionCaption(ConversionKind::Case), Caption::ConvertCase);
        QCOMPARE(conversionCaption(ConversionKind::Replace), Caption::ConvertReplace);
        QCOMPARE(conversionEntryCaptions(ConversionKind::Case),
            (QList{Caption::CaseUpper, Caption::CaseLower, Caption::CaseCapitalize}));
        QCOMPARE(conversionEntryCaptions(ConversionKind::Replace),
            (QList{Caption::ReplaceSpaces, Caption::ReplaceUnderscores}));
    }

    void applying()
    {
        const QString text = u"don't_stop NOW"_s;
        QCOMPARE(applyConversion(ConversionKind::Case, {true, 0}, text), u"DON'T_STOP NOW"_s);
        QCOMPARE(applyConversion(ConversionKind::Case, {true, 1}, text), u"don't_stop now"_s);
        QCOMPARE(applyConversion(ConversionKind::Case, {true, 2}, text), u"Don't_Stop Now"_s);
        QCOMPARE(applyConversion(ConversionKind::Replace, {true, 0}, text), u"don't_stop_NOW"_s);
        QCOMPARE(applyConversion(ConversionKind::Replace, {true, 1}, text), u"don't stop NOW"_s);
    }

    void aChoiceThatIsOffLeavesTheTextAsItIs()
    {
        QCOMPARE(applyConversion(ConversionKind::Case, {false, 0}, u"Text"_s), u"Text"_s);
        QCOMPARE(applyConversion(ConversionKind::Case, {true, 7}, u"Text"_s), u"Text"_s);
    }

    void listsStartWithTheirSecondEntryAndOff()
    {
        QCOMPARE(ConversionChoice().index, 1);
        QVERIFY(!ConversionChoice().on);
    }

    void theStoredTextIsThePlaceInTheListOrEmptyWhileOff()
    {
        QCOMPARE(conversionToText({true, 0}), u"0"_s);
        QCOMPARE(conversionToText({true, 2}), u"2"_s);
        QCOMPARE(conversionToText({false, 2}), QString());
        QCOMPARE(conversionFromText(ConversionKind::Case, u"2"), (ConversionChoice{true, 2}));
        QCOMPARE(conversionFromText(ConversionKind::Case, u""), ConversionChoice());
    }

    void aStoredTextThatNamesNoEntryIsIgnored()
    {
        for (const QString &text : {u"3"_s, u"-1"_s, u"02"_s, u" 1"_s, u"one"_s, u"١"_s})
            QVERIFY2(conversionFromText(ConversionKind::Case, text) == ConversionChoice(), qPrintable(text));
        QCOMPARE(conversionFromText(ConversionKind::Replace, u"2"), ConversionChoice());
    }

    void tickingPair2DoesNotSurviveARestartTickingPair3Does()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"ravlin.ini"_s);
        {
            Settings settings(path);
            for (const ConversionPair &pair : ConversionPairs)
                storeConversion(settings, pair, {true, 0});
            QVERIFY(settings.save());
        }
        const Settings settings(path);
        for (const ConversionPair &pair : ConversionPairs) {
            const ConversionChoice expected =
                pair.number == SingleCasePair ? ConversionChoice() : ConversionChoice{true, 0};
            QCOMPARE(restoreConversion(settings, pair), expected);
        }
        QCOMPARE(settings.read(u"rename case"), u"0"_s);
        QCOMPARE(settings.read(u"multi case"), u"0"_s);
        QCOMPARE(settings.read(u"rename replace"), u"0"_s);
        QCOMPARE(settings.read(u"multi replace"), u"0"_s);
    }

    void pairsLieAtTheirNumbers()
    {
        for (std::size_t i = 0; i < ConversionPairs.size(); ++i)
            QCOMPARE(ConversionPairs[i].number, static_cast<int>(i));
        QCOMPARE(ConversionPairs[RenameReplacePair].kind, ConversionKind::Replace);
        QCOMPARE(ConversionPairs[MultiReplacePair].kind, ConversionKind::Replace);
        QCOMPARE(ConversionPairs[MultiCasePair].kind, ConversionKind::Case);
    }
};

QTEST_GUILESS_MAIN(TestConversion)
#include "tst_conversion.moc"
