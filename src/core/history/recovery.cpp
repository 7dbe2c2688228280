// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/history/encoding.h"
#include "core/history/history.h"
#include "core/history/spool.h"
#include "core/history/store.h"
#include "core/platform/fileio.h"
#include "core/platform/nodes.h"
#include "core/platform/path.h"
#include "core/storage/redofile.h"
#include "core/storage/safewrite.h"

#include <algorithm>
#include <tuple>

namespace ravlin::history {
namespace {

using platform::File;
using storage::ChangeKind;
using storage::Segment;

/// A range of a file.
struct Range
{
    qint64 offset = 0;
    qint64 length = 0;
};

/// Where the new content has bytes that the inverse does not keep.
std::vector<Range> writtenRanges(const std::vector<Segment> &inverse, qint64 newSize)
{
    std::vector<Range> kept;
    for (const Segment &segment : inverse) {
        if (segment.isKept())
            kept.push_back({segment.oldOffset, segment.length});
    }
    std::sort(kept.begin(), kept.end(), [](const Range &one, const Range &other) { return one.offset < other.offset; });
    std::vector<Range> written;
    qint64 at = 0;
    for (const Range &range : kept) {
        if (range.offset > at)
            written.push_back({at, range.offset - at});
        at = std::max(at, range.offset + range.length);
    }
    if (newSize > at)
        written.push_back({at, newSize - at});
    return written;
}

Result<QByteArray> readRanges(File &file, const std::vector<Range> &ranges)
{
    QByteArray bytes;
    for (const Range &range : ranges) {
        const auto part = platform::readExactly(file, range.offset, range.length);
        if (!part)
            return part;
        bytes += *part;
    }
    return bytes;
}

/// Whether a file of that size has the bytes that the change wrote.
Result<bool> isAsWritten(File &file, qint64 size, const StoredChange &change, qint64 newSize)
{
    if (size != newSize)
        return false;
    return readRanges(file, writtenRanges(change.inverse, newSize)).map([&](const QByteArray &bytes) {
        return digestOf(bytes) == change.digest;
    });
}

/// Whether a file of that size has the bytes that the change removed, where it removed them.
Result<bool> isAsBefore(File &file, qint64 size, const StoredChange &change)
{
    if (size != change.before.size)
        return false;
    qint64 offset = 0;
    for (const Segment &segment : change.inverse) {
        if (!segment.isKept()) {
            const auto same = platform::sameBytes(file, offset, segment.bytes);
            if (!same || !*same)
                return same;
        }
        offset += segment.length;
    }
    return true;
}

/// Whether each byte is the old or the new one: a power cut may have torn a patch, where the disk's blocks are small.
bool isOfEither(const QByteArray &present, const QByteArray &before, const QByteArray &after)
{
    if (present == before || present == after)
        return true;
    if (present.size() != before.size() || present.size() != after.size())
        return false;
    for (qsizetype i = 0; i < present.size(); ++i) {
        if (present.at(i) != before.at(i) && present.at(i) != after.at(i))
            return false;
    }
    return true;
}

/// Undoes patches of which not all were made. False if something else has been written there since.
Result<bool> rollBack(File &file, const PendingChange &pending)
{
    qint64 offset = 0;
    qsizetype written = 0;
    std::vector<std::pair<qint64, QByteArray>> old;
    for (const Segment &segment : pending.change.inverse) {
        if (!segment.isKept()) {
            const auto present = platform::readExactly(file, offset, segment.length);
            if (!present)
                return tl::unexpected(present.error());
            if (!isOfEither(*present, segment.bytes, pending.written.mid(written, segment.length)))
                return false;
            old.emplace_back(offset, segment.bytes);
            written += segment.length;
        }
        offset += segment.length;
    }
    for (const auto &[at, bytes] : old) {
        if (const auto restored = platform::writeAll(file, bytes, at); !restored)
            return tl::unexpected(restored.error());
    }
    if (const auto synced = file.sync(); !synced)
        return tl::unexpected(synced.error());
    std::ignore = file.setModified(pending.change.before.modified); // best effort
    return true;
}

enum class Finding
{
    Old,
    New,
    RolledBack,
    Foreign,
};

/// The file of an interrupted change, opened by its name or, if it was renamed in its folder, by its inode.
Result<std::unique_ptr<File>> openFile(platform::HeldFolder &folder, const QString &name, const PendingChange &pending)
{
    const quint64 inode = pending.change.identity.inode;
    const bool keepsInode = pending.way != storage::ContentWay::OneStep;
    const auto mode = keepsInode ? platform::OpenMode::ReadWrite : platform::OpenMode::Read;
    auto file = folder.openFile(name, mode);
    if (!keepsInode)
        return file;
    if (file && (*file)->info().map([&](const auto &info) { return info.inode == inode; }).value_or(false))
        return file;
    const auto names = folder.names();
    for (const QString &other : names.value_or(std::vector<QString>())) {
        const auto node = folder.node(other);
        if (node && node->kind == platform::NodeKind::File && node->info.inode == inode)
            return folder.openFile(other, mode);
    }
    return tl::unexpected(Error{ErrorCode::NotFound, platform::inFolder(folder.path(), name), {}});
}

Result<Finding> finishContent(platform::FileSystem &fileSystem, const PendingChange &pending, platform::FileInfo &after)
{
    const QString &path = pending.change.record.path;
    const auto folder = fileSystem.openFolder(platform::folderOf(path));
    if (!folder)
        return tl::unexpected(folder.error());
    if (pending.way == storage::ContentWay::Redo) {
        const auto finished =
            storage::finishRedo(fileSystem, **folder, storage::redoName(pending.change.identity.inode));
        if (!finished)
            return tl::unexpected(finished.error());
    }
    auto file = openFile(**folder, platform::nameOf(path), pending);
    if (!file)
        return tl::unexpected(file.error());
    const auto info = (*file)->info();
    if (!info)
        return tl::unexpected(info.error());
    after = *info;
    const auto isNew = isAsWritten(**file, info->size, pending.change, pending.newSize);
    if (!isNew || *isNew)
        return isNew.map([](bool) { return Finding::New; });
    const auto isOld = isAsBefore(**file, info->size, pending.change);
    if (!isOld || *isOld)
        return isOld.map([](bool) { return Finding::Old; });
    if (pending.way != storage::ContentWay::Patches || info->size != pending.newSize)
        return Finding::Foreign;
    return rollBack(**file, pending).map([](bool done) { return done ? Finding::RolledBack : Finding::Foreign; });
}

/// Takes interrupted rings of renames back as a whole. The first of a ring is aside; of the others, recorded behind it,
/// the last one recorded was renamed first.
void takeRingsBack(platform::FileSystem &fileSystem, const std::vector<PendingChange> &pending)
{
    bool isRing = false;
    for (const PendingChange &one : pending) {
        const FileRecord &record = one.change.record;
        if (!one.aside.isEmpty()) {
            isRing = platform::isTaken(one.aside);
            continue;
        }
        const auto node = isRing ? platform::nodeAt(record.newPath) : tl::unexpected(Error());
        const bool isMoved = node && node->info.inode == one.change.identity.inode;
        if (isMoved && record.change == ChangeKind::Move) // one whose former name is taken stays
            std::ignore = fileSystem.renameNew(record.newPath, record.path);
    }
}

/// What became of a change that gives paths rather than content.
Result<Finding> finishPlacing(platform::FileSystem &fileSystem, const PendingChange &pending, platform::FileInfo &after)
{
    const FileRecord &record = pending.change.record;
    if (!pending.aside.isEmpty() && platform::isTaken(pending.aside)) {
        if (auto back = fileSystem.renameNew(pending.aside, record.path); !back)
            return tl::unexpected(back.error());
        return Finding::RolledBack;
    }
    const bool isGone = record.path.isEmpty() || !platform::isTaken(record.path);
    if (record.change == ChangeKind::Trash || record.change == ChangeKind::Delete)
        return isGone ? Finding::New : Finding::Old;
    const auto made = platform::nodeAt(record.newPath);
    if (!made) {
        if (isGone && !record.path.isEmpty())
            return tl::unexpected(made.error()); // perhaps its drive is not there
        return Finding::Old;
    }
    after = made->info;
    if (record.change == ChangeKind::Move)
        return isGone ? Finding::New : Finding::Old;
    const bool isWhole = pending.change.isFolder || record.path.isEmpty() ||
                         (after.size == pending.change.before.size && after.modified == pending.change.before.modified);
    return isWhole ? Finding::New : Finding::Old;
}

/// Removes the files of programs that ended before they had recorded anything.
void removeUnrecorded(platform::FileSystem &fileSystem, const QString &path, Store &store)
{
    const auto folder = fileSystem.openFolder(path);
    const auto names = folder ? (*folder)->names() : tl::unexpected(folder.error());
    for (const QString &name : names.value_or(std::vector<QString>())) {
        if (!storage::isTemporaryName(name))
            continue;
        const auto file = (*folder)->openFile(name, platform::OpenMode::Read);
        const bool hasEnded = file && (*file)->isPrivate().value_or(false) && (*file)->tryLock().value_or(false);
        // Asked only now: a program that has ended records nothing more.
        const auto runs = hasEnded ? store.runs() : tl::unexpected(Error());
        if (runs && std::ranges::find(*runs, name) == runs->end())
            std::ignore = (*folder)->remove(name);
    }
}

} // namespace

Result<std::unique_ptr<File>> History::takeOver(const QString &run)
{
    const auto folder = m_fileSystem.openFolder(platform::folderOf(m_path));
    if (!folder)
        return tl::unexpected(folder.error());
    auto file = (*folder)->openFile(run, platform::OpenMode::ReadWrite);
    if (!file)
        return file.error().code == ErrorCode::NotFound ? Result<std::unique_ptr<File>>(nullptr) : std::move(file);
    const auto locked = (*file)->tryLock();
    if (!locked || !*locked)
        return tl::unexpected(locked ? Error{ErrorCode::ChangedMeanwhile, run, {}} : locked.error());
    return file;
}

/// Brings what a program that ended had not yet put into the database there.
void History::takeSpool(const QString &run, File &file)
{
    const auto spooled = Spool::read(file);
    if (!spooled || spooled->empty())
        return;
    std::ignore = change([&](Store &open) -> Result<void> {
        const auto taken = open.taken(run);
        if (!taken)
            return tl::unexpected(taken.error());
        std::map<qint64, qint64> made; // entries by their time
        for (const SpooledChange &one : *spooled) {
            if (one.number <= *taken || (one.isEnded && (!one.done || one.time == 0)))
                continue;
            qint64 entry = one.entry != 0 && open.hasEntry(one.entry).value_or(false) ? one.entry : made[one.time];
            if (entry == 0 && one.time != 0) {
                const auto added = open.addEntry(one.time, one.kind, one.folder, one.reverts);
                if (!added)
                    return tl::unexpected(added.error());
                entry = made[one.time] = *added;
            }
            const auto added =
                open.addChange(entry, one.change, one.encoded, one.reverted, run, one.done ? &*one.done : nullptr);
            if (!added)
                return tl::unexpected(added.error());
        }
        return open.setTaken(run, spooled->back().number);
    });
}

void History::recover(Store &store, const QString &run, Recovery &recovery)
{
    const auto lock = takeOver(run);
    if (!lock)
        return;
    if (*lock)
        takeSpool(run, **lock);
    const auto rows = m_store ? m_store->pending(run) : tl::unexpected(Error());
    if (!rows)
        return;
    bool isAllDone = true;
    takeRingsBack(m_fileSystem, *rows);
    for (const PendingChange &pending : *rows) {
        storage::ChangeDone done;
        const bool isContent = pending.change.record.change == ChangeKind::Content;
        const auto found = isContent ? finishContent(m_fileSystem, pending, done.after)
                                     : finishPlacing(m_fileSystem, pending, done.after);
        if (!found) {
            recovery.left.push_back(found.error());
            isAllDone = false;
            continue;
        }
        const QString &path = pending.change.record.path;
        if (*found == Finding::New)
            recovery.completed.append(path);
        else if (*found == Finding::RolledBack)
            recovery.rolledBack.append(path);
        else if (*found == Finding::Foreign)
            done.after = {}; // an undo sees that it is not as it was left
        const bool isMade = *found == Finding::New || *found == Finding::Foreign;
        m_endings.push_back({pending.change.record.id, isMade ? std::optional(done) : std::nullopt});
    }
    for (const TemporaryRow &row : store.temporary(run).value_or(std::vector<TemporaryRow>())) {
        const bool isGone = storage::removeTemporary(m_fileSystem, row.folder, row.name) ||
                            !platform::isTaken(platform::inFolder(row.folder, row.name));
        recovery.temporaryFiles += isGone ? 1 : 0;
        isAllDone = isAllDone && isGone;
        if (isGone)
            m_endedTemporary.push_back(row.id);
    }
    const auto kept = change([&](Store &open) {
        return open.removeEmpty().and_then([&] { return isAllDone ? open.removeRun(run) : Result<void>(); });
    });
    if (kept && isAllDone && storage::isTemporaryName(run)) {
        if (const auto folder = m_fileSystem.openFolder(platform::folderOf(m_path)))
            std::ignore = (*folder)->remove(run);
    }
}

Recovery History::recover()
{
    Recovery recovery;
    Store *const open = store(false);
    if (open == nullptr)
        return recovery;
    if (!m_run)
        removeUnrecorded(m_fileSystem, platform::folderOf(m_path), *open);
    const auto runs = open->runs();
    if (!runs && runs.error().code == ErrorCode::Damaged)
        std::ignore = setAside();
    for (const QString &run : runs.value_or(std::vector<QString>())) {
        if (run != m_runName && m_store)
            recover(*m_store, run, recovery);
    }
    return recovery;
}

Result<void> revertContent(
    History &history, platform::FileSystem &fileSystem, const StoredChange &change, const QString &path, bool isDryRun)
{
    auto held = storage::HeldFile::follow(fileSystem, path);
    if (!held)
        return tl::unexpected(held.error());
    auto file = held->open(platform::OpenMode::Read);
    if (!file)
        return tl::unexpected(file.error());
    const platform::FileInfo info = held->info();
    const bool isTouched = info.size != change.after.size || info.modified != change.after.modified;
    const auto isSame = isTouched ? false : isAsWritten(**file, info.size, change, change.after.size);
    if (!isSame)
        return tl::unexpected(isSame.error());
    if (!*isSame)
        return tl::unexpected(Error{ErrorCode::ChangedMeanwhile, path, {}});
    if (isDryRun)
        return {};
    file->reset(); // some file systems of Windows don't replace an open file
    storage::WriteOptions options{
        .readOnlyFile = storage::ReadOnlyFile::MakeWritable, .modified = change.before.modified, .journal = &history};
    for (const storage::ValueChange &value : change.record.values)
        options.values.push_back({value.name, value.after, value.before});
    history.reverting(change.record.id);
    return storage::rewriteFile(fileSystem, *held, info, change.inverse, options).map([](storage::WriteOutcome) {});
}

} // namespace ravlin::history
