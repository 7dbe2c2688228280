// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/id3/frameplan.h"

#include <QtEndian>

#include <array>

namespace ravlin::id3 {

namespace {

constexpr quint16 V24UnsynchronisedFrame = 0x02;

/// The order of the frames of a new tag.
constexpr std::array<FrameKind, 7> NewFrameOrder{FrameKind::Title, FrameKind::LeadArtist, FrameKind::Album,
    FrameKind::Year, FrameKind::ContentType, FrameKind::Comment, FrameKind::TrackNumber};

/// Whether the frame already has the value of the edit, as the program shows it.
bool hasValue(const Frame &frame, const FieldEdit &edit)
{
    switch (frame.kind) {
    case FrameKind::TrackNumber:
        return trackNumber(frame.text) == edit.number;
    case FrameKind::ContentType:
        return genreNumber(frame.text) == edit.number;
    case FrameKind::Year:
        return yearOf(frame.text) == edit.text;
    default:
        return frame.text == edit.text;
    }
}

std::string_view view(const QByteArray &bytes)
{
    return {bytes.constData(), static_cast<size_t>(bytes.size())};
}

QByteArray frameBody(FrameKind kind, const FieldEdit &edit, const Frame *old, int majorVersion)
{
    switch (kind) {
    case FrameKind::Comment:
        return encodeCommentBody(
            {old ? old->language : QByteArrayLiteral("eng"), old ? old->description : QString(), edit.text},
            majorVersion);
    case FrameKind::TrackNumber:
        return encodeTextBody({trackText(old ? old->text : QString(), edit.number)}, majorVersion);
    case FrameKind::ContentType:
        return encodeTextBody({genreText(edit.number, majorVersion)}, majorVersion);
    default:
        break;
    }
    const QByteArray one = encodeTextBody({edit.text}, majorVersion);
    if (!old || old->valueCount < 2 || kind == FrameKind::Year)
        return one;
    // A frame of several values keeps several, if they read as the text: empty ones at the end don't count.
    const QByteArray several = encodeTextBody(edit.text.split(ValueSeparator.toString()), majorVersion);
    return decodeTextBody(view(several)).text == decodeTextBody(view(one)).text ? several : one;
}

/// A whole frame with that body. It keeps the status flags of the frame that it replaces.
Result<QByteArray> buildFrame(FrameKind kind, QByteArray body, const Frame *old, const TagHeader &tag)
{
    quint16 flags = old ? old->header.flags & 0xFF00 : 0;
    if (tag.majorVersion == 4 && (tag.flags & TagHeader::Unsynchronisation) != 0) {
        body = applyUnsynchronisation({body.constData(), static_cast<size_t>(body.size())});
        flags |= V24UnsynchronisedFrame;
    }
    if (body.size() > (tag.majorVersion == 2 ? (1 << 24) - 1 : MaximumBodySize))
        return tl::unexpected(Error{ErrorCode::TooLarge, {}, QStringLiteral("the text is too long for a frame")});

    const std::string_view id = frameIdentifier(kind, tag.majorVersion);
    QByteArray frame(id.data(), static_cast<qsizetype>(id.size()));
    std::array<char, 4> size{};
    if (tag.majorVersion == 4)
        writeSyncsafe(size.data(), body.size(), 4);
    else
        qToBigEndian(static_cast<quint32>(body.size()), size.data());
    if (tag.majorVersion == 2) {
        frame.append(size.data() + 1, 3);
    } else {
        frame.append(size.data(), 4);
        frame += static_cast<char>(flags >> 8);
        frame += static_cast<char>(flags & 0xFF);
    }
    return frame + body;
}

/// Whether the frame already shows what that body would. Not every text can be stored as it is, and without this check
/// each save would write such a frame anew.
bool readsAs(const Frame &frame, FrameKind kind, const QByteArray &body)
{
    CommentBody comment;
    if (kind == FrameKind::Comment)
        return decodeCommentBody(view(body), comment) && comment.text == frame.text;
    return decodeTextBody(view(body)).text == frame.text;
}

/// Adds to the plan what one edit does.
Result<void> planEdit(FramePlan &plan, const TagHeader &header, const Tag *tag, FrameKind kind, const FieldEdit &edit)
{
    const Frame *shown = tag ? tag->programFrame(kind) : nullptr;
    if (!edit.remove && shown && hasValue(*shown, edit))
        return {};
    // A track that reads as no number ("A1", "0") is not removed.
    if (edit.remove && kind == FrameKind::TrackNumber && shown && trackNumber(shown->text) == 0)
        return {};
    const QByteArray body = edit.remove ? QByteArray() : frameBody(kind, edit, shown, header.majorVersion);
    if (!edit.remove && shown && readsAs(*shown, kind, body))
        return {};
    if (tag && (edit.remove || kind != FrameKind::Comment)) {
        for (const Frame &frame : tag->frames()) {
            const bool isSpared = edit.isShownOnly && shown && frame.description != shown->description;
            if (frame.kind == kind && !frame.isPrivateComment() && !isSpared)
                plan.replaced[&frame] = QByteArray();
        }
    }
    if (edit.remove)
        return {};
    Result<QByteArray> frame = buildFrame(kind, body, shown, header);
    if (!frame)
        return tl::unexpected(frame.error());
    if (shown)
        plan.replaced[shown] = *frame;
    else
        plan.appended += *frame;
    return {};
}

/// Whether the frame has the day or the time that belong to the year frame, before ID3v2.4.
bool isDayOrTime(const Frame &frame)
{
    std::string_view id = frame.header.identifier();
    if (id.size() == 4 && (id[3] == ' ' || id[3] == '\0')) // as frameKindOf()
        id.remove_suffix(1);
    return id == "TDAT" || id == "TIME" || id == "TDA" || id == "TIM";
}

void dropDayAndTime(FramePlan &plan, const Tag &tag)
{
    for (const Frame &frame : tag.frames()) {
        if (isDayOrTime(frame))
            plan.replaced[&frame] = QByteArray();
    }
}

} // namespace

Result<FramePlan> planFrames(const TagHeader &header, const Tag *tag, const FieldEdits &edits)
{
    FramePlan plan;
    for (const FrameKind kind : NewFrameOrder) {
        const auto edit = edits.find(kind);
        if (edit == edits.end())
            continue;
        if (Result<void> planned = planEdit(plan, header, tag, kind, edit->second); !planned)
            return tl::unexpected(planned.error());
        if (edit->second.isNewYear && tag && header.majorVersion < 4)
            dropDayAndTime(plan, *tag);
    }
    return plan;
}

} // namespace ravlin::id3
