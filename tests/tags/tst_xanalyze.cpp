// The stream analysis: every kind of frame is walked and counted exactly; what is around the frames is stepped over;
// an info frame is no audio but tells the trimming; damage is told and survived; hostile bytes cost little time.
#include "support/mpegbuilder.h"
#include "tags/xanalyze.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

using namespace ravlin;
using namespace ravlin::test;
using mpeg::ChannelMode;
using mpeg::Version;

namespace {

XAnalyzer::Outcome analyse(const QByteArray &bytes)
{
    mpeg::MemorySource source(bytes);
    XAnalyzer analyzer(platform::FileSystem::native());
    return analyzer.analyse(source);
}

XAnalyzer::Outcome analyse(const MpegBuilder &builder)
{
    return analyse(builder.data());
}

FrameSpec mpeg1(int bitRate, bool padded = false)
{
    FrameSpec spec;
    spec.bitRate = bitRate;
    spec.padded = padded;
    return spec;
}

FrameSpec freeFormat(int length, int layer = 3)
{
    FrameSpec spec;
    spec.layer = layer;
    spec.bitRate = 0;
    spec.freeLength = length;
    return spec;
}

FrameSpec padded(FrameSpec spec)
{
    spec.padded = true;
    return spec;
}

/// Bytes of no pattern, without 0xFF.
QByteArray junk(int size)
{
    QByteArray bytes(size, '\0');
    quint32 state = 12345;
    for (char &byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = char((state >> 24U) % 255U);
    }
    return bytes;
}

/// A source whose bytes end, or cannot be read, before the size that it tells.
class FailingSource final : public mpeg::ByteSource
{
public:
    FailingSource(const QByteArray &bytes, qint64 size, bool fails) : m_bytes(bytes), m_size(size), m_fails(fails) {}
    qint64 size() const override { return m_size; }
    Result<qint64> readAt(std::span<char> buffer, qint64 offset) override
    {
        if (m_fails && offset + qint64(buffer.size()) > m_bytes.size())
            return tl::unexpected(Error{ErrorCode::Io, {}, {}});
        return mpeg::MemorySource(m_bytes).readAt(buffer, offset);
    }

private:
    QByteArray m_bytes;
    qint64 m_size;
    bool m_fails;
};

} // namespace

class TestXAnalyze : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyVersionLayerAndRate_data();
    void everyVersionLayerAndRate();
    void everyBitRate_data();
    void everyBitRate();
    void channelModeIsThatOfTheFrames();
    void constantBitRateWithPaddingIsNominal();
    void variableBitRateIsTheAverage();
    void checksumIsTold();
    void millisecondsAreTruncated();
    void streamLongerThanTheWindow();

    void freeFormat_data();
    void freeFormat();
    void freeFormatBehindInfoFrameWithBitRate();

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

    void truncatedLastFrame_data();
    void truncatedLastFrame();
    void truncatedBeforeTags();
    void lostSyncIsFoundAgain();
    void damagedHeaderCostsOneFrame();
    void junkInFrontIsNoDamage();
    void falseHeaderInJunkIsNotTaken();
    void zerosBehindAreNoDamage();
    void junkBehindIsDamage();
    void singleFrame();
    void twoFramesBeforeJunk();
    void cutSingleFrameIsNone();
    void joinedRatesAddUp();
    void joinedLayersAddUp();

    void sourceThatShrinksJustEnds();
    void readErrorIsInternalError();
    void hostileBytesCostLittleTime_data();
    void hostileBytesCostLittleTime();
    void operationsOfTheLibrary();
};

void TestXAnalyze::everyVersionLayerAndRate_data()
{
    QTest::addColumn<int>("version");
    QTest::addColumn<int>("layer");
    QTest::addColumn<int>("sampleRate");
    QTest::addColumn<int>("samples");
    const struct
    {
        Version version;
        QList<int> rates;
    } versions[] = {{Version::Mpeg1, {44100, 48000, 32000}}, {Version::Mpeg2, {22050, 24000, 16000}},
        {Version::Mpeg25, {11025, 12000, 8000}}};
    for (const auto &[version, rates] : versions) {
        for (const int rate : rates) {
            for (const int layer : {1, 2, 3}) {
                const int samples = layer == 1 ? 384 : layer == 2 || version == Version::Mpeg1 ? 1152 : 576;
                QTest::addRow("layer %d, %d Hz", layer, rate) << int(version) << layer << rate << samples;
            }
        }
    }
}

