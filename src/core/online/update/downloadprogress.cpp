// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/update/downloadprogress.h"

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace ravlin {

namespace {

QString megabytes(qint64 bytes)
{
    constexpr double Megabyte = 1024 * 1024;
    return bytes < 0 ? u"?"_s : QString::number(double(bytes) / Megabyte, 'f', 2);
}

} // namespace

qint64 DownloadProgress::value() const
{
    return isTotalKnown() ? std::min(m_received, m_total) : m_received;
}

QString DownloadProgress::sizeText() const
{
    return megabytes(m_total) + u" Mb"_s;
}

QString DownloadProgress::firstText() const
{
    return u"0 bytes"_s + u" of "_s + (isTotalKnown() ? QString::number(m_total) : u"?"_s) + u" bytes"_s;
}

QString DownloadProgress::text(const QString &leading) const
{
    return leading + u"("_s + megabytes(m_received) + u" MB"_s + u" of "_s + megabytes(m_total) + u" MB)"_s;
}

QString DownloadProgress::percentText() const
{
    if (!isTotalKnown())
        return {};
    constexpr double Hundred = 100;
    const qint64 percent = m_total == 0 ? 100 : std::llround(double(value()) * Hundred / double(m_total));
    return (percent == 0 ? QString() : QString::number(percent)) + u'%';
}

void TransferRate::measure(std::chrono::milliseconds time, qint64 bytes)
{
    m_counts.emplace_back(time, bytes);
    // Keep the last count at or before the start of the window.
    while (m_counts.size() > 2 && m_counts[1].first <= time - Window)
        m_counts.pop_front();
}

std::optional<qint64> TransferRate::secondsFor(qint64 bytes) const
{
    if (m_counts.size() < 2)
        return {};
    const auto &[firstTime, firstBytes] = m_counts.front();
    const auto &[lastTime, lastBytes] = m_counts.back();
    const double seconds = std::chrono::duration<double>(lastTime - firstTime).count();
    if (seconds <= 0 || lastBytes <= firstBytes)
        return {};
    return qint64(double(bytes) * seconds / double(lastBytes - firstBytes));
}

QString estimateText(const QString &words, qint64 seconds)
{
    return words + u' ' + QString::number(seconds) + u" s "_s;
}

} // namespace ravlin
