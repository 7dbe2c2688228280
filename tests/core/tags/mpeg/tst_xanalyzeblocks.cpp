// SPDX-License-Identifier: GPL-3.0-or-later
// The stream analysis: tags around and between frames are skipped. An info frame is not audio, whatever it claims, but
// the played samples exclude the encoder's delay and padding that it states.
#include "core/tags/mpeg/xanalyze.h"
#include "support/analysebytes.h"
#include "support/mpegbuilder.h"

#include <QTest>

using namespace ravlin;
using namespace ravlin::test;
using mpeg::ChannelMode;
using mpeg::Version;

class TestXAnalyzeBlocks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tagsAreNoDamage_data();
    void tagsAreNoDamage();
    void tagsBetweenJoinedFilesAreNoDamage();
    void tagsOnlyIsNoFrame();
    void id3v2LargerThanFileIsJunk();
    void infoFrameIsNoAudio_data();
    void infoFrameIsNoAudio();
    void infoFrameOfLayer2IsAudio();
    void secondInfoFrameIsAudio();
    void infoFrameAloneHasNoSamples();
    void lyingFrameCountIsIgnored();
    void delayAndPaddingAreTrimmed();
    void delayAndPaddingOfOtherEncodersAreNotTold();
    void zeroDelayAndPaddingAreNotTold();
    void trimmingBeyondTheStreamLeavesNothing();
    void truncatedStreamLosesItsPaddingFirst();
};

void TestXAnalyzeBlocks::tagsAreNoDamage_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("behind");
    const auto before = [](const char *name, const MpegBuilder &builder) {
        QTest::newRow(name) << builder.data() << QByteArray();
    };
    const auto behind = [](const char *name, const MpegBuilder &builder) {
        QTest::newRow(name) << QByteArray() << builder.data();
    };
    before("ID3v2", MpegBuilder().id3v2(1000));
    before("empty ID3v2", MpegBuilder().id3v2(0));
    before("several ID3v2", MpegBuilder().id3v2(100).id3v2(0).id3v2(300'000));
    before("ID3v2 with footer", MpegBuilder().id3v2(1000, true));
    before("large ID3v2", MpegBuilder().id3v2(12'000'000));
    before("APEv2", MpegBuilder().ape());
    before("ID3v2 and APEv2", MpegBuilder().id3v2(50).ape());
    behind("ID3v1", MpegBuilder().id3v1());
    behind("extended ID3v1", MpegBuilder().id3v1(true));
    behind("APEv1", MpegBuilder().ape(1000, false));
    behind("APEv2 with header", MpegBuilder().ape());
    behind("APEv2 without header", MpegBuilder().ape(2000, false));
    behind("APEv2, ID3v1", MpegBuilder().ape().id3v1());
    behind("ID3v1, APEv2", MpegBuilder().id3v1().ape());
    behind("Lyrics3 v1", MpegBuilder().lyrics3v1().id3v1());
    behind("Lyrics3 v2", MpegBuilder().lyrics3v2().id3v1());
    behind("Lyrics3 v2 without ID3v1", MpegBuilder().lyrics3v2());
    behind("APEv2, Lyrics3, extended ID3v1", MpegBuilder().ape().lyrics3v2().id3v1(true));
    behind("appended ID3v2", MpegBuilder().id3v2(200, true));
    behind("appended ID3v2, ID3v1", MpegBuilder().id3v2(200, true).id3v1());
    behind("ID3v2 without footer", MpegBuilder().id3v2(200));
    behind("two ID3v1", MpegBuilder().id3v1().id3v1());
}

void TestXAnalyzeBlocks::tagsAreNoDamage()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, behind);
    // One frame, and many: the last frames have fewer followers.
    for (const int frames : {1, 2, 30}) {
        const XAnalyzer::Outcome outcome = analyse(MpegBuilder().bytes(before).frames(frames).bytes(behind));
        QCOMPARE(outcome.code, XAnalyzeOk);
        QCOMPARE(outcome.stream.firstFrame, before.size());
        QCOMPARE(outcome.stream.frames, frames);
        QCOMPARE(outcome.stream.audioBytes, frames * 417);
        QCOMPARE(outcome.stream.bytesSearched, 0);
    }
}

