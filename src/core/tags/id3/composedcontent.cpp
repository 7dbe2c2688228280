// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/id3/composedcontent.h"

#include <algorithm>

namespace ravlin::id3 {

using storage::Segment;

namespace {

/// Appends a range of the content that the segments make.
void appendRange(std::vector<Segment> &out, const std::vector<Segment> &segments, qint64 offset, qint64 length)
{
    qint64 begin = 0;
    for (const Segment &segment : segments) {
        const qint64 from = std::max<qint64>(offset - begin, 0);
        const qint64 size = std::min(offset + length - begin, segment.length) - from;
        begin += segment.length;
        if (size <= 0)
            continue;
        if (!segment.isKept())
            out.push_back(Segment::fresh(segment.bytes.mid(from, size)));
        else if (!out.empty() && out.back().isKept() &&
                 out.back().oldOffset + out.back().length == segment.oldOffset + from)
            out.back().length += size;
        else
            out.push_back(Segment::kept(segment.oldOffset + from, size));
    }
}

} // namespace

ComposedContent::ComposedContent(platform::ByteSource &old, const std::vector<Segment> &segments)
    : m_old(old), m_segments(segments)
{
    m_ends.reserve(segments.size());
    for (const Segment &segment : segments)
        m_ends.push_back(size() + segment.length);
}

Result<qint64> ComposedContent::readAt(std::span<char> buffer, qint64 offset)
{
    qint64 done = 0;
    auto end = std::upper_bound(m_ends.begin(), m_ends.end(), offset);
    for (; end != m_ends.end() && done < std::ssize(buffer); ++end) {
        const Segment &segment = m_segments[static_cast<size_t>(end - m_ends.begin())];
        const qint64 within = offset + done - (*end - segment.length);
        const qint64 wanted = std::min<qint64>(std::ssize(buffer) - done, segment.length - within);
        const std::span<char> out = buffer.subspan(static_cast<size_t>(done), static_cast<size_t>(wanted));
        if (segment.oldOffset < 0) {
            std::copy_n(segment.bytes.constData() + within, wanted, out.data());
            done += wanted;
            continue;
        }
        const Result<qint64> read = m_old.readAt(out, segment.oldOffset + within);
        if (!read)
            return read;
        done += *read;
        if (*read < wanted)
            break; // the old file became shorter
    }
    return done;
}

std::vector<Segment> combined(const std::vector<Segment> &earlier, const std::vector<Segment> &later)
{
    std::vector<Segment> segments;
    for (const Segment &segment : later) {
        if (segment.isKept())
            appendRange(segments, earlier, segment.oldOffset, segment.length);
        else
            segments.push_back(segment);
    }
    return segments;
}

} // namespace ravlin::id3
