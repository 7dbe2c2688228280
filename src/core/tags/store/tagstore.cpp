// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/store/tagstore.h"

#include "core/tags/record/genres.h"
#include "core/tags/store/tagobject.h"
#include "core/tags/store/tagvalues.h"

#include <algorithm>
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

/// Puts edits that can be stored.
void putEdits(TagObject &object, const TagEdits &edits)
{
    const auto putIf = [&](TagEdits::Field field, FrameKind kind, void (TagObject::*set)(const QString &)) {
        if (const QString *text = edits.text(field))
            putText(object, kind, set, *text);
    };
    putIf(&TagRecord::Artist, FrameKind::LeadArtist, &TagObject::setArtist);
    putIf(&TagRecord::Album, FrameKind::Album, &TagObject::setAlbum);
    putIf(&TagRecord::Year, FrameKind::Year, &TagObject::setYear);
    putIf(&TagRecord::Title, FrameKind::Title, &TagObject::setTitle);
    if (const QString *comment = edits.text(&TagRecord::Comment); comment && comment->isEmpty())
        object.removeShownComment();
    else if (comment)
        object.setComment(*comment);
    if (const QString *genre = edits.text(&TagRecord::Genre); genre && genre->isEmpty())
        object.removeFrames(FrameKind::ContentType);
    else if (genre)
        object.setGenre(tableGenreNumber(*genre));
    if (const QString *track = edits.text(&TagRecord::Track); track && track->isEmpty())
        object.removeFrames(FrameKind::TrackNumber);
    else if (track)
        object.setTrack(track->toInt());
}

/// What a save of edits does with the other fields of a kind. They have to go into a tag that is new, and into one that
/// is all that will be left.
TagObject::Others othersIn(const TagObject &object, QChar kind, const QString &kinds)
{
    const bool isAll =
        kind == u'1' ? !object.HasV1Tag() || kinds.contains(u'5') : !object.HasV2Tag() || kinds.contains(u'4');
    return isAll ? TagObject::Others::Written : TagObject::Others::Kept;
}

bool isSameState(const platform::FileInfo &one, const platform::FileInfo &other)
{
    return one.size == other.size && one.modified == other.modified && one.inode == other.inode &&
           one.device == other.device;
}

/// Why an edit was left out.
Error notStorable(TagEdits::Field field, const TagEdits &edits)
{
    const auto *const named = std::ranges::find(TagFields, field, &TagField::member);
    return {ErrorCode::NotStorable, {}, QStringLiteral("%1 '%2'").arg(named->name, *edits.text(field))};
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

/// What is to be written into a linked file.
struct TagStore::Prepared
{
    TagRecord record;
    TagEdits edits;               ///< without what can't be stored
    std::optional<Error> leftOut; ///< why an edit is not among them
};

Result<void> TagStore::ReadTag(const QString &path, TagRecord &record, platform::FileInfo *state) const
{
    record = TagRecord{};
    TagObject object = newObject();
    if (Result<void> linked = object.Link(path); !linked)
        return linked;
    if (state != nullptr)
        *state = object.info();
    return takeRecord(object, path, record);
}

Result<TagRecord> TagStore::readRecordLeniently(const QString &path) const
{
    TagRecord record;
    const Result<void> read = ReadTag(path, record);
    return leniently(read, std::move(record));
}

namespace {

Result<TagRecord> readWritable(TagObject &object, const QString &path)
{
    Result<void> allowed = object.Link(path);
    if (allowed)
        allowed = object.checkWritable();
    if (!allowed)
        return tl::unexpected(allowed.error());
    TagRecord record;
    const Result<void> read = takeRecord(object, path, record);
    return leniently(read, std::move(record));
}

} // namespace

Result<TagRecord> TagStore::readForSaving(const QString &path) const
{
    TagObject object = newObject();
    return readWritable(object, path);
}

Result<TagStore::Prepared> TagStore::prepare(TagObject &object, const QString &path, const MakeEdits &make) const
{
    const Result<TagRecord> present = readWritable(object, path);
    if (!present)
        return tl::unexpected(present.error());
    const Result<TagEdits> wanted = make(*present);
    if (!wanted)
        return tl::unexpected(wanted.error());
    if (!savesOnlyEdited())
        return Prepared{wanted->appliedTo(*present), *wanted, {}};
    Prepared prepared{{}, wanted->storable(), {}};
    prepared.record = prepared.edits.appliedTo(*present);
    if (const auto field = fieldNotStorable(*wanted, *present)) {
        prepared.leftOut = notStorable(*field, *wanted);
        prepared.leftOut->path = path;
    }
    return prepared;
}

Result<TagRecord> TagStore::saveOnce(
    const QString &path, const MakeEdits &make, const std::optional<platform::FileInfo> &seen)
{
    TagObject object = newObject();
    Result<Prepared> prepared = prepare(object, path, make);
    if (!prepared)
        return tl::unexpected(prepared.error());
    if (const Result<void> space = checkFreeSpace(path); !space)
        return tl::unexpected(space.error());
    const bool isOther = seen && !savesOnlyEdited() && !isSameState(*seen, object.info());
    const QString kinds = kindsOfMode(m_state.tagSaveMode);
    const bool writesNothing = prepared->leftOut && prepared->edits.isEmpty();
    const auto compose = [&](TagObject &each, QChar kind) {
        if (savesOnlyEdited())
            putEdits(each, prepared->edits);
        else
            putRecord(each, prepared->record);
        const auto others = savesOnlyEdited() ? othersIn(each, kind, kinds) : TagObject::Others::Written;
        return each.compose(*stepOf(kind), others, m_state.options.newTagVersion);
    };
    const Result<WriteOutcome> written =
        writesNothing ? WriteOutcome::Unchanged : writeSteps(object, kinds, savingOptions(), compose);
    if (!written)
        return tl::unexpected(written.error());
    if (isOther && m_journal != nullptr)
        m_journal->addChangedByOther(path);
    if (prepared->leftOut)
        return tl::unexpected(*prepared->leftOut);
    return std::move(prepared->record);
}

Result<TagRecord> TagStore::save(
    const QString &path, const MakeEdits &make, const std::optional<platform::FileInfo> &seen)
{
    constexpr int MostTries = 20; // other programs save in between; none does so for ever
    Result<TagRecord> saved = saveOnce(path, make, seen);
    for (int tries = 1; tries < MostTries && !saved && saved.error().code == ErrorCode::ChangedMeanwhile; ++tries)
        saved = saveOnce(path, make, seen);
    return saved;
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
    return writeSteps(object, kinds, savingOptions(), [&](TagObject &each, QChar kind) -> Result<void> {
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

WriteOptions TagStore::savingOptions() const
{
    WriteOptions options = writeOptions();
    options.readOnlyFile = storage::ReadOnlyFile::MakeWritable;
    return options;
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
