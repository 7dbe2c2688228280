// SPDX-License-Identifier: GPL-3.0-or-later
// Playing times become a disc's offset text, which counts frames that were begun; the text becomes the table of
// contents and its identifier. The played samples of a ripped and encoded disc give back the disc's own offsets.
#include "core/online/cddb/disccontents.h"
#include "core/online/cddb/xmcdrecord.h"

#include <QRandomGenerator>
#include <QTest>

#include <cmath>
#include <limits>

using namespace ravlin;
using namespace Qt::StringLiterals;

namespace {

using Times = std::vector<double>;

constexpr qint64 SamplesOfAFrame = 588; // of a CD: 44,100 / 75

/// A disc's tracks as a ripper makes them: whole frames.
std::vector<PlayedAudio> rippedTracks(const std::vector<qint64> &frames, bool tellsDelay)
{
    std::vector<PlayedAudio> files;
    for (const qint64 count : frames)
        files.push_back({count * SamplesOfAFrame + (tellsDelay ? 0 : UsualEncoderSamples), 44100, tellsDelay});
    return files;
}

QString textOf(const std::vector<qint64> &frames)
{
    qint64 sum = LeadInFrames;
    QString text = QString::number(sum);
    for (const qint64 count : frames)
        text += u' ' + QString::number(sum += count);
    return text;
}

DiscContents disc(const QString &text)
{
    return DiscContents::parse(text).value();
}

} // namespace

class TestDiscContents : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void offsets_data();
    void offsets();
    void rippedDiscGivesBackItsOffsets();
    void everyNumberOfFramesIsExact();
    void usualDelayIsTakenOffWhereFilesDoNotTell();
    void usualDelayRoundsToTheNearestFrame();
    void noSecondTryWhereAllFilesTell();
    void oneFileThatTellsKeepsItsLength();
    void shortFileNeverPlaysBackwards();
    void silentFileHasNoLength();
    void streamTellsItsPlayedSamples();
    void identifiers_data();
    void identifiers();
    void lengthsOfTracks();
    void refusesWhatIsNoDisc_data();
    void refusesWhatIsNoDisc();
    void takesWhatADiscMayBe();
    void lengthsAreComparedTrackByTrack();
};

void TestDiscContents::offsets_data()
{
    QTest::addColumn<Times>("times");
    QTest::addColumn<QString>("text");
    QTest::newRow("no file") << Times{} << u"150"_s;
    QTest::newRow("one file of exactly 60.0 s") << Times{60.0} << u"150 4650"_s;
    QTest::newRow("a file of 10.5 s: 37.5 frames count as 38") << Times{10.5} << u"150 938"_s;
    QTest::newRow("frame parts past 75 carry one second") << Times{1.6, 1.6} << u"150 270 390"_s;
    QTest::newRow("frame parts of exactly 75 carry") << Times{0.4, 0.6} << u"150 180 225"_s;
    QTest::newRow("74.5 frames become a whole second") << Times{74.5 / 75, 74.5 / 75} << u"150 225 300"_s;
    QTest::newRow("a hundredth of a frame is an error of the calculation") << Times{1 + 10.009 / 75} << u"150 235"_s;
    QTest::newRow("more is a begun frame") << Times{1 + 10.011 / 75} << u"150 236"_s;
    QTest::newRow("just below a whole frame") << Times{1 + 9.9999 / 75} << u"150 235"_s;
    QTest::newRow("a file without length") << Times{0, 2, 0} << u"150 150 300 300"_s;
    QTest::newRow("nonsense has no length") << Times{-5, std::nan(""), 1} << u"150 150 150 225"_s;
    QTest::newRow("without end it ends after a day")
        << Times{std::numeric_limits<double>::infinity()} << u"150 6480150"_s;
}

void TestDiscContents::offsets()
{
    QFETCH(Times, times);
    QTEST(offsetText(times), "text");
}

void TestDiscContents::rippedDiscGivesBackItsOffsets()
{
    QRandomGenerator random(1);
    for (int round = 0; round < 2000; ++round) {
        std::vector<qint64> frames;
        for (int track = random.bounded(1, 30); track > 0; --track)
            frames.push_back(random.bounded(1, 30 * 60 * 75));
        QCOMPARE(offsetText(rippedTracks(frames, true)), textOf(frames));
    }
}

void TestDiscContents::everyNumberOfFramesIsExact()
{
    for (qint64 frames = 1; frames < 200'000; frames += 7) {
        const std::vector tracks = rippedTracks({frames}, true);
        QCOMPARE(offsetText(tracks), textOf({frames}));
    }
}

void TestDiscContents::usualDelayIsTakenOffWhereFilesDoNotTell()
{
    const std::vector<qint64> frames{18294, 15975, 16710, 19370};
    const std::vector<PlayedAudio> files = rippedTracks(frames, false);
    QVERIFY(offsetText(files) != textOf(frames));
    QCOMPARE(offsetTextWithUsualDelay(files), textOf(frames));
}

void TestDiscContents::usualDelayRoundsToTheNearestFrame()
{
    // Encoders fill up their last frame, so that the usual delay is off by some samples.
    for (const qint64 error : {-293, -1, 0, 1, 293}) {
        std::vector<PlayedAudio> files = rippedTracks({18294, 15975, 1}, false);
        for (PlayedAudio &file : files)
            file.samples += error;
        QCOMPARE(offsetTextWithUsualDelay(files), textOf({18294, 15975, 1}));
    }
    const std::vector<PlayedAudio> unknown{{100 * SamplesOfAFrame + UsualEncoderSamples + 295, 44100, false}};
    QCOMPARE(offsetTextWithUsualDelay(unknown), textOf({101}));
    // A file that states its delay counts the frame that it began, as in the first text.
    const std::vector<PlayedAudio> mixed{unknown[0], {100 * SamplesOfAFrame + SamplesOfAFrame / 10, 44100, true}};
    QCOMPARE(offsetTextWithUsualDelay(mixed), textOf({101, 101}));
}