void TestXAnalyze::everyVersionLayerAndRate()
{
    QFETCH(int, version);
    QFETCH(int, layer);
    QFETCH(int, sampleRate);
    QFETCH(int, samples);
    FrameSpec spec;
    spec.version = Version(version);
    spec.layer = layer;
    spec.sampleRate = sampleRate;
    spec.bitRate = 64;
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder(spec).frames(20).frames(5, padded(spec)));
    QCOMPARE(outcome.code, XAnalyzeOk);
    QCOMPARE(int(outcome.stream.version), version);
    QCOMPARE(outcome.record().version, version);
    QCOMPARE(outcome.stream.layer, layer);
    QCOMPARE(outcome.stream.sampleRate, sampleRate);
    QCOMPARE(outcome.stream.frames, 25);
    QCOMPARE(outcome.stream.samples, 25 * samples);
    QCOMPARE(outcome.stream.bitRate, 64);
    QCOMPARE(outcome.stream.milliseconds, qint64(25) * samples * 1000 / sampleRate);
}

void TestXAnalyze::everyBitRate_data()
{
    QTest::addColumn<int>("version");
    QTest::addColumn<int>("layer");
    QTest::addColumn<int>("bitRate");
    const struct
    {
        Version version;
        int layer;
        QList<int> rates;
    } tables[] = {
        {Version::Mpeg1, 1, {32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448}},
        {Version::Mpeg1, 2, {32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384}},
        {Version::Mpeg1, 3, {32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320}},
        {Version::Mpeg2, 1, {32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256}},
        {Version::Mpeg2, 2, {8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160}},
        {Version::Mpeg25, 3, {8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160}},
    };
    for (const auto &[version, layer, rates] : tables) {
        for (const int rate : rates)
            QTest::addRow("version %d layer %d, %d kbps", int(version), layer, rate) << int(version) << layer << rate;
    }
}

void TestXAnalyze::everyBitRate()
{
    QFETCH(int, version);
    QFETCH(int, layer);
    QFETCH(int, bitRate);
    FrameSpec spec;
    spec.version = Version(version);
    spec.layer = layer;
    spec.bitRate = bitRate;
    spec.sampleRate = spec.version == Version::Mpeg1 ? 44100 : spec.version == Version::Mpeg2 ? 22050 : 11025;
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder(spec).frames(7));
    QCOMPARE(outcome.code, XAnalyzeOk);
    QCOMPARE(outcome.stream.frames, 7);
    QCOMPARE(outcome.stream.bitRate, bitRate);
    QCOMPARE(outcome.stream.audioBytes, 7 * spec.length());
}

void TestXAnalyze::channelModeIsThatOfTheFrames()
{
    for (const int mode : {0, 1, 2, 3}) {
        FrameSpec spec;
        spec.channelMode = ChannelMode(mode);
        QCOMPARE(analyse(MpegBuilder(spec).frames(5)).record().channelMode, mode);
    }
}

void TestXAnalyze::constantBitRateWithPaddingIsNominal()
{
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder().frames(3, mpeg1(128)).frames(1, mpeg1(128, true)));
    QCOMPARE(outcome.stream.bitRate, 128);
    QCOMPARE(outcome.record().flags & XAnalyzeVariable, 0U);
}

void TestXAnalyze::variableBitRateIsTheAverage()
{
    // 417 + 2 * 1044 bytes in 3 * 1152 samples: 255.8 kbps.
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder().frames(1, mpeg1(128)).frames(2, mpeg1(320)));
    QCOMPARE(outcome.stream.audioBytes, 417 + 2 * 1044);
    QCOMPARE(outcome.stream.bitRate, 256);
    QVERIFY(outcome.stream.isVariable);
    QCOMPARE(outcome.record().flags & XAnalyzeVariable, quint32(XAnalyzeVariable));
}

void TestXAnalyze::checksumIsTold()
{
    FrameSpec spec;
    spec.checksum = true;
    QVERIFY(analyse(MpegBuilder(spec).frames(5)).stream.hasChecksum);
    QVERIFY(!analyse(MpegBuilder().frames(5)).stream.hasChecksum);
}

void TestXAnalyze::millisecondsAreTruncated()
{
    // 6 * 1152 / 44100 = 156.73 ms
    QCOMPARE(analyse(MpegBuilder().frames(6)).stream.milliseconds, 156);
}