void TestXAnalyzeBlocks::tagsBetweenJoinedFilesAreNoDamage()
{
    const XAnalyzer::Outcome outcome =
        analyse(MpegBuilder().id3v2(50).frames(10).ape().id3v1().id3v2(70, true).frames(1).id3v1().frames(5).id3v1());
    QCOMPARE(outcome.code, XAnalyzeOk);
    QCOMPARE(outcome.stream.frames, 16);
}

void TestXAnalyzeBlocks::tagsOnlyIsNoFrame()
{
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder().id3v2(500).id3v1());
    QCOMPARE(outcome.code, XAnalyzeNoFrame);
    QCOMPARE(outcome.record().frames, 0);
}

void TestXAnalyzeBlocks::id3v2LargerThanFileIsJunk()
{
    MpegBuilder builder;
    builder.bytes(QByteArray("ID3\4\0\0\x7f\x7f\x7f\x7f", 10)).frames(10);
    const XAnalyzer::Outcome outcome = analyse(builder);
    QCOMPARE(outcome.code, XAnalyzeOk);
    QCOMPARE(outcome.stream.frames, 10);
}

void TestXAnalyzeBlocks::infoFrameIsNoAudio_data()
{
    QTest::addColumn<QByteArray>("infoFrame");
    QTest::addColumn<int>("version");
    QTest::addColumn<int>("channelMode");
    for (const Version version : {Version::Mpeg1, Version::Mpeg2, Version::Mpeg25}) {
        for (const ChannelMode mode : {ChannelMode::JointStereo, ChannelMode::Mono}) {
            FrameSpec spec;
            spec.version = version;
            spec.channelMode = mode;
            spec.sampleRate = version == Version::Mpeg1 ? 44100 : version == Version::Mpeg2 ? 22050 : 11025;
            const auto add = [&](const char *name, const MpegBuilder &builder) {
                QTest::addRow("%s, version %d, mode %d", name, int(version), int(mode))
                    << builder.data() << int(version) << int(mode);
            };
            add("Info", MpegBuilder(spec).xing({}));
            add("Xing", MpegBuilder(spec).xing({.mark = "Xing", .frames = 10}));
            add("Xing without extension", MpegBuilder(spec).xing({.mark = "Xing", .encoder = {}}));
            add("VBRI", MpegBuilder(spec).vbri(10));
            spec.checksum = true;
            add("Info in place behind a checksum", MpegBuilder(spec).xing({}));
            add("Info shifted by a checksum", MpegBuilder(spec).xing({.shift = 2}));
        }
    }
}

void TestXAnalyzeBlocks::infoFrameIsNoAudio()
{
    QFETCH(QByteArray, infoFrame);
    QFETCH(int, version);
    QFETCH(int, channelMode);
    FrameSpec spec;
    spec.version = Version(version);
    spec.channelMode = ChannelMode(channelMode);
    spec.sampleRate = spec.version == Version::Mpeg1 ? 44100 : spec.version == Version::Mpeg2 ? 22050 : 11025;
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder(spec).id3v2(20).bytes(infoFrame).frames(10));
    QCOMPARE(outcome.code, XAnalyzeOk);
    QVERIFY(outcome.stream.hasInfoFrame);
    QCOMPARE(outcome.record().flags & XAnalyzeHasInfoFrame, quint32(XAnalyzeHasInfoFrame));
    QCOMPARE(outcome.stream.firstFrame, 30);
    QCOMPARE(outcome.stream.frames, 10);
    QCOMPARE(outcome.stream.audioBytes, 10 * spec.length());
}

void TestXAnalyzeBlocks::infoFrameOfLayer2IsAudio()
{
    FrameSpec spec;
    spec.layer = 2;
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder(spec).xing({}).frames(10));
    QCOMPARE(outcome.stream.frames, 11);
    QVERIFY(!outcome.stream.hasInfoFrame);
}

