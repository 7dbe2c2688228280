// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <chrono>
#include <deque>
#include <optional>
#include <utility>

namespace ravlin {

/// Progress of a download and its texts. Counts in chunks; the last one counts as a whole one, too.
class DownloadProgress
{
public:
    static constexpr qint64 ChunkSize = 1024; ///< bytes

    /// total: bytes, or -1 if unknown.
    explicit DownloadProgress(qint64 total = -1) : m_total(total) {}

    void addChunks(qint64 count) { m_received += count * ChunkSize; }

    bool isTotalKnown() const { return m_total >= 0; }
    qint64 total() const { return m_total; }
    qint64 received() const { return m_received; }
    /// For a progress bar: at most the total.
    qint64 value() const;

    /// "19.53 Mb"
    QString sizeText() const;
    /// "0 bytes of 20480000 bytes"
    QString firstText() const;
    /// "(1.25 MB of 19.53 MB)" after the leading text
    QString text(const QString &leading) const;
    /// "37%"; for 0 just "%", as the format "#" gives it.
    QString percentText() const;

private:
    qint64 m_total;
    qint64 m_received = 0;
};

/// Speed of a download, measured over the last few seconds so that it follows a network that slows down.
class TransferRate
{
public:
    static constexpr std::chrono::milliseconds Window = std::chrono::seconds(5);

    /// Records the count so far at a time since the start. Times must not go back.
    void measure(std::chrono::milliseconds time, qint64 bytes);
    /// Seconds for that many bytes, rounded down; nothing while nothing has moved.
    std::optional<qint64> secondsFor(qint64 bytes) const;

private:
    std::deque<std::pair<std::chrono::milliseconds, qint64>> m_counts;
};

/// "estimated time 12 s ", after the words of the interface language.
QString estimateText(const QString &words, qint64 seconds);

} // namespace ravlin
