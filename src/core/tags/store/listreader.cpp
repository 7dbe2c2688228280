// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/store/listreader.h"

#include "core/tags/id3/id3v1.h"
#include "core/tags/id3/id3v2.h"

#include <optional>

namespace ravlin {

namespace {

QString v2Text(const std::optional<id3::Tag> &tag, FrameKind kind)
{
    const id3::Frame *frame = tag ? tag->programFrame(kind) : nullptr;
    if (!frame || frame->text.size() <= id3::MaximumListText)
        return frame ? frame->text : QString();
    return frame->text.first(id3::MaximumListText) + QChar(0x2026);
}

} // namespace

Result<ListFields> readListFields(platform::File &file, const std::stop_token &stop)
{
    const Result<platform::FileInfo> info = file.info();
    if (!info)
        return tl::unexpected(info.error());
    const auto v1 = id3::readV1Block(file, info->size);
    if (!v1)
        return tl::unexpected(v1.error());
    platform::FileSource withoutV1(file, info->size - (*v1 ? id3::V1Size : 0));
    const auto v2 = id3::Tag::parse(withoutV1, id3::Detail::ListFields, stop);
    if (!v2)
        return tl::unexpected(v2.error());

    ListFields tag;
    tag.hasV2 = v2->has_value();
    tag.hasV1 = v1->has_value();
    tag.isCut = tag.hasV2 && (*v2)->isCut();
    tag.title = v2Text(*v2, FrameKind::Title);
    tag.artist = v2Text(*v2, FrameKind::LeadArtist);
    tag.album = v2Text(*v2, FrameKind::Album);
    const QString yearText = v2Text(*v2, FrameKind::Year);
    tag.year = id3::yearOf(yearText);
    const QString trackText = v2Text(*v2, FrameKind::TrackNumber);
    int track = id3::trackNumber(trackText);
    if (tag.hasV1) {
        const id3::V1Fields fields = id3::parseV1({(*v1)->constData(), static_cast<size_t>((*v1)->size())});
        const auto fallBack = [](QString &value, const QString &other) {
            if (value.isEmpty())
                value = other;
        };
        fallBack(tag.title, fields.title);
        fallBack(tag.artist, fields.artist);
        fallBack(tag.album, fields.album);
        if (yearText.isEmpty())
            tag.year = fields.year;
        if (trackText.isEmpty())
            track = fields.track;
    }
    if (track != 0)
        tag.track = QString::number(track);
    return tag;
}

} // namespace ravlin