void TestDiscContents::noSecondTryWhereAllFilesTell()
{
    QCOMPARE(offsetTextWithUsualDelay(rippedTracks({100, 200}, true)), QString());
    QCOMPARE(offsetTextWithUsualDelay(std::vector<PlayedAudio>()), QString());
}

void TestDiscContents::oneFileThatTellsKeepsItsLength()
{
    std::vector<PlayedAudio> files = rippedTracks({100, 200}, false);
    files[0] = rippedTracks({100}, true).front();
    QCOMPARE(offsetTextWithUsualDelay(files), textOf({100, 200}));
}

void TestDiscContents::shortFileNeverPlaysBackwards()
{
    QCOMPARE(offsetTextWithUsualDelay(std::vector{PlayedAudio{1000, 44100, false}}), u"150 150"_s);
}

void TestDiscContents::silentFileHasNoLength()
{
    const PlayedAudio none = PlayedAudio::of(StreamInfo());
    QCOMPARE(none.seconds(), 0.0);
    QCOMPARE(offsetText(std::vector{none}), u"150 150"_s);
}

void TestDiscContents::streamTellsItsPlayedSamples()
{
    StreamInfo stream;
    stream.firstFrame = 0;
    stream.sampleRate = 48000;
    stream.samples = 96000;
    stream.playedSamples = 72000;
    stream.encoderDelay = 576;
    const PlayedAudio told = PlayedAudio::of(stream);
    QCOMPARE(told.seconds(), 1.5);
    QVERIFY(told.tellsDelay);
    stream.encoderDelay.reset();
    QVERIFY(!PlayedAudio::of(stream).tellsDelay);
}

void TestDiscContents::identifiers_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("id");
    QTest::addColumn<int>("tracks");
    QTest::addColumn<int>("seconds");
    // The last number may be any frame of the stated second.
    QTest::newRow("ten tracks") << u"175 18469 34444 51154 70524 88841 104824 124686 140966 159454 177600"_s
                                << u"92093e0a"_s << 10 << 2368;
    QTest::newRow("nine tracks") << u"150 21834 43363 63436 89772 115596 138570 167224 190210 211499"_s << u"820b0109"_s
                                 << 9 << 2819;
    QTest::newRow("a small number keeps its eight digits") << u"150 4650"_s << u"02003c01"_s << 1 << 62;
}

void TestDiscContents::identifiers()
{
    QFETCH(QString, text);
    const DiscContents contents = disc(text);
    QTEST(contents.discIdText(), "id");
    QTEST(contents.trackCount(), "tracks");
    QTEST(contents.totalSeconds(), "seconds");
    QCOMPARE(contents.frameOffsets().front(), text.section(u' ', 0, 0).toLongLong());
    QCOMPARE(contents.leadOut(), text.section(u' ', -1).toLongLong());
}

void TestDiscContents::lengthsOfTracks()
{
    const DiscContents contents = disc(u"150 250 550"_s);
    QCOMPARE(contents.trackFrames(0), 100);
    QCOMPARE(contents.trackFrames(1), 300);
}

void TestDiscContents::refusesWhatIsNoDisc_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QString();
    QTest::newRow("no track") << u"150"_s;
    QTest::newRow("words") << u"150 x"_s;
    QTest::newRow("below nothing") << u"-1 150"_s;
    QTest::newRow("descending") << u"150 400 300"_s;
    QTest::newRow("beyond numbers") << u"150 99999999999999999999"_s;
    QTest::newRow("longer than an identifier can say") << u"150 %1"_s.arg(65536 * 75);
    QTest::newRow("a hundred tracks") << textOf(std::vector<qint64>(100, 10));
}

void TestDiscContents::refusesWhatIsNoDisc()
{
    QFETCH(QString, text);
    const Result<DiscContents> contents = DiscContents::parse(text);
    QVERIFY(!contents);
    QCOMPARE(contents.error().code, ErrorCode::InvalidArgument);
    QVERIFY(!contents.error().detail.isEmpty());
}

void TestDiscContents::takesWhatADiscMayBe()
{
    QCOMPARE(disc(textOf(std::vector<qint64>(99, 10))).trackCount(), 99);
    QCOMPARE(disc(u"150 %1"_s.arg(65536 * 75 - 1)).totalSeconds(), 65535);
    QCOMPARE(disc(u"150 150 150"_s).trackFrames(1), 0);
}

void TestDiscContents::lengthsAreComparedTrackByTrack()
{
    const DiscContents contents = disc(u"150 1000 2000 3075"_s);
    DiscRecord record;
    using Differences = std::vector<std::optional<qint64>>;
    QCOMPARE(lengthDifferences(contents, record), (Differences{std::nullopt, std::nullopt, std::nullopt}));
    record.frameOffsets = {150, 990, 2000};
    QCOMPARE(lengthDifferences(contents, record), (Differences{10, -10, std::nullopt}));
    record.seconds = 41;
    QCOMPARE(lengthDifferences(contents, record), (Differences{10, -10, 0}));
    record.frameOffsets = {150, 990};
    QCOMPARE(lengthDifferences(contents, record), (Differences{10, -1085, std::nullopt}));
}

QTEST_GUILESS_MAIN(TestDiscContents)
#include "tst_disccontents.moc"
