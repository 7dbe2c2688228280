// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/store/tagstore.h"

#include "core/tags/record/genres.h"
#include "core/tags/store/tagobject.h"
#include "core/tags/store/tagvalues.h"

#include <functional>

namespace ravlin {

using storage::WriteOptions;
using storage::WriteOutcome;

namespace {

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

std::optional<TagObject::Step> stepOf(QChar kind)
{
    switch (kind.unicode()) {
    case u'1':
        return TagObject::Step::SaveV1;
    case u'2':
        return TagObject::Step::SaveV2;
    case u'4':
        return TagObject::Step::StripV1;
    case u'5':
        return TagObject::Step::StripV2;
    default:
        return {};
    }
}

/// The kinds of a tag-save mode, in their order.
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

using Compose = std::function<Result<void>(TagObject &object, QChar kind)>;

/// Composes the content of a linked file kind by kind and writes it in one step. What was composed before a kind fails
/// is written all the same.
Result<WriteOutcome> writeSteps(TagObject &object, const QString &kinds, WriteOptions options, const Compose &compose)
{
    const TagValues before = options.journal != nullptr ? valuesOf(object) : TagValues();
    std::optional<Error> failure;
    for (qsizetype i = 0; i < kinds.size() && !failure; ++i) {
        const Result<void> done =
            (i == 0 ? Result<void>() : object.readComposed()).and_then([&] { return compose(object, kinds[i]); });
        if (!done)
            failure = done.error();
    }
    if (options.journal != nullptr) {
        if (const Result<void> read = object.readComposed(); !read)
            return tl::unexpected(read.error());
        options.values = valueChanges(before, valuesOf(object));
    }
    const Result<WriteOutcome> written = object.write(options);
    return written && failure ? tl::unexpected(*failure) : written;
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
    const QString kinds = kindsOfMode(m_state.tagSaveMode);
    return kinds.isEmpty() ? Result<void>() : write(path, record, kinds).map([](WriteOutcome) {});
}

Result<WriteOutcome> TagStore::WriteTagKind(const QString &path, const TagRecord &record, QChar kind)
{
    return write(path, record, kind);
}

Result<WriteOutcome> TagStore::write(const QString &path, const TagRecord &record, const QString &kinds) const
{
    TagObject object = newObject();
    if (Result<void> linked = object.Link(path); !linked)
        return tl::unexpected(linked.error());
    WriteOptions options = writeOptions();
    options.readOnlyFile = storage::ReadOnlyFile::MakeWritable;
    return writeSteps(object, kinds, options, [&](TagObject &each, QChar kind) -> Result<void> {
        const std::optional<TagObject::Step> step = stepOf(kind);
        if (!step)
            return tl::unexpected(Error{ErrorCode::InvalidArgument, {}, QStringLiteral("no such tag kind")});
        putRecord(each, record);
        return each.compose(*step, TagObject::Others::Written, m_state.options.newTagVersion);
    });
}

WriteOptions TagStore::writeOptions() const
{
    return {.keepModified = m_state.options.keepFileTimes, .journal = m_journal};
}

Result<void> TagStore::remove(const QString &path, QChar kind) const
{
    TagObject object = newObject();
    if (Result<void> linked = object.Link(path); !linked)
        return linked;
    return writeSteps(object, kind, writeOptions(), [](TagObject &each, QChar step) {
        return each.compose(*stepOf(step));
    }).map([](WriteOutcome) {});
}

Result<void> TagStore::RemoveV1(const QString &path)
{
    return remove(path, u'4');
}

Result<void> TagStore::RemoveV2(const QString &path)
{
    return remove(path, u'5');
}

} // namespace ravlin
