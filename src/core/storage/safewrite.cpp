// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/storage/safewrite.h"

#include "core/platform/fileio.h"
#include "core/platform/path.h"
#include "core/storage/leftovers.h"
#include "core/storage/redofile.h"
#include "core/storage/writeplan.h"

#include <optional>

namespace ravlin::storage {
namespace {

tl::unexpected<Error> failure(ErrorCode code, const QString &detail)
{
    return tl::unexpected(Error{code, {}, detail});
}

bool isSameState(const platform::FileInfo &one, const platform::FileInfo &other)
{
    return one.size == other.size && one.modified == other.modified && one.inode == other.inode &&
           one.device == other.device;
}

Result<platform::FileInfo> expectState(const Result<platform::FileInfo> &now, const platform::FileInfo &before)
{
    if (now && !isSameState(*now, before))
        return failure(ErrorCode::ChangedMeanwhile, QStringLiteral("the file was changed since it was read"));
    return now;
}

/// The file to be rewritten. It may be open for reading only until there is something to write: finding that out has to
/// work on read-only files too.
struct Original
{
    std::unique_ptr<platform::File> file;
    platform::FileInfo info;
    bool isWritable = false;           ///< open for writing
    std::optional<Error> refusal = {}; ///< why it could not be opened for writing
};

Result<Original> openAs(HeldFile &held, platform::OpenMode mode, const platform::FileInfo &before)
{
    auto file = held.open(mode);
    if (!file)
        return tl::unexpected(file.error());
    const auto info = expectState(held.info(), before);
    if (!info)
        return tl::unexpected(info.error());
    return Original{.file = std::move(*file), .info = *info, .isWritable = mode == platform::OpenMode::ReadWrite};
}

Result<Original> openOriginal(HeldFile &held, const platform::FileInfo &before)
{
    if (before.isReadOnly())
        return openAs(held, platform::OpenMode::Read, before);
    auto original = openAs(held, platform::OpenMode::ReadWrite, before);
    if (original)
        return original;
    const Error refusal = original.error();
    const bool isRefused = refusal.code == ErrorCode::AccessDenied || refusal.code == ErrorCode::ReadOnly ||
                           refusal.code == ErrorCode::ReadOnlyDrive;
    if (!isRefused)
        return original;
    original = openAs(held, platform::OpenMode::Read, before);
    if (original)
        original->refusal = refusal;
    return original;
}

/// Opens the original for writing unless it is. Lifts the read-only attribute by the handle that is open already.
Result<void> makeWritable(HeldFile &held, Original &original, const WriteOptions &options)
{
    if (original.info.isReadOnly()) {
        if (options.readOnlyFile == ReadOnlyFile::Refuse)
            return failure(ErrorCode::ReadOnly, QStringLiteral("the file is read-only"));
        constexpr quint32 OwnerMayWrite = 0200;
        if (auto permitted = original.file->setPermissions(original.info.permissions | OwnerMayWrite); !permitted)
            return permitted;
    } else if (original.isWritable) {
        return {};
    } else if (original.refusal) {
        return tl::unexpected(*original.refusal);
    }
    auto reopened = openAs(held, platform::OpenMode::ReadWrite, original.info);
    if (!reopened)
        return tl::unexpected(reopened.error());
    original.file = std::move(reopened->file);
    return {};
}

/// Sets the read-only attribute again. A file whose write failed stays without it.
Result<void> restoreReadOnly(platform::File &file, const Original &original)
{
    return original.info.isReadOnly() ? file.setPermissions(original.info.permissions) : Result<void>();
}

/// Best effort: a time that cannot be set is no reason to undo a save that worked.
void restoreModified(platform::File &file, const platform::FileInfo &before, const WriteOptions &options)
{
    if (options.keepModified)
        static_cast<void>(file.setModified(before.modified));
}

/// The one write of an in-place change, undone if it fails.
Result<void> writeBlock(platform::File &file, const platform::FileInfo &before, const Change &change)
{
    auto written = platform::writeAll(file, change.newBytes, change.offset);
    if (written) {
        const auto same = platform::sameBytes(file, change.offset, change.newBytes);
        if (same && *same)
            return {};
        written = same ? failure(ErrorCode::VerifyFailed, QStringLiteral("what was written reads back differently"))
                       : tl::unexpected(same.error());
    }
    const auto undone = change.oldBytes.isEmpty() ? file.truncate(before.size)
                                                  : platform::writeAll(file, change.oldBytes, change.offset);
    if (!undone)
        written.error().detail += QStringLiteral("; undoing it failed: ") + undone.error().detail;
    else
        static_cast<void>(file.setModified(before.modified)); // best effort
    return written;
}

/// Makes the new file ready to replace the original, but for its permissions.
Result<void> prepareReplacement(
    TemporaryFile &temporary, const RewriteTarget &target, const NewContent &content, const WriteOptions &options)
{
    platform::File &file = temporary.file();
    return writeContent(file, 0, target.file, content)
        .and_then([&] { return file.takeAttributes(target.file); })
        .and_then([&] {
            restoreModified(file, target.info, options);
            return file.sync();
        })
        .and_then([&] { return file.info(); })
        .and_then([&](const platform::FileInfo &info) -> Result<bool> {
            if (info.size != content.size)
                return false;
            return holdsContent(file, 0, target.file, content);
        })
        .and_then([](bool same) -> Result<void> {
            if (!same)
                return failure(ErrorCode::VerifyFailed, QStringLiteral("the new file reads back differently"));
            return {};
        });
}

/// Gives the new file the original's owner; checked before anything is copied. False if it can't have that.
Result<bool> takesOwner(TemporaryFile &temporary, const RewriteTarget &target)
{
    if (temporary.info().owner == target.info.owner && temporary.info().group == target.info.group)
        return true;
    const auto taken = temporary.file().takeOwner(target.file);
    if (!taken && taken.error().code != ErrorCode::AccessDenied)
        return tl::unexpected(taken.error());
    return taken.has_value();
}

/// Returns false and does nothing if the new file cannot get the original's owner. Closes the original before replacing
/// it: some file systems of Windows do not replace an open file.
Result<bool> tryReplace(HeldFile &held, Original &original, const NewContent &content, const WriteOptions &options)
{
    const platform::Place &place = held.place();
    const RewriteTarget target{place, *original.file, original.info};
    auto temporary = TemporaryFile::create(place.folder);
    if (!temporary)
        return tl::unexpected(temporary.error());
    if (const auto takes = takesOwner(*temporary, target); !takes || !*takes)
        return takes;
    const auto prepared = prepareReplacement(*temporary, target, content, options);
    if (!prepared)
        return tl::unexpected(prepared.error());
    // What has the name now is what would be lost.
    const auto now = expectState(
        place.folder->node(place.name).map([](const platform::Node &node) { return node.info; }), target.info);
    if (!now)
        return tl::unexpected(now.error());
    const auto made = temporary->file().info();
    if (!made)
        return tl::unexpected(made.error());
    // Last of all, so that nobody could open it as long as it was not whole.
    platform::File &file = temporary->file();
    const auto permitted =
        file.takePermissions(*original.file).and_then([&] { return restoreReadOnly(file, original); });
    if (!permitted)
        return tl::unexpected(permitted.error());
    original.file.reset();
    // The folder is not synced: after a power cut it names the old file or the new one, and both are whole.
    return temporary->moveTo(place.name).map([&] {
        held.becomes(*made);
        return true;
    });
}

Result<WriteOutcome> writeElsewhere(platform::FileSystem &fileSystem, HeldFile &held, Original &original,
    const NewContent &content, const WriteOptions &options)
{
    if (original.info.linkCount <= 1) {
        const auto replaced = tryReplace(held, original, content, options);
        if (!replaced)
            return tl::unexpected(replaced.error());
        if (*replaced)
            return WriteOutcome::Replaced;
    }
    const RewriteTarget target{held.place(), *original.file, original.info};
    return rewriteUnderRedo(fileSystem, target, content, options)
        .and_then([&] { return restoreReadOnly(*original.file, original); })
        .map([] { return WriteOutcome::Rewritten; });
}

Result<WriteOutcome> writeInPlace(
    Original &original, const NewContent &content, const Change &change, const WriteOptions &options)
{
    platform::File &file = *original.file;
    const auto written =
        change.kind == Change::Cut ? file.truncate(content.size) : writeBlock(file, original.info, change);
    if (!written)
        return tl::unexpected(written.error());
    restoreModified(file, original.info, options);
    return restoreReadOnly(file, original).map([] { return WriteOutcome::InPlace; });
}

Result<WriteOutcome> rewrite(platform::FileSystem &fileSystem, HeldFile &held, const platform::FileInfo &before,
    const std::vector<Segment> &segments, const WriteOptions &options)
{
    const auto content = makeContent(segments, before.size);
    if (!content)
        return tl::unexpected(content.error());
    auto original = openOriginal(held, before);
    if (!original)
        return tl::unexpected(original.error());
    const auto change = findChange(*original->file, before.size, *content);
    if (!change)
        return tl::unexpected(change.error());
    if (change->kind == Change::None)
        return WriteOutcome::Unchanged;
    if (auto opened = makeWritable(held, *original, options); !opened)
        return tl::unexpected(opened.error());
    return change->kind == Change::Elsewhere ? writeElsewhere(fileSystem, held, *original, *content, options)
                                             : writeInPlace(*original, *content, *change, options);
}

Error withPath(Error error, const QString &path)
{
    if (error.path.isEmpty())
        error.path = path;
    return error;
}

} // namespace

Result<HeldFile> HeldFile::follow(platform::FileSystem &fileSystem, const QString &path)
{
    return fileSystem.follow(path).map([](platform::Place &&place) { return HeldFile(std::move(place)); });
}

Result<std::unique_ptr<platform::File>> HeldFile::open(platform::OpenMode mode)
{
    auto file = m_place.folder->openFile(m_place.name, mode);
    if (!file)
        return file;
    const auto info = (*file)->info();
    if (!info)
        return tl::unexpected(info.error());
    if (m_known && (m_known->inode != info->inode || m_known->device != info->device))
        return tl::unexpected(Error{
            ErrorCode::ChangedMeanwhile, m_place.path(), QStringLiteral("another file has taken its name meanwhile")});
    m_known = *info;
    return file;
}

Result<WriteOutcome> rewriteFile(platform::FileSystem &fileSystem, HeldFile &held, const platform::FileInfo &before,
    const std::vector<Segment> &segments, const WriteOptions &options)
{
    auto outcome = rewrite(fileSystem, held, before, segments, options);
    if (!outcome)
        return tl::unexpected(withPath(outcome.error(), held.place().path()));
    return outcome;
}

Result<WriteOutcome> rewriteFile(platform::FileSystem &fileSystem, const QString &path,
    const platform::FileInfo &before, const std::vector<Segment> &segments, const WriteOptions &options)
{
    auto held = HeldFile::follow(fileSystem, path);
    if (!held)
        return tl::unexpected(withPath(held.error(), path));
    return rewriteFile(fileSystem, *held, before, segments, options);
}

bool mayNeedRecovery(platform::FileSystem &fileSystem, const platform::FileInfo &info)
{
    // Any other file is replaced instead, since a new one can get its owner and group.
    return info.isFile &&
           (info.linkCount > 1 || info.owner != fileSystem.currentUser() || info.group != fileSystem.currentGroup());
}

Result<void> recoverFile(platform::FileSystem &fileSystem, const platform::Place &place)
{
    const auto node = place.folder->node(place.name);
    if (!node)
        return tl::unexpected(node.error());
    if (node->kind != platform::NodeKind::File || !mayNeedRecovery(fileSystem, node->info))
        return {};
    const auto finished = finishRedo(fileSystem, *place.folder, redoName(node->info.inode), place.name);
    if (!finished)
        return tl::unexpected(finished.error());
    return {};
}

Result<void> recoverFile(platform::FileSystem &fileSystem, const QString &path)
{
    return fileSystem.follow(path).and_then(
        [&](const platform::Place &place) { return recoverFile(fileSystem, place); });
}

} // namespace ravlin::storage