void TestXAnalyze::streamLongerThanTheWindow()
{
    for (const int inFront : {0, 1, 2, 3, 417}) {
        const int frames = 4 * int(mpeg::ByteWindow::Size) / 417;
        const XAnalyzer::Outcome outcome = analyse(MpegBuilder().bytes(QByteArray(inFront, 'x')).frames(frames));
        QCOMPARE(outcome.code, XAnalyzeOk);
        QCOMPARE(outcome.stream.firstFrame, inFront);
        QCOMPARE(outcome.stream.frames, frames);
    }
}

void TestXAnalyze::freeFormat_data()
{
    QTest::addColumn<int>("layer");
    QTest::addColumn<int>("length");
    QTest::newRow("layer III, low") << 3 << 60;
    QTest::newRow("layer III, as 200 kbps") << 3 << 653;
    QTest::newRow("layer III, as 640 kbps") << 3 << 2089;
    QTest::newRow("layer III, longest") << 3 << 8192;
    QTest::newRow("layer II") << 2 << 1000;
    QTest::newRow("layer I") << 1 << 400;
}

void TestXAnalyze::freeFormat()
{
    QFETCH(int, layer);
    QFETCH(int, length);
    const FrameSpec spec = ::freeFormat(length, layer);
    const XAnalyzer::Outcome outcome =
        analyse(MpegBuilder(spec).frames(1).frames(1, padded(spec)).frames(40).frames(3, padded(spec)).id3v1());
    const int slot = layer == 1 ? 4 : 1;
    const int samples = layer == 1 ? 384 : 1152;
    QCOMPARE(outcome.code, XAnalyzeOk);
    QCOMPARE(outcome.stream.frames, 45);
    QCOMPARE(outcome.stream.audioBytes, 45 * length + 4 * slot);
    QVERIFY(!outcome.stream.isVariable);
    QCOMPARE(outcome.stream.bitRate, qRound((45.0 * length + 4 * slot) * 8 * 44.1 / (45.0 * samples)));
}

void TestXAnalyze::freeFormatBehindInfoFrameWithBitRate()
{
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder().xing({}).frames(10, ::freeFormat(700)));
    QCOMPARE(outcome.code, XAnalyzeOk);
    QVERIFY(outcome.stream.hasInfoFrame);
    QCOMPARE(outcome.stream.frames, 10);
    QCOMPARE(outcome.stream.audioBytes, 7000);
}

void TestXAnalyze::tagsAreNoDamage_data()
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

void TestXAnalyze::tagsAreNoDamage()
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

void TestXAnalyze::tagsBetweenJoinedFilesAreNoDamage()
{
    const XAnalyzer::Outcome outcome = analyse(
        MpegBuilder().id3v2(50).frames(10).ape().id3v1().id3v2(70, true).frames(1).id3v1().frames(5).id3v1());
    QCOMPARE(outcome.code, XAnalyzeOk);
    QCOMPARE(outcome.stream.frames, 16);
}

void TestXAnalyze::tagsOnlyIsNoFrame()
{
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder().id3v2(500).id3v1());
    QCOMPARE(outcome.code, XAnalyzeNoFrame);
    QCOMPARE(outcome.record().frames, 0);
}

void TestXAnalyze::id3v2LargerThanFileIsJunk()
{
    MpegBuilder builder;
    builder.bytes(QByteArray("ID3\4\0\0\x7f\x7f\x7f\x7f", 10)).frames(10);
    const XAnalyzer::Outcome outcome = analyse(builder);
    QCOMPARE(outcome.code, XAnalyzeOk);
    QCOMPARE(outcome.stream.frames, 10);
}

void TestXAnalyze::infoFrameIsNoAudio_data()
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

void TestXAnalyze::infoFrameIsNoAudio()
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

void TestXAnalyze::infoFrameOfLayer2IsAudio()
{
    FrameSpec spec;
    spec.layer = 2;
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder(spec).xing({}).frames(10));
    QCOMPARE(outcome.stream.frames, 11);
    QVERIFY(!outcome.stream.hasInfoFrame);
}

void TestXAnalyze::secondInfoFrameIsAudio()
{
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder().xing({}).frames(10).xing({}).frames(10));
    QCOMPARE(outcome.code, XAnalyzeOk);
    QCOMPARE(outcome.stream.frames, 21);
}

