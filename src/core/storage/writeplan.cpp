// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/storage/writeplan.h"

#include "core/platform/fileio.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace ravlin::storage {
namespace {

constexpr qint64 CompareChunk = 256 * 1024;

bool isValid(const Segment &segment, qint64 oldSize)
{
    if (segment.oldOffset == -1)
        return segment.length == segment.bytes.size();
    return segment.oldOffset >= 0 && segment.length >= 0 && segment.bytes.isEmpty() && segment.oldOffset <= oldSize &&
           segment.length <= oldSize - segment.oldOffset;
}

bool continues(const Segment &previous, const Segment &next)
{
    return previous.isKept() && next.isKept() && previous.oldOffset + previous.length == next.oldOffset;
}

/// Index of the first difference; size if there is none.
qsizetype firstDifference(const char *one, const char *other, qsizetype size)
{
    constexpr qsizetype Stride = 256; // memcmp is fast but does not say where
    qsizetype at = 0;
    while (at + Stride <= size && std::memcmp(one + at, other + at, Stride) == 0)
        at += Stride;
    while (at < size && one[at] == other[at])
        ++at;
    return at;
}

/// Index after the last difference; 0 if there is none.
qsizetype endOfDifferences(const char *one, const char *other, qsizetype size)
{
    constexpr qsizetype Stride = 256;
    qsizetype end = size;
    while (end >= Stride && std::memcmp(one + end - Stride, other + end - Stride, Stride) == 0)
        end -= Stride;
    while (end > 0 && one[end - 1] == other[end - 1])
        --end;
    return end;
}

/// A range of the file that grows to include every difference found.
struct Extent
{
    qint64 begin = std::numeric_limits<qint64>::max();
    qint64 end = 0;

    bool isEmpty() const { return begin >= end; }
    bool isInOneBlock() const { return isEmpty() || begin / AtomicBlockSize == (end - 1) / AtomicBlockSize; }
    void include(qint64 from, qint64 to)
    {
        begin = std::min(begin, from);
        end = std::max(end, to);
    }
};

/// Finds the extent of the differences between a file and new bytes, segment by segment from the front.
class Comparison
{
public:
    Comparison(platform::File &file, qint64 oldSize) : m_file(file), m_oldSize(oldSize) {}

    /// Compares the new bytes for offset with the file. Returns early once a second block differs.
    Result<void> add(const QByteArray &bytes, qint64 offset)
    {
        const qint64 common = std::clamp<qint64>(m_oldSize - offset, 0, bytes.size());
        if (common < bytes.size())
            m_extent.include(offset + common, offset + bytes.size());
        for (qint64 done = 0; done < common && m_extent.isInOneBlock();) {
            const qint64 length = std::min(CompareChunk, common - done);
            auto old = platform::readExactly(m_file, offset + done, length);
            if (!old)
                return tl::unexpected(old.error());
            compare(*old, bytes.constData() + done, offset + done);
            m_lastRead = std::move(*old);
            m_lastReadOffset = offset + done;
            done += length;
        }
        return {};
    }

    const Extent &extent() const { return m_extent; }

    /// The old bytes of the extent, as far as the old file reaches.
    Result<QByteArray> oldBytes()
    {
        const qint64 length = std::min(m_extent.end, m_oldSize) - m_extent.begin;
        if (length <= 0)
            return QByteArray();
        const qint64 inLastRead = m_extent.begin - m_lastReadOffset;
        if (inLastRead >= 0 && inLastRead + length <= m_lastRead.size())
            return m_lastRead.mid(static_cast<qsizetype>(inLastRead), static_cast<qsizetype>(length));
        return platform::readExactly(m_file, m_extent.begin, length);
    }

private:
    void compare(const QByteArray &old, const char *bytes, qint64 offset)
    {
        const qsizetype first = firstDifference(old.constData(), bytes, old.size());
        if (first == old.size())
            return;
        const qsizetype end = endOfDifferences(old.constData(), bytes, old.size());
        m_extent.include(offset + first, offset + end);
    }

