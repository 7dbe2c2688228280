// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/storage/redofile.h"

#include "core/platform/fileio.h"
#include "core/platform/path.h"
#include "core/storage/leftovers.h"
#include "core/storage/redoformat.h"

#include <algorithm>
#include <cstring>

namespace ravlin::storage {
namespace {

tl::unexpected<Error> failure(ErrorCode code, const QString &path, const QString &detail)
{
    return tl::unexpected(Error{code, path, detail});
}

Result<void> expectSame(const Result<bool> &same, const QString &path)
{
    if (!same)
        return tl::unexpected(same.error());
    if (!*same)
        return failure(ErrorCode::VerifyFailed, path, QStringLiteral("what was written reads back differently"));
    return {};
}

/// Overwrites the file with a range of the redo file and makes sure of it.
Result<void> overwrite(platform::File &file, const QString &path, platform::File &redo, qint64 offset, qint64 size)
{
    return platform::copyAll(redo, offset, file, 0, size)
        .and_then([&] { return file.truncate(size); })
        .and_then([&] { return file.sync(); })
        .and_then([&] { return expectSame(platform::sameBytes(redo, offset, file, 0, size), path); });
}

/// A redo file that cannot be removed is made void instead.
Result<void> discard(platform::FileSystem &fileSystem, const QString &redoPath, platform::File &redo)
{
    const auto removed = fileSystem.remove(redoPath);
    if (removed || removed.error().code == ErrorCode::NotFound)
        return {};
    return redo.truncate(0);
}

/// Fills the redo file; afterwards it lacks only its name.
Result<void> fillRedo(
    platform::File &redo, const RedoHeader &header, const RewriteTarget &target, const NewContent &content)
{
    platform::File &original = target.file;
    const qint64 newOffset = header.newOffset();
    const qint64 oldOffset = header.oldOffset();
    return writeRedoHeader(redo, header)
        .and_then([&] { return writeContent(redo, newOffset, original, content); })
        .and_then([&] { return platform::copyAll(original, 0, redo, oldOffset, header.oldSize); })
        .and_then([&] { return expectSame(holdsContent(redo, newOffset, original, content), target.path); })
        .and_then(
            [&] { return expectSame(platform::sameBytes(original, 0, redo, oldOffset, header.oldSize), target.path); })
        .and_then([&] { return writeRedoTrailer(redo, header); })
        .and_then([&] { return redo.sync(); });
}

Result<void> expectUnchanged(const RewriteTarget &target)
{
    const auto now = target.file.info();
    if (!now)
        return tl::unexpected(now.error());
    if (now->size != target.info.size || now->modified != target.info.modified)
        return failure(ErrorCode::ChangedMeanwhile, target.path,
            QStringLiteral("the file was changed while its new content was prepared"));
    return {};
}

/// Puts the old content back after a failure. The redo file stays where even that fails: then the
/// new content comes when the file is recovered.
Result<void> rollBack(platform::FileSystem &fileSystem, const RewriteTarget &target, const RedoHeader &header,
    const QString &redoPath, platform::File &redo)
{
    const auto restored = overwrite(target.file, target.path, redo, header.oldOffset(), header.oldSize);
    if (!restored)
        return restored;
    static_cast<void>(target.file.setModified(header.oldModified)); // a courtesy only
    return discard(fileSystem, redoPath, redo);
}

/// What the chunk of the file at offset may hold: both contents there, each as long as it reaches.
bool isOldOrNew(const QByteArray &present, const QByteArray &oldBytes, const QByteArray &newBytes)
{
    if (present == newBytes || present == oldBytes)
        return true;
    for (qsizetype i = 0; i < present.size(); ++i) {
        const bool isNew = i < newBytes.size() && present.at(i) == newBytes.at(i);
        const bool isOld =
            i < oldBytes.size() ? present.at(i) == oldBytes.at(i) : present.at(i) == '\0'; // grown, not yet filled
        if (!isNew && !isOld)
            return false;
    }
    return true;
}

/// The bytes of a content inside the redo file from position on, at most length.
Result<QByteArray> contentBytes(
    platform::File &redo, qint64 contentOffset, qint64 contentSize, qint64 position, qint64 length)
{
    const qint64 available = std::clamp<qint64>(contentSize - position, 0, length);
    return platform::readExactly(redo, contentOffset + position, available);
}

/// True when the file is in a state that the interrupted rewriting can have left.
Result<bool> isInterrupted(platform::File &file, qint64 size, platform::File &redo, const RedoHeader &header)
{
    constexpr qint64 Chunk = 256 * 1024;
    const auto [smaller, larger] = std::minmax(header.oldSize, header.newSize);
    if (size < smaller || size > larger)
        return false;
    for (qint64 at = 0; at < size; at += Chunk) {
        const qint64 length = std::min(Chunk, size - at);
        const auto present = platform::readExactly(file, at, length);
        const auto oldBytes = contentBytes(redo, header.oldOffset(), header.oldSize, at, length);
        const auto newBytes = contentBytes(redo, header.newOffset(), header.newSize, at, length);
        for (const auto *bytes : {&present, &oldBytes, &newBytes}) {
            if (!*bytes)
                return tl::unexpected(bytes->error());
        }
        if (!isOldOrNew(*present, *oldBytes, *newBytes))
            return false;
    }
    return true;
}

struct OpenedFile
{
    QString path;
    std::unique_ptr<platform::File> file; ///< none when it was not found
    platform::FileInfo info;
};

Result<OpenedFile> openByInode(platform::FileSystem &fileSystem, const QString &path, quint64 inode, quint64 device)
{
    auto file = fileSystem.openUnlinked(path, platform::OpenMode::ReadWrite);
    if (!file) {
        const ErrorCode code = file.error().code;
        if (code == ErrorCode::NotFound || code == ErrorCode::NotAFile)
            return OpenedFile();
        return tl::unexpected(file.error());
    }
    const auto info = (*file)->info();
    if (!info)
        return tl::unexpected(info.error());
    if (info->inode != inode || info->device != device)
        return OpenedFile();
    return OpenedFile{path, std::move(*file), *info};
}

/// The file that a redo file belongs to: by its name, or, if it was renamed meanwhile, by its
/// inode.
Result<OpenedFile> openTarget(
    platform::FileSystem &fileSystem, const QString &folder, const RedoHeader &header, quint64 device)
{
    auto named = openByInode(fileSystem, platform::inFolder(folder, header.name), header.inode, device);
    if (!named || named->file)
        return named;
    const auto names = fileSystem.names(folder);
    if (!names)
        return tl::unexpected(names.error());
    for (const QString &name : *names) {
        const QString path = platform::inFolder(folder, name);
        const auto info = fileSystem.info(path);
        if (info && info->isFile && info->inode == header.inode && info->device == device)
            return openByInode(fileSystem, path, header.inode, device);
    }
    return OpenedFile();
}

/// Brings the file to its new content if the redo file still applies to it.
Result<void> rollForward(const OpenedFile &target, platform::File &redo, const RedoHeader &header)
{
    const auto interrupted = isInterrupted(*target.file, target.info.size, redo, header);
    if (!interrupted)
        return tl::unexpected(interrupted.error());
    if (!*interrupted)
        return {};
    const auto done = platform::sameBytes(redo, header.newOffset(), *target.file, 0, header.newSize);
    if (!done)
        return tl::unexpected(done.error());
    if (*done && target.info.size == header.newSize)
        return {};
    auto written = overwrite(*target.file, target.path, redo, header.newOffset(), header.newSize);
    if (written && header.keepModified)
        static_cast<void>(target.file->setModified(header.oldModified));
    return written;
}

/// The redo file, locked by us; no file when it is none of our business.
Result<OpenedFile> openRedo(platform::FileSystem &fileSystem, const QString &redoPath)
{
    auto file = fileSystem.openUnlinked(redoPath, platform::OpenMode::ReadWrite);
    if (!file) {
        const ErrorCode code = file.error().code;
        if (code == ErrorCode::NotFound || code == ErrorCode::NotAFile || code == ErrorCode::AccessDenied)
            return OpenedFile();
        return tl::unexpected(file.error());
    }
    const auto locked = (*file)->tryLock();
    if (!locked)
        return tl::unexpected(locked.error());
    if (!*locked)
        return failure(ErrorCode::ChangedMeanwhile, redoPath, QStringLiteral("another program is writing the file"));
    // Asked only now: its writer may have finished and removed it before the lock was ours.
    const auto info = (*file)->info();
    if (!info)
        return tl::unexpected(info.error());
    if (info->linkCount != 1)
        return OpenedFile();
    return OpenedFile{redoPath, std::move(*file), *info};
}

} // namespace

Result<bool> finishRedo(platform::FileSystem &fileSystem, const QString &redoPath, const QString &targetPath)
{
    const auto redo = openRedo(fileSystem, redoPath);
    if (!redo)
        return tl::unexpected(redo.error());
    if (!redo->file)
        return false;
    const bool isOwn = redo->info.owner == fileSystem.currentUser();
    const auto header = readRedo(*redo->file);
    if (!header)
        return tl::unexpected(header.error());

    if (*header) {
        const RedoHeader &found = **header;
        const quint64 device = redo->info.device;
        const auto target = targetPath.isEmpty() ? openTarget(fileSystem, platform::folderOf(redoPath), found, device)
                                                 : openByInode(fileSystem, targetPath, found.inode, device);
        if (!target)
            return tl::unexpected(target.error());
        const bool isTrusted = isOwn || (target->file && redo->info.owner == target->info.owner);
        if (!isTrusted || (!target->file && !targetPath.isEmpty()))
            return false;
        if (target->file) {
            if (auto finished = rollForward(*target, *redo->file, found); !finished)
                return tl::unexpected(finished.error());
        }
    } else if (!isOwn) {
        return false;
    }
    return discard(fileSystem, redoPath, *redo->file).map([] { return true; });
}

Result<void> rewriteUnderRedo(platform::FileSystem &fileSystem, const RewriteTarget &target, const NewContent &content,
    const WriteOptions &options)
{
    const QString folder = platform::folderOf(target.path);
    const QString redoPath = platform::inFolder(folder, redoName(target.info.inode));
    if (auto pending = finishRedo(fileSystem, redoPath, target.path); !pending)
        return tl::unexpected(pending.error());

    auto temporary = TemporaryFile::create(fileSystem, folder);
    if (!temporary)
        return tl::unexpected(temporary.error());
    const RedoHeader header{target.info.inode, content.size, target.info.size, target.info.modified,
        options.keepModified, platform::nameOf(target.path)};
    auto prepared = fillRedo(temporary->file(), header, target, content)
                        .and_then([&] { return expectUnchanged(target); })
                        .and_then([&] { return temporary->moveTo(redoPath); });
    if (!prepared)
        return prepared;

    const std::unique_ptr<platform::File> redo = temporary->release();
    if (auto synced = fileSystem.syncFolder(folder); !synced) {
        static_cast<void>(discard(fileSystem, redoPath, *redo)); // nothing was overwritten yet
        return synced;
    }
    auto written = overwrite(target.file, target.path, *redo, header.newOffset(), header.newSize);
    if (!written) {
        const auto undone = rollBack(fileSystem, target, header, redoPath, *redo);
        if (!undone)
            written.error().detail += QStringLiteral("; undoing it failed: ") + undone.error().detail;
        return written;
    }
    if (options.keepModified)
        static_cast<void>(target.file.setModified(target.info.modified));
    // Should it stay after all, then it finds the file as it should be and does nothing.
    static_cast<void>(discard(fileSystem, redoPath, *redo));
    return {};
}

} // namespace ravlin::storage
