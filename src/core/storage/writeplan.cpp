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

/// A range of the file.
struct Extent
{
    qint64 begin = 0;
    qint64 end = 0;
};

/// Finds the differences between a file and new bytes, segment by segment from the front: one extent for each block
/// that has any, from its first to its last difference.
class Comparison
{
public:
    explicit Comparison(platform::File &file) : m_file(file) {}

    /// Compares the new bytes for offset with the file. Ends early with more than MostPatches extents.
    Result<void> add(const QByteArray &bytes, qint64 offset)
    {
        for (qint64 done = 0; done < bytes.size() && !m_isTooMuch;) {
            const qint64 length = std::min<qint64>(CompareChunk, bytes.size() - done);
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

    bool isTooMuch() const { return m_isTooMuch; }
    const std::vector<Extent> &extents() const { return m_extents; }

    Result<QByteArray> oldBytes(const Extent &extent)
    {
        const qint64 length = extent.end - extent.begin;
        const qint64 inLastRead = extent.begin - m_lastReadOffset;
        if (inLastRead >= 0 && inLastRead + length <= m_lastRead.size())
            return m_lastRead.mid(static_cast<qsizetype>(inLastRead), static_cast<qsizetype>(length));
        return platform::readExactly(m_file, extent.begin, length);
    }

private:
    void compare(const QByteArray &old, const char *bytes, qint64 offset)
    {
        for (qsizetype at = 0; !m_isTooMuch;) {
            at += firstDifference(old.constData() + at, bytes + at, old.size() - at);
            if (at == old.size())
                return;
            const qint64 blockEnd = ((offset + at) / AtomicBlockSize + 1) * AtomicBlockSize;
            const qsizetype end = std::min<qsizetype>(blockEnd - offset, old.size());
            include(offset + at, offset + at + endOfDifferences(old.constData() + at, bytes + at, end - at));
            at = end;
        }
    }

    void include(qint64 begin, qint64 end)
    {
        const bool isSameBlock =
            !m_extents.empty() && m_extents.back().begin / AtomicBlockSize == begin / AtomicBlockSize;
        if (isSameBlock)
            m_extents.back().end = end;
        else if (m_extents.size() < MostPatches)
            m_extents.push_back({begin, end});
        else
            m_isTooMuch = true;
    }

    platform::File &m_file;
    std::vector<Extent> m_extents;
    bool m_isTooMuch = false;
    QByteArray m_lastRead;
    qint64 m_lastReadOffset = 0;
};

/// The old bytes of the extent with the content's new bytes laid over them.
QByteArray overlaid(const QByteArray &oldBytes, const Extent &extent, const NewContent &content)
{
    QByteArray result = oldBytes;
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
    // Size and bytes reach the disk separately. A file that grew may end in zeros after a power cut, and so may one
    // that was to be cut: the rest of its last block is cleared before its size is known.
    if (!content.keptStayInPlace || content.size != oldSize)
        return change;

    Comparison comparison(file);
    qint64 offset = 0;
    for (const Segment &segment : content.segments) {
        if (!segment.isKept()) {
            if (auto added = comparison.add(segment.bytes, offset); !added)
                return tl::unexpected(added.error());
        }
        offset += segment.length;
    }
    if (comparison.isTooMuch())
        return change;
    for (const Extent &extent : comparison.extents()) {
        auto oldBytes = comparison.oldBytes(extent);
        if (!oldBytes)
            return tl::unexpected(oldBytes.error());
        QByteArray newBytes = overlaid(*oldBytes, extent, content);
        change.patches.push_back({extent.begin, std::move(*oldBytes), std::move(newBytes)});
    }
    if (change.patches.empty())
        change.kind = Change::None;
    else
        change.kind = change.patches.size() == 1 ? Change::Block : Change::Patches;
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