void TestXAnalyze::infoFrameAloneHasNoSamples()
{
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder().xing({.delay = 576, .padding = 1000}));
    QCOMPARE(outcome.code, XAnalyzeOk);
    QCOMPARE(outcome.stream.samples, 0);
    QCOMPARE(outcome.stream.playedSamples, 0);
    QCOMPARE(outcome.stream.milliseconds, 0);
    QCOMPARE(outcome.stream.bitRate, 0);
}

void TestXAnalyze::lyingFrameCountIsIgnored()
{
    for (const quint32 frames : {0U, 1U, 999U, 0xFFFFFFFFU}) {
        QCOMPARE(analyse(MpegBuilder().xing({.frames = frames, .encoder = {}}).frames(10)).stream.playedSamples, 11520);
        QCOMPARE(analyse(MpegBuilder().vbri(frames).frames(10)).stream.playedSamples, 11520);
    }
}

void TestXAnalyze::delayAndPaddingAreTrimmed()
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

void TestXAnalyze::delayAndPaddingOfOtherEncodersAreNotTold()
{
    const XAnalyzer::Outcome outcome =
        analyse(MpegBuilder().xing({.encoder = "Other 1.0", .delay = 576, .padding = 1234}).frames(10));
    QVERIFY(!outcome.stream.encoderDelay);
    QCOMPARE(outcome.stream.playedSamples, 11520);
}

void TestXAnalyze::zeroDelayAndPaddingAreNotTold()
{
    QVERIFY(!analyse(MpegBuilder().xing({}).frames(10)).stream.encoderDelay);
}

void TestXAnalyze::trimmingBeyondTheStreamLeavesNothing()
{
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder().xing({.delay = 4095, .padding = 4095}).frames(5));
    QCOMPARE(outcome.stream.playedSamples, 0);
    QCOMPARE(outcome.stream.milliseconds, 0);
    QCOMPARE(outcome.stream.samples, 5760);
}

void TestXAnalyze::truncatedStreamLosesItsPaddingFirst()
{
    // Ten frames told: the music ends 1000 - 529 samples before the tenth does; the decoder lags 529 behind.
    const InfoSpec info{.frames = 10, .delay = 576, .padding = 1000};
    const auto played = [&](int frames) {
        return analyse(MpegBuilder().xing(info).frames(frames)).stream.playedSamples;
    };
    QCOMPARE(played(10), 11520 - 576 - 1000);
    QCOMPARE(played(9), 9 * 1152 - 576 - 529);
    QCOMPARE(played(1), 1152 - 576 - 529);
    // Joined with more: players take the padding off all the same.
    QCOMPARE(played(12), 12 * 1152 - 576 - 1000);
}

void TestXAnalyze::truncatedLastFrame_data()
{
    QTest::addColumn<int>("missing");
    for (const int missing : {1, 100, 413, 414, 416})
        QTest::addRow("%d bytes missing", missing) << missing;
}

void TestXAnalyze::truncatedLastFrame()
{
    QFETCH(int, missing);
    for (const int frames : {2, 3, 4, 50}) {
        const XAnalyzer::Outcome outcome = analyse(MpegBuilder().frames(frames).cut(missing));
        QCOMPARE(outcome.code, XAnalyzeDamaged);
        QVERIFY(outcome.stream.isTruncated);
        QCOMPARE(outcome.stream.frames, frames - 1);
        QCOMPARE(outcome.stream.resynchronisations, 0);
    }
}

void TestXAnalyze::truncatedBeforeTags()
{
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder().frames(10).cut(50).ape().id3v1());
    QCOMPARE(outcome.code, XAnalyzeDamaged);
    QCOMPARE(outcome.stream.frames, 9);
}

