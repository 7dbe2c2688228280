// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/id3/composedcontent.h"

#include <algorithm>

namespace ravlin::id3 {

qint64 ComposedContent::size() const
{
    qint64 size = 0;
    for (const storage::Segment &segment : m_segments)
        size += segment.length;
    return size;
}

Result<qint64> ComposedContent::readAt(std::span<char> buffer, qint64 offset)
{
    qint64 done = 0;
    qint64 segmentBegin = 0;
    for (const storage::Segment &segment : m_segments) {
        const qint64 within = offset + done - segmentBegin;
        segmentBegin += segment.length;
        const qint64 wanted = std::min<qint64>(std::ssize(buffer) - done, segment.length - within);
        if (within < 0 || wanted <= 0)
            continue;
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

} // namespace ravlin::id3
