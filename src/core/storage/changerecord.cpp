// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/storage/changerecord.h"

#include "core/platform/fileio.h"

#include <algorithm>

namespace ravlin::storage {
namespace {

/// A range that is the same in both contents.
struct Common
{
    qint64 inOld = 0;
    qint64 inNew = 0;
    qint64 length = 0;

    qint64 oldEnd() const { return inOld + length; }
    qint64 newEnd() const { return inNew + length; }
};

/// The kept ranges in the order of the old content, none over another in it.
std::vector<Common> commonRanges(const NewContent &content)
{
    std::vector<Common> ranges;
    qint64 offset = 0;
    for (const Segment &segment : content.segments) {
        if (segment.isKept())
            ranges.push_back({segment.oldOffset, offset, segment.length});
        offset += segment.length;
    }
    std::ranges::stable_sort(ranges, {}, &Common::inOld);
    qint64 reached = 0;
    for (Common &range : ranges) {
        const qint64 taken = std::clamp<qint64>(reached - range.inOld, 0, range.length);
        range = {range.inOld + taken, range.inNew + taken, range.length - taken};
        reached = std::max(reached, range.oldEnd());
    }
    std::erase_if(ranges, [](const Common &range) { return range.length == 0; });
    return ranges;
}

/// The new content's bytes from..to, read from the old file where they are kept.
Result<QByteArray> newBytes(platform::File &file, const NewContent &content, qint64 from, qint64 to)
{
    QByteArray bytes;
    qint64 offset = 0;
    for (const Segment &segment : content.segments) {
        const qint64 begin = std::max(from, offset) - offset;
        const qint64 length = std::min(to, offset + segment.length) - offset - begin;
        offset += segment.length;
        if (length <= 0)
            continue;
        if (!segment.isKept()) {
            bytes += segment.bytes.mid(static_cast<qsizetype>(begin), static_cast<qsizetype>(length));
            continue;
        }
        const auto kept = platform::readExactly(file, segment.oldOffset + begin, length);
        if (!kept)
            return kept;
        bytes += *kept;
    }
    return bytes;
}

qsizetype commonStart(const QByteArray &one, const QByteArray &other)
{
    const qsizetype most = std::min(one.size(), other.size());
    return std::mismatch(one.begin(), one.begin() + most, other.begin()).first - one.begin();
}

qsizetype commonEnd(const QByteArray &one, const QByteArray &other, qsizetype most)
{
    return std::mismatch(one.rbegin(), one.rbegin() + most, other.rbegin()).first - one.rbegin();
}

/// Builds the old content from the front.
class InverseBuilder
{
public:
    InverseBuilder(platform::File &file, const NewContent &content) : m_file(file), m_content(content) {}

    /// What lies between two common ranges in the old content. Where they follow each other in the new content, too,
    /// equal bytes at both ends of what lies between them count as common.
    Result<void> addLost(const Common &before, const Common &after)
    {
        auto lost = platform::readExactly(m_file, before.oldEnd(), after.inOld - before.oldEnd());
        if (!lost)
            return tl::unexpected(lost.error());
        constexpr qint64 MostCompared = 64 * 1024 * 1024;
        const qint64 between = after.inNew - before.newEnd();
        const auto present = between > 0 && between <= MostCompared
                                 ? newBytes(m_file, m_content, before.newEnd(), after.inNew)
                                 : Result<QByteArray>(QByteArray());
        if (!present)
            return tl::unexpected(present.error());
        const qsizetype start = commonStart(*lost, *present);
        const qsizetype end = commonEnd(*lost, *present, std::min(lost->size(), present->size()) - start);
        addCommon(before.newEnd(), start);
        if (start + end < lost->size())
            m_segments.push_back(Segment::fresh(lost->mid(start, lost->size() - start - end)));
        addCommon(after.inNew - end, end);
        return {};
    }

    void addCommon(qint64 inNew, qint64 length)
    {
        if (length == 0)
            return;
        Segment *const last = m_segments.empty() || !m_segments.back().isKept() ? nullptr : &m_segments.back();
        if (last != nullptr && last->oldOffset + last->length == inNew)
            last->length += length;
        else
            m_segments.push_back(Segment::kept(inNew, length));
    }

    Result<Inverse> take()
    {
        auto written = bytesNotCovered();
        if (!written)
            return tl::unexpected(written.error());
        return Inverse{std::move(m_segments), std::move(*written)};
    }

private:
    Result<QByteArray> bytesNotCovered()
    {
        std::vector<std::pair<qint64, qint64>> covered;
        for (const Segment &segment : m_segments) {
            if (segment.isKept())
                covered.emplace_back(segment.oldOffset, segment.oldOffset + segment.length);
        }
        std::ranges::sort(covered);
        covered.emplace_back(m_content.size, m_content.size);
        QByteArray bytes;
        qint64 reached = 0;
        for (const auto &[begin, end] : covered) {
            if (begin > reached) {
                const auto gap = newBytes(m_file, m_content, reached, begin);
                if (!gap)
                    return gap;
                bytes += *gap;
            }
            reached = std::max(reached, end);
        }
        return bytes;
    }

    platform::File &m_file;
    const NewContent &m_content;
    std::vector<Segment> m_segments;
};

} // namespace

Result<Inverse> inverseOf(platform::File &file, qint64 oldSize, const NewContent &content)
{
    InverseBuilder inverse(file, content);
    Common before;
    std::vector<Common> ranges = commonRanges(content);
    ranges.push_back({oldSize, content.size, 0});
    for (const Common &range : ranges) {
        if (range.inOld > before.oldEnd()) {
            if (auto added = inverse.addLost(before, range); !added)
                return tl::unexpected(added.error());
        }
        inverse.addCommon(range.inNew, range.length);
        before = range;
    }
    return inverse.take();
}

Inverse inverseOf(const std::vector<Patch> &patches, qint64 size)
{
    Inverse inverse;
    qint64 reached = 0;
    const auto keepUntil = [&](qint64 offset) {
        if (offset > reached)
            inverse.segments.push_back(Segment::kept(reached, offset - reached));
    };
    for (const Patch &patch : patches) {
        keepUntil(patch.offset);
        inverse.segments.push_back(Segment::fresh(patch.oldBytes));
        inverse.written += patch.newBytes;
        reached = patch.offset + patch.oldBytes.size();
    }
    keepUntil(size);
    return inverse;
}

} // namespace ravlin::storage
