// SPDX-License-Identifier: GPL-3.0-or-later
// The stream analysis: damage is reported and costs no more than the frames it hit; bytes that look like a header by
// chance are not taken for one; failing and shrinking files are handled; hostile bytes cost time proportional to their
// number.
#include "core/tags/mpeg/xanalyze.h"
#include "support/analysebytes.h"
#include "support/mpegbuilder.h"

#include <QElapsedTimer>
#include <QTest>

#include <algorithm>

using namespace ravlin;
using namespace ravlin::test;
using mpeg::Version;

namespace {

/// A source whose bytes end, or cannot be read, before its stated size.
class FailingSource final : public platform::ByteSource
{
public:
    FailingSource(const QByteArray &bytes, qint64 size, bool fails) : m_bytes(bytes), m_size(size), m_fails(fails) {}
    qint64 size() const override { return m_size; }
    Result<qint64> readAt(std::span<char> buffer, qint64 offset) override
    {
        if (m_fails && offset + qint64(buffer.size()) > m_bytes.size())
            return tl::unexpected(Error{ErrorCode::Io, {}, {}});
        return platform::MemorySource(m_bytes).readAt(buffer, offset);
    }

private:
    QByteArray m_bytes;
    qint64 m_size;
    bool m_fails;
};

/// A number of zeros, without the memory for them.
class ZeroSource final : public platform::ByteSource
{
public:
    explicit ZeroSource(qint64 size) : m_size(size) {}
    qint64 size() const override { return m_size; }
    Result<qint64> readAt(std::span<char> buffer, qint64 offset) override
    {
        const qint64 count = std::clamp<qint64>(m_size - offset, 0, qint64(buffer.size()));
        std::fill_n(buffer.begin(), count, '\0');
        m_bytesRead += count;
        return count;
    }
    qint64 bytesRead() const { return m_bytesRead; }

private:
    qint64 m_size;
    qint64 m_bytesRead = 0;
};

/// The parts in turn, with gaps between them that do not repeat.
QByteArray irregular(const QList<QByteArray> &parts, qsizetype size)
{
    const QByteArray gaps = junk(int(size));
    QByteArray bytes;
    for (qsizetype i = 0; bytes.size() < size; ++i)
        bytes += parts[i % parts.size()] + QByteArray(uchar(gaps[i]) / 4 + 3, '\0');
    return bytes;
}

} // namespace

class TestXAnalyzeDamage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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
    void searchIsBounded();
    void hostileBytesCostLittleTime_data();
    void hostileBytesCostLittleTime();
};

void TestXAnalyzeDamage::truncatedLastFrame_data()
{
    QTest::addColumn<int>("missing");
    for (const int missing : {1, 100, 413, 414, 416})
        QTest::addRow("%d bytes missing", missing) << missing;
}

void TestXAnalyzeDamage::truncatedLastFrame()
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

void TestXAnalyzeDamage::truncatedBeforeTags()
{
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder().frames(10).cut(50).ape().id3v1());
    QCOMPARE(outcome.code, XAnalyzeDamaged);
    QCOMPARE(outcome.stream.frames, 9);
}

