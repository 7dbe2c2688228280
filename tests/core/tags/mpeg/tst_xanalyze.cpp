// SPDX-License-Identifier: GPL-3.0-or-later
// The stream analysis: every kind of frame is walked and counted exactly, and the operations of the library return the
// values in their record.
#include "core/tags/mpeg/xanalyze.h"
#include "support/analysebytes.h"
#include "support/mpegbuilder.h"

#include <QTemporaryDir>
#include <QTest>

using namespace ravlin;
using namespace ravlin::test;
using mpeg::ChannelMode;
using mpeg::Version;

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
    const XAnalyzer::Outcome outcome =
        analyse(MpegBuilder().frames(3, ofBitRate(128)).frames(1, padded(ofBitRate(128))));
    QCOMPARE(outcome.stream.bitRate, 128);
    QCOMPARE(outcome.record().flags & XAnalyzeVariable, 0U);
}

void TestXAnalyze::variableBitRateIsTheAverage()
{
    // 417 + 2 * 1044 bytes in 3 * 1152 samples: 255.8 kbps.
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder().frames(1, ofBitRate(128)).frames(2, ofBitRate(320)));
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
        const int frames = 4 * int(mpeg::WindowSize) / 417;
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
    const FrameSpec spec = freeFormatFrame(length, layer);
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
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder().xing({}).frames(10, freeFormatFrame(700)));
    QCOMPARE(outcome.code, XAnalyzeOk);
    QVERIFY(outcome.stream.hasInfoFrame);
    QCOMPARE(outcome.stream.frames, 10);
    QCOMPARE(outcome.stream.audioBytes, 7000);
}

void TestXAnalyze::operationsOfTheLibrary()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("a.mp3"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(MpegBuilder().xing({.mark = "Xing"}).frames(50, ofBitRate(128)).frames(50, ofBitRate(192)).data());
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
