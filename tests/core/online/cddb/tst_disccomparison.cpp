// SPDX-License-Identifier: GPL-3.0-or-later
// Files and tracks side by side: a length that differs by more than two seconds is pointed out, and so are different
// numbers of rows. Unknown lengths do not differ. Titles, times and differences are shown as documented.
#include "core/app/idiomas.h"
#include "core/online/cddb/disccomparison.h"
#include "core/online/cddb/disccontents.h"

#include <QTest>

using namespace ravlin;
using namespace Qt::StringLiterals;

class TestDiscComparison : public QObject
{
    Q_OBJECT

private:
    Captions m_captions;

    using Differences = std::vector<qint64>;

private Q_SLOTS:
    void initTestCase() { m_captions.fill(); }

    void titlesTimesAndDifferencesAreShown()
    {
        QCOMPARE(shownTitle({u"Ana"_s, u"Faro"_s, {}}), u"Ana / Faro"_s);
        QCOMPARE(shownTitle({{}, u"Faro"_s, {}}), u"Faro"_s);
        QCOMPARE(shownTime(75 * 61 + 45), u"01:01.6"_s);
        QCOMPARE(shownTime(std::nullopt), QString());
        QCOMPARE(shownDifference(90), u"+1.2 s"_s);
        QCOMPARE(shownDifference(-90), u"-1.2 s"_s);
        QCOMPARE(shownDifference(0), u"0.0 s"_s);
        QCOMPARE(shownDifference(std::nullopt), QString());
    }

    void twoSecondsMoreOrLessAreNothing()
    {
        QCOMPARE(notableDifferences({1150, 1151, 850, 849}, {1000, 1000, 1000, 1000}), (Differences{0, 151, 0, -151}));
    }

    void whatIsNotKnownIsNoDifference()
    {
        QCOMPARE(notableDifferences({std::nullopt, 5000, std::nullopt}, {1000, std::nullopt, std::nullopt}),
            (Differences{0, 0, 0}));
    }

    void rowsWithoutACounterpartAreNoDifference()
    {
        QCOMPARE(notableDifferences({5000}, {1000, 1000}), (Differences{4000, 0}));
        QCOMPARE(notableDifferences({1000, 5000}, {1000}), Differences{0});
        QCOMPARE(notableDifferences({}, {}), Differences());
    }

    void theRemarkTellsWhichOfThemIsLonger()
    {
        QCOMPARE(differenceRemark(m_captions, 5000), u"the file is 66.7 s longer than the track"_s);
        QCOMPARE(differenceRemark(m_captions, -5000), u"the file is 66.7 s shorter than the track"_s);
        QCOMPARE(differenceRemark(m_captions, 0), QString());
    }

    void theWholeIsRemarkedOnWhereItDiffers()
    {
        QCOMPARE(comparisonRemarks(m_captions, 3, 3, 0), QStringList());
        QCOMPARE(comparisonRemarks(m_captions, 3, 2, 0),
            QStringList{u"files: 3, tracks: 2; the files left over lose their track number and title when saved"_s});
        QCOMPARE(comparisonRemarks(m_captions, 2, 3, 1),
            (QStringList{u"files: 2, tracks: 3; the tracks left over are not used"_s,
                u"files that do not play as long as the track beside them: 1"_s}));
    }

    void playingTimesAreRoundedToFrames()
    {
        QCOMPARE((PlayedAudio{44100, 44100, true}).frames(), FramesPerSecond);
        QCOMPARE((PlayedAudio{588 + 293, 44100, true}).frames(), 1);
        QCOMPARE((PlayedAudio{588 + 295, 44100, true}).frames(), 2);
        QCOMPARE(PlayedAudio().frames(), 0);
    }
};

QTEST_GUILESS_MAIN(TestDiscComparison)
#include "tst_disccomparison.moc"