void TestXAnalyzeDamage::lostSyncIsFoundAgain()
{
    const XAnalyzer::Outcome outcome =
        analyse(MpegBuilder().frames(10).bytes(junk(500'000)).frames(10).bytes(junk(10)).frames(10));
    QCOMPARE(outcome.code, XAnalyzeDamaged);
    QCOMPARE(outcome.stream.resynchronisations, 2);
    QCOMPARE(outcome.stream.frames, 30);
    QVERIFY(!outcome.stream.isTruncated);
    QCOMPARE(outcome.record().frames, 30);
}

void TestXAnalyzeDamage::damagedHeaderCostsOneFrame()
{
    QByteArray bytes = MpegBuilder().frames(20).data();
    bytes[10 * 417] = 'x';
    const XAnalyzer::Outcome outcome = analyse(bytes);
    QCOMPARE(outcome.code, XAnalyzeDamaged);
    QCOMPARE(outcome.stream.frames, 19);
    QCOMPARE(outcome.stream.resynchronisations, 1);
}

void TestXAnalyzeDamage::junkInFrontIsNoDamage()
{
    for (const int size : {1, 3, 417, 5000, 300'000}) {
        const XAnalyzer::Outcome outcome = analyse(MpegBuilder().bytes(junk(size)).xing({}).frames(10).id3v1());
        QCOMPARE(outcome.code, XAnalyzeOk);
        QCOMPARE(outcome.stream.firstFrame, size);
        QCOMPARE(outcome.stream.bytesSearched, size);
        QCOMPARE(outcome.stream.frames, 10);
    }
}

void TestXAnalyzeDamage::falseHeaderInJunkIsNotTaken()
{
    // Two headers one frame apart, the third missing; and one of another rate.
    MpegBuilder builder;
    builder.frames(2, ofBitRate(320)).bytes(junk(3000)).frames(1, {.sampleRate = 48000}).bytes(junk(3000)).frames(10);
    const XAnalyzer::Outcome outcome = analyse(builder);
    QCOMPARE(outcome.code, XAnalyzeOk);
    QCOMPARE(outcome.stream.frames, 10);
    QCOMPARE(outcome.stream.bitRate, 128);
}

void TestXAnalyzeDamage::zerosBehindAreNoDamage()
{
    QCOMPARE(analyse(MpegBuilder().frames(10).bytes(QByteArray(300'000, '\0')).id3v1()).code, XAnalyzeOk);
    QCOMPARE(analyse(MpegBuilder().frames(10).bytes(QByteArray(1, '\0'))).code, XAnalyzeOk);
}

void TestXAnalyzeDamage::junkBehindIsDamage()
{
    for (const int size : {1, 3, 100, 300'000}) {
        const XAnalyzer::Outcome outcome = analyse(MpegBuilder().frames(10).bytes(junk(size).replace(0, 1, "x")));
        QCOMPARE(outcome.code, XAnalyzeDamaged);
        QCOMPARE(outcome.stream.frames, 10);
        QCOMPARE(outcome.stream.resynchronisations, 1);
    }
}

void TestXAnalyzeDamage::singleFrame()
{
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder().frames(1));
    QCOMPARE(outcome.code, XAnalyzeOk);
    QCOMPARE(outcome.stream.samples, 1152);
    QCOMPARE(outcome.stream.milliseconds, 26);
}

void TestXAnalyzeDamage::twoFramesBeforeJunk()
{
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder().frames(2).bytes(junk(1000)));
    QCOMPARE(outcome.code, XAnalyzeDamaged);
    QCOMPARE(outcome.stream.frames, 2);
}

void TestXAnalyzeDamage::cutSingleFrameIsNone()
{
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder().frames(1).cut(1));
    QCOMPARE(outcome.code, XAnalyzeNoFrame);
    QCOMPARE(outcome.record().frames, 416);
}

void TestXAnalyzeDamage::joinedRatesAddUp()
{
    const FrameSpec other{.sampleRate = 48000};
    const FrameSpec low{.version = Version::Mpeg2, .bitRate = 64, .sampleRate = 22050};
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder().frames(441).frames(480, other).frames(10, low));
    QCOMPARE(outcome.code, XAnalyzeOk);
    QCOMPARE(outcome.stream.samples, (441 + 480) * 1152 + 5760);
    QCOMPARE(outcome.stream.milliseconds, 11520 + 11520 + 261); // 5760 / 22050 s = 261.2 ms
    QCOMPARE(outcome.stream.sampleRate, 44100);
}

void TestXAnalyzeDamage::joinedLayersAddUp()
{
    const FrameSpec layer2{.layer = 2, .bitRate = 192};
    const FrameSpec layer1{.layer = 1, .bitRate = 192};
    const XAnalyzer::Outcome outcome = analyse(MpegBuilder().frames(10).frames(10, layer2).frames(10, layer1));
    QCOMPARE(outcome.code, XAnalyzeOk);
    QCOMPARE(outcome.stream.samples, 10 * (1152 + 1152 + 384));
    QCOMPARE(outcome.stream.layer, 3);
}

void TestXAnalyzeDamage::sourceThatShrinksJustEnds()
{
    FailingSource source(MpegBuilder().frames(1000).data(), 1'000'000, false);
    XAnalyzer analyzer(platform::FileSystem::native());
    const XAnalyzer::Outcome outcome = analyzer.analyse(source);
    QCOMPARE(outcome.code, XAnalyzeOk);
    QCOMPARE(outcome.stream.frames, 1000);
}

void TestXAnalyzeDamage::readErrorIsInternalError()
{
    FailingSource source(MpegBuilder().frames(1000).data(), 1'000'000, true);
    XAnalyzer analyzer(platform::FileSystem::native());
    QCOMPARE(analyzer.analyse(source).code, XAnalyzeInternalError);
}

void TestXAnalyzeDamage::searchIsBounded()
{
    constexpr qint64 Limit = 64 * 1024 * 1024;
    ZeroSource source(qint64(100) * 1024 * Limit);
    XAnalyzer analyzer(platform::FileSystem::native());
    const XAnalyzer::Outcome outcome = analyzer.analyse(source);
    QCOMPARE(outcome.code, XAnalyzeNoFrame);
    QCOMPARE(outcome.record().frames, qint32(Limit));
    QVERIFY2(source.bytesRead() <= 3 * Limit, qPrintable(QString::number(source.bytesRead())));
}

void TestXAnalyzeDamage::hostileBytesCostLittleTime_data()
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
    QTest::newRow("free format headers far apart")
        << repeated(freeHeader + QByteArray(3000, '\xff') + freeHeader + QByteArray(2999, '\0'));
    QTest::newRow("free format headers at no regular distance") << irregular({freeHeader}, Size);
    QTest::newRow("free format headers of many kinds at no regular distance") << irregular(
        {"\xff\xfb\x01", "\xff\xf3\x05", "\xff\xe3\x09", "\xff\xfd\x01", "\xff\xf5\x05", "\xff\xff\x09"}, Size);
    QTest::newRow("headers of many kinds at no regular distance")
        << irregular({"\xff\xfb\x90", "\xff\xf3\x94", "\xff\xe3\x98", "\xff\xfd\x90", "\xff\xf5\x94"}, Size);
    QTest::newRow("pairs of frames and junk") << repeated(MpegBuilder().frames(2).bytes(junk(50)).data());
    QTest::newRow("threes of frames and junk") << repeated(MpegBuilder().frames(3).bytes(junk(50)).data());
    QTest::newRow("frame and zeros") << repeated(MpegBuilder().frames(3).data() + QByteArray(5000, '\0') + 'x');
    QTest::newRow("empty ID3v2 tags") << repeated(MpegBuilder().id3v2(0).data());
    QTest::newRow("ID3v1 tags") << repeated(MpegBuilder().id3v1().data());
    QTest::newRow("APE footers") << repeated(MpegBuilder().ape(2000, false).data());
}

void TestXAnalyzeDamage::hostileBytesCostLittleTime()
{
    QFETCH(QByteArray, bytes);
    QElapsedTimer timer;
    timer.start();
    analyse(bytes);
    // Linear behaviour takes tens of milliseconds, a few hundred under sanitizers; quadratic behaviour would take
    // minutes.
    QVERIFY2(timer.elapsed() < 20'000, qPrintable(QString::number(timer.elapsed())));
    qInfo("%lld ms", timer.elapsed());
}

QTEST_GUILESS_MAIN(TestXAnalyzeDamage)
#include "tst_xanalyzedamage.moc"
