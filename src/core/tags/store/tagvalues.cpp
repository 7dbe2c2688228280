// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/store/tagvalues.h"

#include "core/tags/record/genres.h"
#include "core/tags/store/tagobject.h"

#include <algorithm>
#include <span>

namespace ravlin {

using storage::ValueChange;

namespace {

/// The text of the last content-type frame.
QString contentTypeText(const TagObject &object)
{
    QString text;
    for (const id3::Frame &frame : object.frames()) {
        if (frame.kind == FrameKind::ContentType)
            text = frame.text;
    }
    return text;
}

QString genreOf(int number)
{
    return number < genreNames().size() ? genreName(number) : QString::number(number);
}

/// The fields of ID3v1 as a record shows them.
TagRecord recordOf(const id3::V1Fields &fields)
{
    TagRecord record;
    record.Title = fields.title;
    record.Artist = fields.artist;
    record.Album = fields.album;
    record.Year = fields.year;
    record.Comment = fields.comment;
    record.Track = fields.track > 0 ? QString::number(fields.track) : QString();
    record.Genre = fields.genre == GenreNone ? QString() : genreOf(fields.genre);
    return record;
}

constexpr std::size_t Others = 4; ///< index of what is in no group
constexpr std::array<QStringView, 5> GroupNames{u"picture", u"lyrics", u"rating", u"date", u"other"};

/// The group of a frame that has none of the seven fields.
std::size_t groupOf(const id3::Frame &frame)
{
    static constexpr std::array<std::string_view, 2> Pictures{"APIC", "PIC"};
    static constexpr std::array<std::string_view, 4> Lyrics{"USLT", "ULT", "SYLT", "SLT"};
    static constexpr std::array<std::string_view, 2> Ratings{"POPM", "POP"};
    static constexpr std::array<std::string_view, 4> Dates{"TDAT", "TDA", "TIME", "TIM"};
    std::string_view id = frame.header.identifier();
    if (id.size() == 4 && (id[3] == ' ' || id[3] == '\0')) // as frameKindOf()
        id.remove_suffix(1);
    std::size_t group = 0;
    for (const std::span<const std::string_view> ids :
        {std::span<const std::string_view>(Pictures), std::span<const std::string_view>(Lyrics),
            std::span<const std::string_view>(Ratings), std::span<const std::string_view>(Dates)}) {
        if (std::ranges::find(ids, id) != ids.end())
            return group;
        ++group;
    }
    return Others;
}

QString countText(int count)
{
    return count > 0 ? QString::number(count) : QString();
}

} // namespace

Result<void> takeRecord(const TagObject &object, const QString &path, TagRecord &record)
{
    record.HasV1 = object.HasV1Tag();
    record.HasV2 = object.HasV2Tag();
    record.HasPicture = object.hasPicture();
    record.Artist = object.Artist();
    record.Album = object.Album();
    record.Year = object.Year();
    const int genre = object.Genre();
    record.Title = object.Title();
    record.Track = QString::number(object.Track());
    record.Comment = object.Comment();
    record.Genre = genre == GenreNone ? contentTypeText(object) : genreOf(genre);
    const bool isBeyondTable = genre != GenreNone && genre >= genreNames().size();
    if (isBeyondTable && !object.isV2Cut()) {
        return tl::unexpected(Error{ErrorCode::GenreOutOfRange, path,
            QStringLiteral("the genre number %1 is beyond the genre table").arg(genre)});
    }
    if (object.Track() == 0)
        record.Track.clear();
    if (object.isV2Cut())
        return tl::unexpected(Error{ErrorCode::TagTooLarge, path, QStringLiteral("only a part of the tag was read")});
    return {};
}

TagValues valuesOf(const TagObject &object)
{
    TagValues values;
    if (!takeRecord(object, {}, values.shown) && values.shown.Track == QStringLiteral("0"))
        values.shown.Track.clear();
    values.v1 = object.v1Fields();
    for (const id3::Frame &frame : object.frames()) {
        if (frameKindOf(frame.header.identifier()) == FrameKind::Other)
            ++values.frames.at(groupOf(frame));
    }
    return values;
}

std::vector<ValueChange> valueChanges(const TagValues &before, const TagValues &after)
{
    std::vector<ValueChange> changes;
    const bool hasV1 = before.v1 && after.v1 && *before.v1 != *after.v1;
    const TagRecord oldV1 = hasV1 ? recordOf(*before.v1) : TagRecord();
    const TagRecord newV1 = hasV1 ? recordOf(*after.v1) : TagRecord();
    for (const auto &[field, name] : TagFields) {
        if (before.shown.*field != after.shown.*field)
            changes.push_back({name.toString(), before.shown.*field, after.shown.*field});
        else if (oldV1.*field != newV1.*field)
            changes.push_back({name.toString(), oldV1.*field, newV1.*field});
    }
    for (std::size_t group = 0; group < GroupNames.size(); ++group) {
        if (after.frames.at(group) < before.frames.at(group))
            changes.push_back({GroupNames.at(group).toString(), countText(before.frames.at(group)),
                countText(after.frames.at(group))});
    }
    return changes;
}

} // namespace ravlin
