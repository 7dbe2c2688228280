// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <chrono>
#include <deque>
#include <optional>
#include <utility>

namespace ravlin {

/// How far a download has come, and how that is told. It is counted in chunks: the last one counts as a whole one, too.
class DownloadProgress
{
public:
    static constexpr qint64 ChunkSize = 1024; ///< bytes

    /// total: bytes, -1 where nobody told.
    explicit DownloadProgress(qint64 total = -1) : m_total(total) {}

    void addChunks(qint64 count) { m_received += count * ChunkSize; }

    bool isTotalKnown() const { return m_total >= 0; }
    qint64 total() const { return m_total; }
    qint64 received() const { return m_received; }
    /// What a progress bar shows: no more than the total.
    qint64 value() const;

    /// "19.53 Mb"
    QString sizeText() const;
    /// "0 bytes of 20480000 bytes"
    QString firstText() const;
    /// "(1.25 MB of 19.53 MB)" behind the leading text
    QString text(const QString &leading) const;
    /// "37%"; as "#" formats it, there is no digit for nothing at all: "%".
    QString percentText() const;

private:
    qint64 m_total;
    qint64 m_received = 0;
};

/// How fast a download is: measured over the last few seconds, so that it follows a network that becomes slower.
class TransferRate
{
public:
    static constexpr std::chrono::milliseconds Window = std::chrono::seconds(5);

    /// The count so far at a time since the start; times don't go back.
    void measure(std::chrono::milliseconds time, qint64 bytes);
    /// How long that many bytes will take, rounded down; none while nothing has moved.
    std::optional<qint64> secondsFor(qint64 bytes) const;

private:
    std::deque<std::pair<std::chrono::milliseconds, qint64>> m_counts;
};

/// "estimated time 12 s ", with the words of the interface language in front.
QString estimateText(const QString &words, qint64 seconds);

} // namespace ravlin