void TestXAnalyze::lostSyncIsFoundAgain()
{
    const XAnalyzer::Outcome outcome =
        analyse(MpegBuilder().frames(10).bytes(junk(500'000)).frames(10).bytes(junk(10)).frames(10));
    QCOMPARE(outcome.code, XAnalyzeDamaged);
    QCOMPARE(outcome.stream.resynchronisations, 2);
    QCOMPARE(outcome.stream.frames, 30);
    QVERIFY(!outcome.stream.isTruncated);
    QCOMPARE(outcome.record().frames, 30);
}

void TestXAnalyze::damagedHeaderCostsOneFrame()
{
    QByteArray bytes = MpegBuilder().frames(20).data();
    bytes[10 * 417] = 'x';
    const XAnalyzer::Outcome outcome = analyse(bytes);
    QCOMPARE(outcome.code, XAnalyzeDamaged);
    QCOMPARE(outcome.stream.frames, 19);
    QCOMPARE(outcome.stream.resynchronisations, 1);
}

void TestXAnalyze::junkInFrontIsNoDamage()
{
    for (const int size : {1, 3, 417, 5000, 300'000}) {
        const XAnalyzer::Outcome outcome = analyse(MpegBuilder().bytes(junk(size)).xing({}).frames(10).id3v1());
        QCOMPARE(outcome.code, XAnalyzeOk);
        QCOMPARE(outcome.stream.firstFrame, size);
        QCOMPARE(outcome.stream.bytesSearched, size);
        QCOMPARE(outcome.stream.frames, 10);
    }
}

void TestXAnalyze::falseHeaderInJunkIsNotTaken()
{
    // Two headers one frame apart, the third missing; and one of another rate.
    MpegBuilder builder;
    builder.frames(2, mpeg1(320)).bytes(junk(3000)).frames(1, {.sampleRate = 48000}).bytes(junk(3000)).frames(10);
    const XAnalyzer::Outcome outcome = analyse(builder);
    QCOMPARE(outcome.code, XAnalyzeOk);
    QCOMPARE(outcome.stream.frames, 10);
    QCOMPARE(outcome.stream.bitRate, 128);
}

void TestXAnalyze::zerosBehindAreNoDamage()
{
    QCOMPARE(analyse(MpegBuilder().frames(10).bytes(QByteArray(300'000, '\0')).id3v1()).code, XAnalyzeOk);
    QCOMPARE(analyse(MpegBuilder().frames(10).bytes(QByteArray(1, '\0'))).code, XAnalyzeOk);
}

void TestXAnalyze::junkBehindIsDamage()
{
    for (const int size : {1, 3, 100, 300'000}) {
        const XAnalyzer::Outcome outcome = analyse(MpegBuilder().frames(10).bytes(junk(size).replace(0, 1, "x")));
        QCOMPARE(outcome.code, XAnalyzeDamaged);
        QCOMPARE(outcome.stream.frames, 10);
        QCOMPARE(outcome.stream.resynchronisations, 1);
    }
}

void TestXAnalyze::singleFrame()
{
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder().frames(1));
    QCOMPARE(outcome.code, XAnalyzeOk);
    QCOMPARE(outcome.stream.samples, 1152);
    QCOMPARE(outcome.stream.milliseconds, 26);
}

void TestXAnalyze::twoFramesBeforeJunk()
{
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder().frames(2).bytes(junk(1000)));
    QCOMPARE(outcome.code, XAnalyzeDamaged);
    QCOMPARE(outcome.stream.frames, 2);
}

void TestXAnalyze::cutSingleFrameIsNone()
{
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder().frames(1).cut(1));
    QCOMPARE(outcome.code, XAnalyzeNoFrame);
    QCOMPARE(outcome.record().frames, 416);
}

void TestXAnalyze::joinedRatesAddUp()
{
    const FrameSpec other{.sampleRate = 48000};
    const FrameSpec low{.version = Version::Mpeg2, .bitRate = 64, .sampleRate = 22050};
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder().frames(441).frames(480, other).frames(10, low));
    QCOMPARE(outcome.code, XAnalyzeOk);
    QCOMPARE(outcome.stream.samples, (441 + 480) * 1152 + 5760);
    QCOMPARE(outcome.stream.milliseconds, 11520 + 11520 + 261); // 5760 / 22050 s = 261.2 ms
    QCOMPARE(outcome.stream.sampleRate, 44100);
}

void TestXAnalyze::joinedLayersAddUp()
{
    const FrameSpec layer2{.layer = 2, .bitRate = 192};
    const FrameSpec layer1{.layer = 1, .bitRate = 192};
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder().frames(10).frames(10, layer2).frames(10, layer1));
    QCOMPARE(outcome.code, XAnalyzeOk);
    QCOMPARE(outcome.stream.samples, 10 * (1152 + 1152 + 384));
    QCOMPARE(outcome.stream.layer, 3);
}

void TestXAnalyze::sourceThatShrinksJustEnds()
{
    FailingSource source(MpegBuilder().frames(1000).data(), 1'000'000, false);
    XAnalyzer analyzer(platform::FileSystem::native());
    const XAnalyzer::Outcome outcome = analyzer.analyse(source);
    QCOMPARE(outcome.code, XAnalyzeOk);
    QCOMPARE(outcome.stream.frames, 1000);
}

void TestXAnalyze::readErrorIsInternalError()
{
    FailingSource source(MpegBuilder().frames(1000).data(), 1'000'000, true);
    XAnalyzer analyzer(platform::FileSystem::native());
    QCOMPARE(analyzer.analyse(source).code, XAnalyzeInternalError);
}

void TestXAnalyze::hostileBytesCostLittleTime_data()
{
    constexpr int Size = 8'000'000;
    QTest::addColumn<QByteArray>("bytes");
    const auto repeated = [](const QByteArray &part) { return part.repeated(Size / part.size()); };
    const QByteArray header("\xff\xfb\x90\x00", 4);
    const QByteArray freeHeader("\xff\xfb\x00\x00", 4);
    QTest::newRow("0xFF") << QByteArray(Size, '\xff');
    QTest::newRow("headers") << repeated(header);
    QTest::newRow("free format headers") << repeated(freeHeader);
    QTest::newRow("free format headers of many kinds")
        << repeated(QByteArray("\xff\xfb\x00\x00\xff\xf3\x04\x00\xff\xe3\x08\x00\xff\xfd\x00\x00\xff\xf5\x04\x00", 20));
    QTest::newRow("free format headers far apart") << repeated(freeHeader + QByteArray(3000, '\xff') + freeHeader
        + QByteArray(2999, '\0'));
    QTest::newRow("pairs of frames and junk") << repeated(MpegBuilder().frames(2).bytes(junk(50)).data());
    QTest::newRow("threes of frames and junk") << repeated(MpegBuilder().frames(3).bytes(junk(50)).data());
    QTest::newRow("frame and zeros") << repeated(MpegBuilder().frames(3).data() + QByteArray(5000, '\0') + 'x');
    QTest::newRow("empty ID3v2 tags") << repeated(MpegBuilder().id3v2(0).data());
    QTest::newRow("ID3v1 tags") << repeated(MpegBuilder().id3v1().data());
    QTest::newRow("APE footers") << repeated(MpegBuilder().ape(2000, false).data());
}

void TestXAnalyze::hostileBytesCostLittleTime()
{
    QFETCH(QByteArray, bytes);
    QElapsedTimer timer;
    timer.start();
    analyse(bytes);
    // In proportion to the size this takes tens of milliseconds, a few hundred under sanitizers; quadratic behaviour
    // would take minutes.
    QVERIFY2(timer.elapsed() < 20'000, qPrintable(QString::number(timer.elapsed())));
    qInfo("%lld ms", timer.elapsed());
}

void TestXAnalyze::operationsOfTheLibrary()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("a.mp3"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(MpegBuilder().xing({.mark = "Xing"}).frames(50, mpeg1(128)).frames(50, mpeg1(192)).data());
    file.close();

    XAnalyzer *handle = xanalyzer_new();
    QVERIFY(handle != nullptr);
    XAnalyzeRecord record;
    QCOMPARE(xanalyzer_process_file(handle, path, &record), 0);
    QCOMPARE(record.version, 1);
    QCOMPARE(record.bitRate, 160);
    QCOMPARE(record.frequency, 44100);
    QCOMPARE(record.layer, 3);
    QCOMPARE(record.channelMode, 1);
    QCOMPARE(record.frames, 100);
    QCOMPARE(record.milliseconds, 2612);
    QCOMPARE(record.flags, quint32(XAnalyzeHasInfoFrame | XAnalyzeVariable));
    QCOMPARE(xanalyzer_process_file(handle, folder.filePath(QStringLiteral("none")), &record), -4);
    QCOMPARE(record.frames, 0);
    QCOMPARE(xanalyzer_process_file(handle, path, nullptr), -2);
    QCOMPARE(xanalyzer_process_file(nullptr, path, &record), -2);
    xanalyzer_delete(handle);
    xanalyzer_delete(nullptr);
}

QTEST_GUILESS_MAIN(TestXAnalyze)
#include "tst_xanalyze.moc"
