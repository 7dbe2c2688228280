// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/id3/id3v2writer.h"

#include "core/tags/id3/composedcontent.h"
#include "core/tags/id3/newheaders.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace ravlin::id3 {

using platform::ByteSource;
using platform::ByteWindow;
using storage::Segment;

namespace {

/// Least room left behind the frames of a tag that had to grow, so that the next edits fit.
constexpr qint64 MinimumFreshPadding = 2048;
/// The audio keeps its place within a block, so that file systems can share blocks between files.
constexpr qint64 BlockSize = 4096;

Error brokenTag()
{
    return {ErrorCode::BrokenTag, {}, QStringLiteral("the ID3v2 tag is damaged and can't be written without loss")};
}

qint64 lengthOf(const std::vector<Segment> &segments)
{
    qint64 length = 0;
    for (const Segment &segment : segments)
        length += segment.length;
    return length;
}

std::string_view view(const QByteArray &bytes)
{
    return {bytes.constData(), static_cast<size_t>(bytes.size())};
}

/// New bytes for a tag's body, unsynchronised if the whole tag is.
Segment freshIn(const Tag &tag, const QByteArray &bytes)
{
    if (!tag.isUnsynchronised())
        return Segment::fresh(bytes);
    return Segment::fresh(applyUnsynchronisation(view(bytes)));
}

/// The frames after the plan.
std::vector<Segment> frameSegments(const Tag &tag, const FramePlan &plan)
{
    std::vector<Segment> segments;
    qint64 keptFrom = tag.framesBegin();
    const auto keepUpTo = [&](qint64 end) {
        if (end > keptFrom)
            segments.push_back(Segment::kept(keptFrom, end - keptFrom));
    };
    for (const Frame &frame : tag.frames()) {
        const auto change = plan.replaced.find(&frame);
        const bool stays = change == plan.replaced.end();
        if (stays && !frame.header.hasForeignSize)
            continue;
        keepUpTo(frame.header.offset);
        if (stays) {
            const QByteArray header = headerInOwnForm(frame.header, tag.header().majorVersion);
            segments.push_back(freshIn(tag, header));
            keptFrom = frame.header.bodyOffset;
            continue;
        }
        keptFrom = frame.header.end;
        if (!change->second.isEmpty())
            segments.push_back(freshIn(tag, change->second));
    }
    keepUpTo(tag.framesEnd());
    if (!plan.appended.isEmpty())
        segments.push_back(freshIn(tag, plan.appended));
    return segments;
}

/// The size of a tag that must grow: room for the content and fresh padding.
qint64 grownRegionSize(qint64 contentSize, qint64 oldRegionSize)
{
    const qint64 needed = contentSize + MinimumFreshPadding;
    const qint64 phase = oldRegionSize % BlockSize;
    const qint64 blocks = (std::max<qint64>(needed - phase, 0) + BlockSize - 1) / BlockSize;
    return phase + blocks * BlockSize;
}

/// The usual padding; the library's search goes byte by byte.
bool isAllZero(std::string_view block)
{
    return !block.empty() && block.front() == '\0' &&
           std::memcmp(block.data(), block.data() + 1, block.size() - 1) == 0;
}

/// The first byte that is not zero in [offset, end). Returns end if there is none, -1 if reading fails (see
/// ByteWindow::error).
qint64 firstNonZero(ByteWindow &bytes, qint64 offset, qint64 end)
{
    while (offset < end) {
        const qint64 size = std::min<qint64>(end - offset, 4096);
        const std::string_view block = bytes.exactly(offset, size);
        if (block.empty())
            return -1;
        if (!isAllZero(block))
            return offset + static_cast<qint64>(block.find_first_not_of('\0'));
        offset += size;
    }
    return end;
}

/// Whether a reader will find the frames to end at framesEnd when everything behind the old ones stays in place. What
/// follows a frame decides how its size is read (ID3v2.3 and ID3v2.4 store sizes in different forms). Frames that
/// reach up to what lies behind the padding would bring it back to life: programs that shorten a tag leave the end of
/// the old one there.
bool showsItsEnd(ByteWindow &bytes, const Tag &tag, qint64 framesEnd)
{
    if (framesEnd > tag.framesEnd() && firstNonZero(bytes, tag.framesEnd(), framesEnd) != framesEnd)
        return false;
    const qint64 room = std::min(tag.bodyEnd() - framesEnd, TagHeaderSize);
    const qint64 freed = std::clamp<qint64>(tag.framesEnd() - framesEnd, 0, room);
    QByteArray next(freed, '\0');
    if (freed < room) {
        const std::string_view kept = bytes.exactly(framesEnd + freed, room - freed);
        next.append(kept.data(), static_cast<qsizetype>(kept.size()));
    }
    if (framesEnd > tag.framesEnd() && !next.isEmpty() && next[0] != '\0')
        return false;
    return tag.header().majorVersion == 2 || canFollowFrame({next.constData(), static_cast<size_t>(next.size())});
}

/// The end of the last byte that is not zero in [offset, end). Returns offset if there is none, -1 if reading fails.
qint64 endOfNonZero(ByteWindow &bytes, qint64 offset, qint64 end)
{
    while (offset < end) {
        const qint64 size = std::min<qint64>(end - offset, 4096);
        const std::string_view block = bytes.exactly(end - size, size);
        if (block.empty())
            return -1;
        const size_t found = block.find_last_not_of('\0');
        if (found != std::string_view::npos)
            return end - size + static_cast<qint64>(found) + 1;
        end -= size;
    }
    return offset;
}

/// Whether something without a proper identifier follows the last frame directly. Other programs may be able to read it
/// and what comes behind, so it must not be separated from the frames: padding ends a tag. A frame whose size lies is
/// another matter: in a tag that grew it would swallow what it never held.
bool isFollowedByUnknown(ByteWindow &bytes, const Tag &tag)
{
    const qint64 room = std::max<qint64>(tag.bodyEnd() - tag.framesEnd(), 0);
    const std::string_view next =
        bytes.exactly(tag.framesEnd(), std::min<qint64>(tag.header().majorVersion == 2 ? 3 : 4, room));
    return next.size() >= 3 && next[0] != '\0' && !isIdentifier(next);
}

Result<QByteArray> bytesAt(ByteWindow &window, qint64 offset, qint64 size)
{
    if (size == 0)
        return QByteArray();
    const std::string_view bytes = window.exactly(offset, size);
    if (bytes.empty())
        return tl::unexpected(window.error().value_or(brokenTag()));
    return QByteArray(bytes.data(), size);
}

std::vector<Segment> assemble(QByteArray head, std::vector<Segment> frames, qint64 padding)
{
    std::vector<Segment> segments;
    segments.reserve(frames.size() + 4);
    segments.push_back(Segment::fresh(std::move(head)));
    std::move(frames.begin(), frames.end(), std::back_inserter(segments));
    if (padding > 0)
        segments.push_back(Segment::fresh(QByteArray(padding, '\0')));
    return segments;
}

/// Turns small frames that move into new bytes, so that a change within one block of the file can be written in place.
Result<void> materialiseMoved(ByteWindow &window, std::vector<Segment> &segments)
{
    qint64 offset = 0;
    for (Segment &segment : segments) {
        if (segment.oldOffset >= 0 && segment.oldOffset != offset && segment.length <= BlockSize) {
            const Result<QByteArray> bytes = bytesAt(window, segment.oldOffset, segment.length);
            if (!bytes)
                return tl::unexpected(bytes.error());
            segment = Segment::fresh(*bytes);
        }
        offset += segment.length;
    }
    return {};
}

tl::unexpected<Error> tooLarge()
{
    return tl::unexpected(Error{ErrorCode::TooLarge, {}, QStringLiteral("the tag would be too large")});
}

/// Checks that a reader will find the frames of the new content to end at framesEnd (an offset like Tag::framesEnd).
/// What follows the last one directly may make its size look like one in the other version's form; then nothing is
/// written.
Result<void> checkFramesEnd(ByteSource &old, const std::vector<Segment> &segments, qint64 framesEnd)
{
    ComposedContent content(old, segments);
    const Result<std::optional<Tag>> tag = Tag::parse(content, Detail::Everything);
    if (!tag)
        return tl::unexpected(tag.error());
    if (!*tag || (*tag)->framesEnd() != framesEnd)
        return tl::unexpected(brokenTag());
    return {};
}

/// A tag with something directly behind its frames, which is carried along as one piece; the padding follows it.
Result<std::vector<Segment>> composeBeforeUnknown(
    ByteSource &source, ByteWindow &window, const Tag &tag, std::vector<Segment> frames, const QByteArray &oldExtended)
{
    const TagHeader &header = tag.header();
    const qint64 region = header.regionSize();
    const qint64 unknownEnd = endOfNonZero(window, tag.framesEnd(), tag.bodyEnd());
    if (window.error())
        return tl::unexpected(*window.error());
    frames.push_back(Segment::kept(tag.framesEnd(), unknownEnd - tag.framesEnd()));
    const qint64 contentEnd = TagHeaderSize + extendedHeader(header, oldExtended, 0).size() + lengthOf(frames);
    const bool fits = contentEnd <= tag.bodyEnd() && !header.hasFooter();
    const qint64 newRegion = fits ? region : grownRegionSize(contentEnd, region);
    if (newRegion - TagHeaderSize > MaximumBodySize)
        return tooLarge();
    const qint64 padding = newRegion - contentEnd;
    std::vector<Segment> segments = assemble(
        headerBytes(header, newRegion) + extendedHeader(header, oldExtended, padding), std::move(frames), padding);
    segments.push_back(Segment::kept(region, window.end() - region));
    if (Result<void> checked = checkFramesEnd(source, segments, contentEnd - (unknownEnd - tag.framesEnd())); !checked)
        return tl::unexpected(checked.error());
    if (fits) {
        if (Result<void> materialised = materialiseMoved(window, segments); !materialised)
            return tl::unexpected(materialised.error());
    }
    return segments;
}

/// A tag whose frames' offsets are those in the file.
Result<std::vector<Segment>> composePlain(ByteSource &source, ByteWindow &window, const Tag &tag, const FramePlan &plan)
{
    const TagHeader &header = tag.header();
    std::vector<Segment> frames = frameSegments(tag, plan);
    const auto oldExtended = bytesAt(window, TagHeaderSize, tag.framesBegin() - TagHeaderSize);
    if (!oldExtended)
        return tl::unexpected(oldExtended.error());
    if (isFollowedByUnknown(window, tag))
        return composeBeforeUnknown(source, window, tag, std::move(frames), *oldExtended);
    const qint64 extendedSize = extendedHeader(header, *oldExtended, 0).size();
    const qint64 framesEnd = TagHeaderSize + extendedSize + lengthOf(frames);
    const qint64 region = header.regionSize();
    const bool fits = framesEnd <= tag.bodyEnd() && !header.hasFooter() && showsItsEnd(window, tag, framesEnd);
    if (fits) {
        // What is left of the padding stays where it is, and so does everything behind it.
        const qint64 keptFrom = std::max(framesEnd, tag.framesEnd());
        std::vector<Segment> segments =
            assemble(headerBytes(header, region) + extendedHeader(header, *oldExtended, tag.bodyEnd() - framesEnd),
                std::move(frames), keptFrom - framesEnd);
        segments.push_back(Segment::kept(keptFrom, window.end() - keptFrom));
        if (Result<void> materialised = materialiseMoved(window, segments); !materialised)
            return tl::unexpected(materialised.error());
        return segments;
    }

    const qint64 tailBegin = firstNonZero(window, tag.framesEnd(), tag.bodyEnd());
    if (window.error())
        return tl::unexpected(*window.error());
    const qint64 tailSize = tag.bodyEnd() - tailBegin;
    const qint64 newRegion = grownRegionSize(framesEnd + tailSize, region);
    if (newRegion - TagHeaderSize > MaximumBodySize)
        return tooLarge();
    const qint64 padding = newRegion - framesEnd - tailSize;
    std::vector<Segment> segments =
        assemble(headerBytes(header, newRegion) + extendedHeader(header, *oldExtended, newRegion - framesEnd),
            std::move(frames), padding);
    segments.push_back(Segment::kept(tailBegin, tailSize));
    segments.push_back(Segment::kept(region, window.end() - region));
    return segments;
}

/// Whether the scheme has been applied to these bytes: careless programs set the flag and leave the frames as they are.
Result<bool> isUnsynchronisedRange(ByteWindow &window, qint64 offset, qint64 length)
{
    bool followsMarker = false;
    for (qint64 done = 0; done < length;) {
        const std::string_view bytes = window.exactly(offset + done, std::min<qint64>(length - done, WindowSize));
        if (bytes.empty())
            return tl::unexpected(window.error().value_or(brokenTag()));
        for (const char c : bytes) {
            if (followsMarker && static_cast<unsigned char>(c) >= 0xE0)
                return false;
            followsMarker = c == '\xFF';
        }
        done += std::ssize(bytes);
    }
    return true;
}

/// Makes the ranges of an unsynchronised tag such that a strict reader takes the whole tag for one: most are, and stay
/// ranges of the file. One that ends in 0xFF gets a zero, for something else follows now.
Result<void> makeStrict(ByteWindow &window, std::vector<Segment> &segments)
{
    std::vector<Segment> strict;
    strict.reserve(segments.size());
    for (Segment &segment : segments) {
        const qint64 offset = segment.oldOffset;
        const qint64 length = segment.length;
        strict.push_back(std::move(segment));
        if (offset < 0)
            continue;
        const Result<bool> isStrict = isUnsynchronisedRange(window, offset, length);
        if (!isStrict)
            return tl::unexpected(isStrict.error());
        const qint64 needed = *isStrict ? 1 : length; // bytes at the end of the range
        const Result<QByteArray> bytes = bytesAt(window, offset + length - needed, needed);
        if (!bytes)
            return tl::unexpected(bytes.error());
        if (!*isStrict)
            strict.back() = Segment::fresh(applyUnsynchronisation(view(removeUnsynchronisation(view(*bytes)))));
        else if (*bytes == "\xFF")
            strict.push_back(Segment::fresh(QByteArray(1, '\0')));
    }
    segments = std::move(strict);
    return {};
}

/// What lies behind the frames of an unsynchronised tag, without padding at its end.
Result<std::vector<Segment>> unsynchronisedTail(ByteWindow &window, const Tag &tag, bool isBeforeUnknown)
{
    const qint64 begin = firstNonZero(window, tag.framesEnd(), tag.bodyEnd());
    const qint64 end = endOfNonZero(window, begin, tag.bodyEnd());
    if (window.error())
        return tl::unexpected(*window.error());
    std::vector<Segment> tail;
    if (begin < end && !isBeforeUnknown)
        tail.push_back(Segment::fresh(QByteArray(TagHeaderSize, '\0')));
    if (begin < end)
        tail.push_back(Segment::kept(begin, end - begin));
    return tail;
}

/// A tag that is unsynchronised as a whole.
Result<std::vector<Segment>> composeUnsynchronised(
    ByteSource &source, ByteWindow &window, const Tag &tag, const FramePlan &plan)
{
    const TagHeader &header = tag.header();
    const auto stored = bytesAt(window, TagHeaderSize, tag.framesBegin() - TagHeaderSize);
    if (!stored)
        return tl::unexpected(stored.error());
    const QByteArray oldExtended = removeUnsynchronisation(view(*stored));
    const auto extended = [&](qint64 padding) { return freshIn(tag, extendedHeader(header, oldExtended, padding)); };
    const bool isBeforeUnknown = isFollowedByUnknown(window, tag);
    std::vector<Segment> content = frameSegments(tag, plan);
    Result<std::vector<Segment>> tail = unsynchronisedTail(window, tag, isBeforeUnknown);
    if (!tail)
        return tail;
    const qint64 oldEnd =
        tail->empty() ? tag.framesEnd() : tail->back().oldOffset + tail->back().length; // padding follows
    for (std::vector<Segment> *segments : {&content, &*tail}) {
        if (Result<void> strict = makeStrict(window, *segments); !strict)
            return tl::unexpected(strict.error());
    }
    const qint64 framesEnd = TagHeaderSize + extended(0).length + lengthOf(content);
    std::move(tail->begin(), tail->end(), std::back_inserter(content));

    const qint64 contentEnd = TagHeaderSize + extended(0).length + lengthOf(content);
    const qint64 region = header.regionSize();
    const bool fits = contentEnd <= region;
    const qint64 newRegion = fits ? region : grownRegionSize(contentEnd, region);
    if (newRegion - TagHeaderSize > MaximumBodySize)
        return tooLarge();
    const qint64 padding = newRegion - contentEnd;
    // The extended header states the padding, and its own encoded size may depend on that number: then it states none.
    const Segment withPadding = extended(padding);
    const QByteArray head =
        headerBytes(header, newRegion) + (withPadding.length == extended(0).length ? withPadding : extended(0)).bytes;
    const qint64 keptFrom = fits ? std::max(contentEnd, oldEnd) : region;
    std::vector<Segment> segments = assemble(head, std::move(content), fits ? keptFrom - contentEnd : padding);
    segments.push_back(Segment::kept(keptFrom, window.end() - keptFrom));
    if (isBeforeUnknown) {
        if (Result<void> checked = checkFramesEnd(source, segments, framesEnd); !checked)
            return tl::unexpected(checked.error());
    }
    if (fits) {
        if (Result<void> materialised = materialiseMoved(window, segments); !materialised)
            return tl::unexpected(materialised.error());
    }
    return segments;
}

std::vector<Segment> composeNew(const TagHeader &header, const FramePlan &plan, qint64 fileSize)
{
    const qint64 region = grownRegionSize(TagHeaderSize + plan.appended.size(), 0);
    QByteArray bytes = headerBytes(header, region) + plan.appended;
    bytes.append(region - bytes.size(), '\0');
    return {Segment::fresh(bytes), Segment::kept(0, fileSize)};
}

/// Whether nothing but padding would be left of the tag's body.
bool leavesNothing(ByteWindow &window, const Tag &tag, const FramePlan &plan)
{
    if (!plan.appended.isEmpty())
        return false;
    if (firstNonZero(window, tag.framesEnd(), tag.bodyEnd()) != tag.bodyEnd())
        return false;
    return std::all_of(tag.frames().begin(), tag.frames().end(), [&plan](const Frame &frame) {
        const auto change = plan.replaced.find(&frame);
        return change != plan.replaced.end() && change->second.isEmpty();
    });
}

/// Whether another tag follows the one at the start.
bool anotherTagFollows(ByteWindow &window, const Tag &tag)
{
    return parseTagHeader(window.exactly(tag.header().regionSize(), TagHeaderSize)).has_value();
}

Error tagTooLarge()
{
    return {ErrorCode::TagTooLarge, {}, QStringLiteral("only a part of the ID3v2 tag was read")};
}

/// The content with the tag rewritten.
Result<std::vector<Segment>> composeRewritten(
    ByteSource &source, ByteWindow &window, const Tag &tag, const FramePlan &plan)
{
    // No real extended header has more than some twenty bytes.
    if (tag.framesBegin() > static_cast<qint64>(WindowSize))
        return tl::unexpected(brokenTag());
    // A tag must have a frame (ID3v2.3 §3.3). Remove one without, unless that would uncover another tag.
    const qint64 region = tag.header().regionSize();
    if (leavesNothing(window, tag, plan) && !anotherTagFollows(window, tag))
        return std::vector<Segment>{Segment::kept(region, window.end() - region)};
    return tag.isUnsynchronised() ? composeUnsynchronised(source, window, tag, plan)
                                  : composePlain(source, window, tag, plan);
}

} // namespace

