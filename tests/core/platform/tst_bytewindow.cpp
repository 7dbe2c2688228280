// SPDX-License-Identifier: GPL-3.0-or-later
// The window over a source of bytes: at() gives what is wanted unless the end comes first, exactly() gives all or
// nothing, each move fills the buffer, nothing beyond the end is read, and failures are kept.

#include "core/platform/bytewindow.h"

#include <QTest>

#include <algorithm>
#include <array>
#include <numeric>

using namespace ravlin;
using platform::ByteWindow;

namespace {

/// The bytes 0, 1, 2 and so on, 100 of them by its own account. Ends or fails before. Records every read.
class CountingSource final : public platform::ByteSource
{
public:
    explicit CountingSource(qint64 until = 100, bool fails = false) : m_until(until), m_fails(fails) {}

    qint64 size() const override { return 100; }
    Result<qint64> readAt(std::span<char> buffer, qint64 offset) override
    {
        reads << std::pair(offset, static_cast<qint64>(buffer.size()));
        const qint64 count = std::clamp<qint64>(m_until - offset, 0, std::ssize(buffer));
        if (m_fails && count < std::ssize(buffer))
            return tl::unexpected(Error{ErrorCode::Io, {}, {}});
        std::iota(buffer.begin(), buffer.begin() + count, static_cast<char>(offset));
        return count;
    }

    QList<std::pair<qint64, qint64>> reads;

private:
    qint64 m_until;
    bool m_fails;
};

using Reads = QList<std::pair<qint64, qint64>>;

} // namespace

class TestByteWindow : public QObject
{
    Q_OBJECT

private:
    std::array<char, 16> m_buffer{};

private Q_SLOTS:
    void atGivesWhatIsWantedUnlessTheEndComesFirst()
    {
        CountingSource source;
        ByteWindow window(source, m_buffer);
        QCOMPARE(window.at(0, 4).size(), size_t(16));
        QCOMPARE(window.at(10, 6).size(), size_t(6));
        QCOMPARE(source.reads, (Reads{{0, 16}}));
        QCOMPARE(window.at(12, 8).front(), uchar(12));
        QCOMPARE(source.reads, (Reads{{0, 16}, {12, 16}}));
        QCOMPARE(window.at(96, 10).size(), size_t(4));
        QVERIFY(window.at(100, 1).empty());
        QVERIFY(window.at(-1, 1).empty());
        QCOMPARE(source.reads, (Reads{{0, 16}, {12, 16}, {96, 4}}));
    }

    void exactlyGivesAllOrNothing()
    {
        CountingSource source;
        ByteWindow window(source, m_buffer);
        QCOMPARE(window.exactly(98, 2), std::string_view("bc"));
        for (const auto &[offset, size] : Reads{{99, 2}, {-1, 2}, {0, 0}, {0, 101}, {1, qint64(1) << 62}})
            QVERIFY(window.exactly(offset, size).empty());
        QCOMPARE(source.reads, (Reads{{98, 2}}));
        QVERIFY(!window.error());
    }

    void aRequestLargerThanTheBufferLeavesTheWindowInPlace()
    {
        CountingSource source;
        ByteWindow window(source, m_buffer);
        QCOMPARE(window.exactly(0, 1).front(), char(0));
        const std::string_view large = window.exactly(20, 40);
        QCOMPARE(large.size(), size_t(40));
        QCOMPARE(large.back(), char(59));
        QCOMPARE(window.exactly(15, 1).front(), char(15));
        QCOMPARE(source.reads, (Reads{{0, 16}, {20, 40}}));
    }

    void aSourceThatEndsEarlyEndsTheWindowOrIsAnError()
    {
        CountingSource source(50);
        ByteWindow window(source, m_buffer);
        QCOMPARE(window.at(40, 16).size(), size_t(10));
        QCOMPARE(window.end(), 50);
        QVERIFY(!window.error());

        ByteWindow strict(source, m_buffer);
        QVERIFY(strict.exactly(40, 16).empty());
        QCOMPARE(strict.error().value_or(Error{}).code, ErrorCode::ChangedMeanwhile);
        QCOMPARE(strict.end(), 100);
        QVERIFY(strict.exactly(0, 1).empty());
    }

    void aFailureIsKept()
    {
        CountingSource source(50, true);
        ByteWindow window(source, m_buffer);
        QVERIFY(window.at(40, 1).empty());
        QCOMPARE(window.error().value_or(Error{}).code, ErrorCode::Io);
        QCOMPARE(window.end(), 40);
        QVERIFY(window.exactly(0, 1).empty());
        QCOMPARE(source.reads.size(), 1);
    }

    void memoryIsNotCopied()
    {
        const std::string_view memory = "0123456789";
        ByteWindow window(memory);
        QCOMPARE(window.exactly(3, 7).data(), memory.data() + 3);
        QCOMPARE(window.at(8, 5).size(), size_t(2));
        QVERIFY(window.exactly(9, 2).empty());
        window.setEnd(5);
        QCOMPARE(window.at(3, 5).size(), size_t(2));
        QVERIFY(window.exactly(4, 2).empty());
    }
};

QTEST_GUILESS_MAIN(TestByteWindow)
#include "tst_bytewindow.moc"