    platform::File &m_file;
    const qint64 m_oldSize;
    Extent m_extent;
    QByteArray m_lastRead;
    qint64 m_lastReadOffset = 0;
};

/// The old bytes of the extent with the content's new bytes laid over them.
QByteArray overlaid(const QByteArray &oldBytes, const Extent &extent, const NewContent &content)
{
    QByteArray result = oldBytes;
    result.resize(static_cast<qsizetype>(extent.end - extent.begin));
    qint64 offset = 0;
    for (const Segment &segment : content.segments) {
        const qint64 from = std::max(offset, extent.begin);
        const qint64 to = std::min(offset + segment.length, extent.end);
        if (!segment.isKept() && from < to)
            std::memcpy(result.data() + (from - extent.begin), segment.bytes.constData() + (from - offset),
                static_cast<size_t>(to - from));
        offset += segment.length;
    }
    return result;
}

} // namespace

Result<NewContent> makeContent(const std::vector<Segment> &segments, qint64 oldSize)
{
    NewContent content;
    content.segments.reserve(segments.size());
    for (const Segment &segment : segments) {
        if (!isValid(segment, oldSize) || segment.length > std::numeric_limits<qint64>::max() - content.size)
            return tl::unexpected(Error{ErrorCode::InvalidArgument, {},
                QStringLiteral("a piece of the new content is not in the old file: %1 bytes at %2")
                    .arg(segment.length)
                    .arg(segment.oldOffset)});
        if (segment.length == 0)
            continue;
        if (segment.isKept() && segment.oldOffset != content.size)
            content.keptStayInPlace = false;
        content.size += segment.length;
        if (!content.segments.empty() && continues(content.segments.back(), segment))
            content.segments.back().length += segment.length;
        else
            content.segments.push_back(segment);
    }
    return content;
}

Result<Change> findChange(platform::File &file, qint64 oldSize, const NewContent &content)
{
    Change change;
    change.kind = Change::Elsewhere;
    if (!content.keptStayInPlace)
        return change;

    Comparison comparison(file, oldSize);
    qint64 offset = 0;
    for (const Segment &segment : content.segments) {
        if (!segment.isKept()) {
            if (auto added = comparison.add(segment.bytes, offset); !added)
                return tl::unexpected(added.error());
        }
        offset += segment.length;
    }

    const Extent &extent = comparison.extent();
    if (extent.isEmpty()) {
        change.kind = content.size < oldSize ? Change::Cut : Change::None;
        return change;
    }
    // Size and bytes reach the disk separately: changing both is not one step.
    const bool growsOnly = extent.begin >= oldSize;
    if (!extent.isInOneBlock() || (content.size != oldSize && !growsOnly))
        return change;
    auto oldBytes = comparison.oldBytes();
    if (!oldBytes)
        return tl::unexpected(oldBytes.error());
    change.kind = Change::Block;
    change.offset = extent.begin;
    change.newBytes = overlaid(*oldBytes, extent, content);
    change.oldBytes = std::move(*oldBytes);
    return change;
}

Result<bool> holdsContent(platform::File &file, qint64 base, platform::File &original, const NewContent &content)
{
    qint64 offset = base;
    for (const Segment &segment : content.segments) {
        Result<bool> same = true;
        if (!segment.isKept()) {
            same = platform::sameBytes(file, offset, segment.bytes);
        } else {
            const qint64 edge = std::min(AtomicBlockSize, segment.length);
            const qint64 last = segment.length - edge;
            same = platform::sameBytes(original, segment.oldOffset, file, offset, edge);
            if (same && *same && last > 0)
                same = platform::sameBytes(original, segment.oldOffset + last, file, offset + last, edge);
        }
        if (!same || !*same)
            return same;
        offset += segment.length;
    }
    return true;
}

Result<void> writeContent(platform::File &file, qint64 base, platform::File &original, const NewContent &content)
{
    qint64 offset = base;
    for (const Segment &segment : content.segments) {
        const auto written = segment.isKept()
                                 ? platform::copyAll(original, segment.oldOffset, file, offset, segment.length)
                                 : platform::writeAll(file, segment.bytes, offset);
        if (!written)
            return written;
        offset += segment.length;
    }
    return {};
}

} // namespace ravlin::storage