Result<std::optional<std::vector<Segment>>> composeSave(
    ByteSource &file, const std::optional<Tag> &tag, const FieldEdits &edits, int newVersion)
{
    if (tag && tag->isCut())
        return tl::unexpected(tagTooLarge());
    const TagHeader header = tag ? tag->header() : TagHeader{.majorVersion = newVersion};
    const Result<FramePlan> plan = planFrames(header, tag ? &*tag : nullptr, edits);
    if (!plan)
        return tl::unexpected(plan.error());
    if (plan->isEmpty())
        return std::nullopt;
    if (!tag)
        return composeNew(header, *plan, file.size());
    if (!tag->isWritable())
        return tl::unexpected(brokenTag());

    std::array<char, WindowSize> buffer; // NOLINT(*-init): filled before use
    ByteWindow window(file, buffer);
    Result<std::vector<Segment>> segments = composeRewritten(file, window, *tag, *plan);
    if (window.error()) // whatever was decided, it was decided without bytes that could not be read
        return tl::unexpected(*window.error());
    if (!segments)
        return tl::unexpected(segments.error());
    return std::move(*segments);
}

Result<std::optional<std::vector<Segment>>> composeStrip(ByteSource &file, qint64 tagsEnd)
{
    std::array<char, WindowSize> buffer; // NOLINT(*-init): filled before use
    ByteWindow window(file, buffer);
    qint64 audio = 0;
    while (const std::optional<TagHeader> header = parseTagHeader(window.exactly(audio, TagHeaderSize))) {
        if (header->regionSize() > tagsEnd - audio) {
            if (audio == 0)
                return tl::unexpected(brokenTag());
            break;
        }
        audio += header->regionSize();
    }
    if (window.error())
        return tl::unexpected(*window.error());
    if (audio == 0)
        return std::nullopt;
    return std::vector<Segment>{Segment::kept(audio, file.size() - audio)};
}

} // namespace ravlin::id3
