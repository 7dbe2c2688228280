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
    bool isWritable = false;      ///< open for writing
    std::optional<Error> refusal; ///< why it could not be opened for writing
};

Result<Original> openAs(
    platform::FileSystem &fileSystem, const QString &path, platform::OpenMode mode, const platform::FileInfo &before)
{
    auto file = fileSystem.open(path, mode);
    if (!file)
        return tl::unexpected(file.error());
    const auto info = expectState((*file)->info(), before);
    if (!info)
        return tl::unexpected(info.error());
    return Original{std::move(*file), *info, mode == platform::OpenMode::ReadWrite, std::nullopt};
}

Result<Original> openOriginal(platform::FileSystem &fileSystem, const QString &path, const platform::FileInfo &before)
{
    if (before.isReadOnly())
        return openAs(fileSystem, path, platform::OpenMode::Read, before);
    auto original = openAs(fileSystem, path, platform::OpenMode::ReadWrite, before);
    if (original)
        return original;
    const Error refusal = original.error();
    if (refusal.code != ErrorCode::AccessDenied && refusal.code != ErrorCode::ReadOnly)
        return original;
    original = openAs(fileSystem, path, platform::OpenMode::Read, before);
    if (original)
        original->refusal = refusal;
    return original;
}

/// Opens the original for writing unless it is; handles the read-only attribute.
Result<void> makeWritable(
    platform::FileSystem &fileSystem, const QString &path, Original &original, const WriteOptions &options)
{
    if (original.info.isReadOnly()) {
        if (options.readOnlyFile == ReadOnlyFile::Refuse)
            return failure(ErrorCode::ReadOnly, QStringLiteral("the file is read-only"));
        constexpr quint32 OwnerMayWrite = 0200;
        const auto permitted = fileSystem.setPermissions(path, original.info.permissions | OwnerMayWrite);
        if (!permitted)
            return permitted;
    } else if (original.isWritable) {
        return {};
    } else if (original.refusal) {
        return tl::unexpected(*original.refusal);
    }
    auto reopened = openAs(fileSystem, path, platform::OpenMode::ReadWrite, original.info);
    if (!reopened)
        return tl::unexpected(reopened.error());
    original = std::move(*reopened);
    return {};
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

/// Makes the new file ready to replace the original.
Result<void> prepareReplacement(
    TemporaryFile &temporary, const RewriteTarget &target, const NewContent &content, const WriteOptions &options)
{
    platform::File &file = temporary.file();
    return writeContent(file, 0, target.file, content)
        .and_then([&] { return file.takeMetadata(target.file); })
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

/// Whether a new file can get the original's owner; checked before anything is copied.
Result<bool> canTakeOwner(TemporaryFile &temporary, const RewriteTarget &target)
{
    if (temporary.info().owner == target.info.owner && temporary.info().group == target.info.group)
        return true;
    const auto taken = temporary.file().takeMetadata(target.file);
    if (!taken && taken.error().code != ErrorCode::AccessDenied)
        return tl::unexpected(taken.error());
    return taken.has_value();
}

/// Returns false and does nothing if the new file cannot get the original's owner. Closes the original before replacing
/// it: some file systems of Windows do not replace an open file.
Result<bool> tryReplace(platform::FileSystem &fileSystem, const RewriteTarget &target,
    std::unique_ptr<platform::File> &original, const NewContent &content, const WriteOptions &options)
{
    auto temporary = TemporaryFile::create(fileSystem, platform::folderOf(target.path));
    if (!temporary)
        return tl::unexpected(temporary.error());
    if (const auto can = canTakeOwner(*temporary, target); !can || !*can)
        return can;
    const auto prepared = prepareReplacement(*temporary, target, content, options);
    if (!prepared)
        return tl::unexpected(prepared.error());
    // By path: what has the name now is what would be lost.
    const auto now = expectState(fileSystem.info(target.path), target.info);
    if (!now)
        return tl::unexpected(now.error());
    original.reset();
    // The folder is not synced: after a power cut it names the old file or the new one, and both are whole.
    return temporary->moveTo(target.path).map([] { return true; });
}

Result<WriteOutcome> writeElsewhere(platform::FileSystem &fileSystem, const QString &path, Original &original,
    const NewContent &content, const WriteOptions &options)
{
    const auto canonical = fileSystem.canonicalPath(path);
    if (!canonical)
        return tl::unexpected(canonical.error());
    const RewriteTarget target{*canonical, *original.file, original.info};
    if (original.info.linkCount <= 1) {
        const auto replaced = tryReplace(fileSystem, target, original.file, content, options);
        if (!replaced)
            return tl::unexpected(replaced.error());
        if (*replaced)
            return WriteOutcome::Replaced;
    }
    return rewriteUnderRedo(fileSystem, target, content, options).map([] { return WriteOutcome::Rewritten; });
}

Result<WriteOutcome> rewrite(platform::FileSystem &fileSystem, const QString &path, const platform::FileInfo &before,
    const std::vector<Segment> &segments, const WriteOptions &options)
{
    const auto content = makeContent(segments, before.size);
    if (!content)
        return tl::unexpected(content.error());
    auto original = openOriginal(fileSystem, path, before);
    if (!original)
        return tl::unexpected(original.error());
    const auto change = findChange(*original->file, before.size, *content);
    if (!change)
        return tl::unexpected(change.error());
    if (change->kind == Change::None)
        return WriteOutcome::Unchanged;

    if (auto opened = makeWritable(fileSystem, path, *original, options); !opened)
        return tl::unexpected(opened.error());
    platform::File &file = *original->file;
    if (change->kind == Change::Elsewhere)
        return writeElsewhere(fileSystem, path, *original, *content, options);
    const auto written =
        change->kind == Change::Cut ? file.truncate(content->size) : writeBlock(file, original->info, *change);
    if (!written)
        return tl::unexpected(written.error());
    restoreModified(file, original->info, options);
    return WriteOutcome::InPlace;
}

} // namespace

Result<WriteOutcome> rewriteFile(platform::FileSystem &fileSystem, const QString &path,
    const platform::FileInfo &before, const std::vector<Segment> &segments, const WriteOptions &options)
{
    auto outcome = rewrite(fileSystem, path, before, segments, options);
    if (!outcome && outcome.error().path.isEmpty())
        outcome.error().path = path;
    return outcome;
}

bool mayNeedRecovery(platform::FileSystem &fileSystem, const platform::FileInfo &info)
{
    // Any other file is replaced instead, since a new one can get its owner and group.
    return info.isFile &&
           (info.linkCount > 1 || info.owner != fileSystem.currentUser() || info.group != fileSystem.currentGroup());
}

Result<void> recoverFile(platform::FileSystem &fileSystem, const QString &path)
{
    const auto info = fileSystem.info(path);
    if (!info)
        return tl::unexpected(info.error());
    if (!mayNeedRecovery(fileSystem, *info))
        return {};
    const auto canonical = fileSystem.canonicalPath(path);
    if (!canonical)
        return tl::unexpected(canonical.error());
    const QString redoPath = platform::inFolder(platform::folderOf(*canonical), redoName(info->inode));
    const auto finished = finishRedo(fileSystem, redoPath, *canonical);
    if (!finished)
        return tl::unexpected(finished.error());
    return {};
}

} // namespace ravlin::storage
