// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/storage/redofile.h"

#include "core/platform/fileio.h"
#include "core/platform/path.h"
#include "core/storage/leftovers.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QIODevice>

#include <algorithm>

namespace ravlin::storage {
namespace {

constexpr quint64 HeaderMagic = 0x5261766c696e5265;  // "RavlinRe"
constexpr quint64 TrailerMagic = 0x5261766c696e4f6b; // "RavlinOk"
constexpr quint32 FormatVersion = 1;
constexpr auto DigestKind = QCryptographicHash::Blake2b_256;
constexpr qint64 TrailerSize = 8 + 32;
constexpr qint64 DigestChunk = 256 * 1024;

qint64 toNextBlock(qint64 offset)
{
    return (offset + AtomicBlockSize - 1) / AtomicBlockSize * AtomicBlockSize;
}

QByteArray encodeHeader(const RedoHeader &header)
{
    QByteArray block;
    QDataStream out(&block, QIODevice::WriteOnly);
    out.setVersion(QDataStream::Qt_6_0);
    out << HeaderMagic << FormatVersion << header.inode << header.newSize << header.oldSize << header.oldModified
        << header.keepModified << platform::encodePath(header.name);
    block.append(AtomicBlockSize - block.size(), '\0');
    return block;
}

std::optional<RedoHeader> decodeHeader(const QByteArray &block)
{
    QDataStream in(block);
    in.setVersion(QDataStream::Qt_6_0);
    quint64 magic = 0;
    quint32 version = 0;
    RedoHeader header;
    QByteArray name;
    in >> magic >> version;
    if (magic != HeaderMagic || version != FormatVersion)
        return std::nullopt;
    in >> header.inode >> header.newSize >> header.oldSize >> header.oldModified >> header.keepModified >> name;
    header.name = platform::decodePath(name);
    if (in.status() != QDataStream::Ok || !platform::isPlainName(header.name))
        return std::nullopt;
    return header;
}

Result<QByteArray> makeTrailer(platform::File &redo, qint64 trailerOffset)
{
    QCryptographicHash digest(DigestKind);
    for (qint64 offset = 0; offset < trailerOffset;) {
        const qint64 length = std::min(DigestChunk, trailerOffset - offset);
        const auto bytes = platform::readExactly(redo, offset, length);
        if (!bytes)
            return bytes;
        digest.addData(*bytes);
        offset += length;
    }
    QByteArray trailer;
    QDataStream(&trailer, QIODevice::WriteOnly) << TrailerMagic;
    return trailer + digest.result();
}

} // namespace

qint64 RedoHeader::newOffset() const
{
    return AtomicBlockSize;
}

qint64 RedoHeader::oldOffset() const
{
    // Block-aligned, so that file systems can share the blocks.
    return toNextBlock(newOffset() + newSize);
}

qint64 RedoHeader::trailerOffset() const
{
    return oldOffset() + oldSize;
}

Result<void> writeRedoHeader(platform::File &redo, const RedoHeader &header)
{
    return platform::writeAll(redo, encodeHeader(header), 0);
}

Result<void> writeRedoTrailer(platform::File &redo, const RedoHeader &header)
{
    // Or an empty old content would leave the gap before it outside the file.
    if (auto grown = redo.truncate(header.trailerOffset()); !grown)
        return grown;
    const auto trailer = makeTrailer(redo, header.trailerOffset());
    if (!trailer)
        return tl::unexpected(trailer.error());
    return platform::writeAll(redo, *trailer, header.trailerOffset());
}

Result<std::optional<RedoHeader>> readRedo(platform::File &redo)
{
    const auto info = redo.info();
    if (!info)
        return tl::unexpected(info.error());
    if (info->size < AtomicBlockSize + TrailerSize)
        return std::nullopt;
    const auto block = platform::readExactly(redo, 0, AtomicBlockSize);
    if (!block)
        return tl::unexpected(block.error());
    const auto header = decodeHeader(*block);
    // The sizes may be anything, so each is checked before they are added up.
    if (!header || header->newSize < 0 || header->newSize > info->size || header->oldSize < 0 ||
        header->oldSize > info->size || header->trailerOffset() + TrailerSize != info->size)
        return std::nullopt;
    const auto wanted = makeTrailer(redo, header->trailerOffset());
    const auto present = platform::readExactly(redo, header->trailerOffset(), TrailerSize);
    if (!wanted || !present)
        return tl::unexpected(wanted ? present.error() : wanted.error());
    if (*wanted != *present)
        return std::nullopt;
    return header;
}

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

/// Overwrites the file with a range of the redo file, syncs and verifies it.
Result<void> overwrite(platform::File &file, const QString &path, platform::File &redo, qint64 offset, qint64 size)
{
    return platform::copyAll(redo, offset, file, 0, size)
        .and_then([&] { return file.truncate(size); })
        .and_then([&] { return file.sync(); })
        .and_then([&] { return expectSame(platform::sameBytes(redo, offset, file, 0, size), path); });
}

/// Removes the redo file, or empties it if it cannot be removed.
Result<void> discard(platform::FileSystem &fileSystem, const QString &redoPath, platform::File &redo)
{
    const auto removed = fileSystem.remove(redoPath);
    if (removed || removed.error().code == ErrorCode::NotFound)
        return {};
    return redo.truncate(0);
}

/// Fills the redo file; only its name is missing then.
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

/// Restores the old content after a failure. If even that fails, the redo file stays, and recovery brings the new
/// content.
Result<void> rollBack(platform::FileSystem &fileSystem, const RewriteTarget &target, const RedoHeader &header,
    const QString &redoPath, platform::File &redo)
{
    const auto restored = overwrite(target.file, target.path, redo, header.oldOffset(), header.oldSize);
    if (!restored)
        return restored;
    static_cast<void>(target.file.setModified(header.oldModified)); // best effort
    return discard(fileSystem, redoPath, redo);
}

/// Whether each byte of a chunk of the file is that of the old or of the new content, as far as these reach.
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

/// At most length bytes from position on of a content inside the redo file.
Result<QByteArray> contentBytes(
    platform::File &redo, qint64 contentOffset, qint64 contentSize, qint64 position, qint64 length)
{
    const qint64 available = std::clamp<qint64>(contentSize - position, 0, length);
    return platform::readExactly(redo, contentOffset + position, available);
}

/// Whether the interrupted overwriting can have left the file in its state.
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
    std::unique_ptr<platform::File> file; ///< null if it was not found
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

/// The file that a redo file belongs to: by its name or, if it was renamed meanwhile, by its inode.
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

/// The redo file, locked by us; a null file if it does not concern us.
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
    // Only now: its writer may have finished and removed it before we had the lock.
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
    // If it stays after all, recovery finds the file as it should be and does nothing.
    static_cast<void>(discard(fileSystem, redoPath, *redo));
    return {};
}

} // namespace ravlin::storage
