// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/store/tagstore.h"

#include "core/tags/record/genres.h"
#include "core/tags/store/tagobject.h"

namespace ravlin {

using storage::WriteOptions;
using storage::WriteOutcome;

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

/// Puts a text, or removes the kind's frames when there is none.
void putText(TagObject &object, FrameKind kind, void (TagObject::*set)(const QString &), const QString &text)
{
    if (text.isEmpty())
        object.removeFrames(kind);
    else
        (object.*set)(text);
}

void putRecord(TagObject &object, const TagRecord &record)
{
    putText(object, FrameKind::LeadArtist, &TagObject::setArtist, record.Artist);
    putText(object, FrameKind::Album, &TagObject::setAlbum, record.Album);
    putText(object, FrameKind::Year, &TagObject::setYear, isWritableYear(record.Year) ? record.Year : QString());
    const int genre = GenreNameToNumber(record.Genre);
    if (genre == GenreNone)
        object.removeFrames(FrameKind::ContentType);
    else
        object.setGenre(genre);
    putText(object, FrameKind::Title, &TagObject::setTitle, record.Title);
    putText(object, FrameKind::Comment, &TagObject::setComment, record.Comment);
    if (isWritableTrack(record.Track))
        object.setTrack(record.Track.toInt());
    else
        object.removeFrames(FrameKind::TrackNumber);
}

Result<WriteOutcome> writeKind(TagObject &object, QChar kind, const WriteOptions &options, int newVersion)
{
    switch (kind.unicode()) {
    case u'1':
        return object.SaveV1Tag(options);
    case u'2':
        return object.SaveV2Tag(options, newVersion);
    case u'4':
        return object.StripV1Tag(options);
    case u'5':
        return object.StripV2Tag(options);
    default:
        return tl::unexpected(Error{ErrorCode::InvalidArgument, {}, QStringLiteral("no such tag kind")});
    }
}

/// The passes of a tag-save mode, in their order.
QString kindsOfMode(int mode)
{
    switch (mode) {
    case 1:
        return QStringLiteral("1");
    case 2:
        return QStringLiteral("2");
    case 3:
        return QStringLiteral("12");
    case 4:
        return QStringLiteral("15");
    case 5:
        return QStringLiteral("24");
    default:
        return {};
    }
}

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
    if (genre == GenreNone) {
        record.Genre = contentTypeText(object);
    } else if (genre < genreNames().size()) {
        record.Genre = genreName(genre);
    } else {
        record.Genre = QString::number(genre);
    }
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

Result<TagRecord> leniently(const Result<void> &read, TagRecord record)
{
    if (read)
        return record;
    if (read.error().code != ErrorCode::GenreOutOfRange)
        return tl::unexpected(read.error());
    if (record.Track == QStringLiteral("0"))
        record.Track.clear();
    return record;
}

} // namespace

Result<void> TagStore::ReadTag(const QString &path, TagRecord &record) const
{
    record = TagRecord{};
    TagObject object = newObject();
    if (Result<void> linked = object.Link(path); !linked)
        return linked;
    return takeRecord(object, path, record);
}

Result<TagRecord> TagStore::readRecordLeniently(const QString &path) const
{
    TagRecord record;
    const Result<void> read = ReadTag(path, record);
    return leniently(read, std::move(record));
}

Result<TagRecord> TagStore::readForSaving(const QString &path) const
{
    TagObject object = newObject();
    Result<void> allowed = object.Link(path);
    if (allowed)
        allowed = object.checkWritable();
    if (!allowed)
        return tl::unexpected(allowed.error());
    TagRecord record;
    const Result<void> read = takeRecord(object, path, record);
    return leniently(read, std::move(record));
}

TagObject TagStore::newObject() const
{
    return TagObject(m_fileSystem, m_state.writesAnyContent ? TagObject::Content::Any : TagObject::Content::Checked);
}

Result<void> TagStore::checkFreeSpace(const QString &path)
{
    const Result<platform::FileInfo> info = m_fileSystem.info(path);
    if (!info)
        return tl::unexpected(info.error());
    constexpr double BytesPerMegabyte = 1024.0 * 1024.0;
    constexpr double Reserve = 5.0;
    const double needed = static_cast<double>(info->size) / BytesPerMegabyte + Reserve;
    m_state.cancelled = !(needed < static_cast<double>(m_state.freeMegabytes));
    if (m_state.cancelled)
        return tl::unexpected(Error{ErrorCode::LowSpace, path, QStringLiteral("low disk space")});
    return {};
}

Result<void> TagStore::SaveTag(const QString &path, const TagRecord &record)
{
    if (Result<void> space = checkFreeSpace(path); !space)
        return space;
    // One file for all passes: nobody can exchange it between them.
    TagObject object = newObject();
    const QString kinds = kindsOfMode(m_state.tagSaveMode);
    for (qsizetype pass = 0; pass < kinds.size(); ++pass) {
        if (const Result<void> linked = pass == 0 ? object.Link(path) : object.LinkAgain(); !linked)
            return linked;
        if (const Result<WriteOutcome> written = writePass(object, record, kinds.at(pass)); !written)
            return tl::unexpected(written.error());
    }
    return {};
}

Result<WriteOutcome> TagStore::WriteTagKind(const QString &path, const TagRecord &record, QChar kind)
{
    TagObject object = newObject();
    if (Result<void> linked = object.Link(path); !linked)
        return tl::unexpected(linked.error());
    return writePass(object, record, kind);
}

Result<WriteOutcome> TagStore::writePass(TagObject &object, const TagRecord &record, QChar kind) const
{
    putRecord(object, record);
    WriteOptions options = writeOptions();
    options.readOnlyFile = storage::ReadOnlyFile::MakeWritable;
    return writeKind(object, kind, options, m_state.options.newTagVersion);
}

WriteOptions TagStore::writeOptions() const
{
    return {.keepModified = m_state.options.keepFileTimes};
}

Result<void> TagStore::RemoveV1(const QString &path)
{
    TagObject object = newObject();
    if (Result<void> linked = object.Link(path); !linked)
        return linked;
    return object.StripV1Tag(writeOptions()).map([](WriteOutcome) {});
}

Result<void> TagStore::RemoveV2(const QString &path)
{
    TagObject object = newObject();
    if (Result<void> linked = object.Link(path); !linked)
        return linked;
    return object.StripV2Tag(writeOptions()).map([](WriteOutcome) {});
}

} // namespace ravlin
