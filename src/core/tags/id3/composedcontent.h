// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/bytewindow.h"
#include "core/storage/safewrite.h"

#include <vector>

namespace ravlin::id3 {

/// A file's new content before it is written, to be read like a file. Both arguments must outlive it.
class ComposedContent final : public platform::ByteSource
{
public:
    ComposedContent(platform::ByteSource &old, const std::vector<storage::Segment> &segments);
    qint64 size() const override { return m_ends.empty() ? 0 : m_ends.back(); }
    Result<qint64> readAt(std::span<char> buffer, qint64 offset) override;

private:
    platform::ByteSource &m_old;
    const std::vector<storage::Segment> &m_segments;
    std::vector<qint64> m_ends; ///< of the segments in the new content
};

/// Two changes, one after the other, as one: later is made of ranges of the content that earlier makes.
std::vector<storage::Segment> combined(
    const std::vector<storage::Segment> &earlier, const std::vector<storage::Segment> &later);

} // namespace ravlin::id3