void TestXAnalyzeBlocks::secondInfoFrameIsAudio()
{
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder().xing({}).frames(10).xing({}).frames(10));
    QCOMPARE(outcome.code, XAnalyzeOk);
    QCOMPARE(outcome.stream.frames, 21);
}

void TestXAnalyzeBlocks::infoFrameAloneHasNoSamples()
{
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder().xing({.delay = 576, .padding = 1000}));
    QCOMPARE(outcome.code, XAnalyzeOk);
    QCOMPARE(outcome.stream.samples, 0);
    QCOMPARE(outcome.stream.playedSamples, 0);
    QCOMPARE(outcome.stream.milliseconds, 0);
    QCOMPARE(outcome.stream.bitRate, 0);
}

void TestXAnalyzeBlocks::lyingFrameCountIsIgnored()
{
    for (const quint32 frames : {0U, 1U, 999U, 0xFFFFFFFFU}) {
        QCOMPARE(analyse(MpegBuilder().xing({.frames = frames, .encoder = {}}).frames(10)).stream.playedSamples, 11520);
        QCOMPARE(analyse(MpegBuilder().vbri(frames).frames(10)).stream.playedSamples, 11520);
    }
}

void TestXAnalyzeBlocks::delayAndPaddingAreTrimmed()
{
    for (const QByteArray &encoder : {QByteArray("LAME3.100"), QByteArray("Lavc59.37"), QByteArray("Lavf58.29"),
             QByteArray("L3.99r1"), QByteArray("GOGO3.13")}) {
        const XAnalyzer::Outcome outcome =
            analyse(MpegBuilder().xing({.frames = 10, .encoder = encoder, .delay = 576, .padding = 1234}).frames(10));
        QCOMPARE(outcome.stream.samples, 11520);
        QCOMPARE(outcome.stream.encoderDelay, 576);
        QCOMPARE(outcome.stream.encoderPadding, 1234);
        QCOMPARE(outcome.stream.playedSamples, 11520 - 576 - 1234);
        QCOMPARE(outcome.stream.milliseconds, (11520 - 576 - 1234) * 1000 / 44100);
    }
}

void TestXAnalyzeBlocks::delayAndPaddingOfOtherEncodersAreNotTold()
{
    const XAnalyzer::Outcome outcome =
        analyse(MpegBuilder().xing({.encoder = "Other 1.0", .delay = 576, .padding = 1234}).frames(10));
    QVERIFY(!outcome.stream.encoderDelay);
    QCOMPARE(outcome.stream.playedSamples, 11520);
}

void TestXAnalyzeBlocks::zeroDelayAndPaddingAreNotTold()
{
    QVERIFY(!analyse(MpegBuilder().xing({}).frames(10)).stream.encoderDelay);
}

void TestXAnalyzeBlocks::trimmingBeyondTheStreamLeavesNothing()
{
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder().xing({.delay = 4095, .padding = 4095}).frames(5));
    QCOMPARE(outcome.stream.playedSamples, 0);
    QCOMPARE(outcome.stream.milliseconds, 0);
    QCOMPARE(outcome.stream.samples, 5760);
}

void TestXAnalyzeBlocks::truncatedStreamLosesItsPaddingFirst()
{
    // Ten frames stated: the music ends 1000 - 529 samples before the tenth does, because the decoder lags 529 behind.
    const InfoSpec info{.frames = 10, .delay = 576, .padding = 1000};
    const auto played = [&](int frames) {
        return analyse(MpegBuilder().xing(info).frames(frames)).stream.playedSamples;
    };
    QCOMPARE(played(10), 11520 - 576 - 1000);
    QCOMPARE(played(9), 9 * 1152 - 576 - 529);
    QCOMPARE(played(1), 1152 - 576 - 529);
    // Joined with more: players still cut the padding.
    QCOMPARE(played(12), 12 * 1152 - 576 - 1000);
}

QTEST_GUILESS_MAIN(TestXAnalyzeBlocks)
#include "tst_xanalyzeblocks.moc"
