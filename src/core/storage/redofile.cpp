// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/storage/redofile.h"

#include "core/platform/fileio.h"
#include "core/platform/namecheck.h"
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
Result<void> discard(platform::HeldFolder &folder, const QString &redoName, platform::File &redo)
{
    const auto removed = folder.remove(redoName);
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
        .and_then([&] { return expectSame(holdsContent(redo, newOffset, original, content), target.place.path()); })
        .and_then([&] {
            return expectSame(platform::sameBytes(original, 0, redo, oldOffset, header.oldSize), target.place.path());
        })
        .and_then([&] { return writeRedoTrailer(redo, header); })
        .and_then([&] { return redo.sync(); });
}

Result<void> expectUnchanged(const RewriteTarget &target)
{
    const auto now = target.file.info();
    if (!now)
        return tl::unexpected(now.error());
    if (now->size != target.info.size || now->modified != target.info.modified)
        return failure(ErrorCode::ChangedMeanwhile, target.place.path(),
            QStringLiteral("the file was changed while its new content was prepared"));
    return {};
}

/// Restores the old content after a failure. If even that fails, the redo file stays, and recovery brings the new
/// content.
Result<void> rollBack(
    const RewriteTarget &target, const RedoHeader &header, const QString &redoName, platform::File &redo)
{
    const auto restored = overwrite(target.file, target.place.path(), redo, header.oldOffset(), header.oldSize);
    if (!restored)
        return restored;
    static_cast<void>(target.file.setModified(header.oldModified)); // best effort
    return discard(*target.place.folder, redoName, redo);
}

/// Whether each byte of a chunk of the file is that of the old or of the new content, as far as these reach. Behind the
/// end of one of them it may be zero: the file has grown and is not filled yet, or is about to be cut, and the rest of
/// its last block was cleared before its size.
bool isOldOrNew(const QByteArray &present, const QByteArray &oldBytes, const QByteArray &newBytes)
{
    if (present == newBytes || present == oldBytes)
        return true;
    for (qsizetype i = 0; i < present.size(); ++i) {
        const bool isNew = i < newBytes.size() ? present.at(i) == newBytes.at(i) : present.at(i) == '\0';
        const bool isOld = i < oldBytes.size() ? present.at(i) == oldBytes.at(i) : present.at(i) == '\0';
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
    QString name;
    std::unique_ptr<platform::File> file; ///< null if it was not found
    platform::FileInfo info;
};

/// mode: Read finds files that we may not change.
Result<OpenedFile> openByInode(
    platform::HeldFolder &folder, const QString &name, quint64 inode, quint64 device, platform::OpenMode mode)
{
    auto file = folder.openFile(name, mode);
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
    return OpenedFile{name, std::move(*file), *info};
}

/// The file that a redo file belongs to, open for reading: by its name or, if it was renamed meanwhile, by its inode.
Result<OpenedFile> openTarget(platform::HeldFolder &folder, const RedoHeader &header, quint64 device)
{
    constexpr auto Read = platform::OpenMode::Read;
    auto named = openByInode(folder, header.name, header.inode, device, Read);
    if (!named || named->file)
        return named;
    const auto names = folder.names();
    if (!names)
        return tl::unexpected(names.error());
    for (const QString &name : *names) {
        const auto node = folder.node(name);
        const bool isIt = node && node->kind == platform::NodeKind::File && node->info.inode == header.inode &&
                          node->info.device == device;
        if (isIt)
            return openByInode(folder, name, header.inode, device, Read);
    }
    return OpenedFile();
}

/// What a redo file's target holds.
enum class TargetState
{
    Old,
    New,
    Mixed,   ///< the overwriting was interrupted
    Foreign, ///< it was changed since
};

Result<TargetState> stateOf(const OpenedFile &target, platform::File &redo, const RedoHeader &header)
{
    const auto holds = [&](qint64 offset, qint64 size) -> Result<bool> {
        return target.info.size == size ? platform::sameBytes(redo, offset, *target.file, 0, size) : false;
    };
    const auto isNew = holds(header.newOffset(), header.newSize);
    if (!isNew || *isNew)
        return isNew.map([](bool) { return TargetState::New; });
    const auto isOld = holds(header.oldOffset(), header.oldSize);
    if (!isOld || *isOld)
        return isOld.map([](bool) { return TargetState::Old; });
    return isInterrupted(*target.file, target.info.size, redo, header).map([](bool interrupted) {
        return interrupted ? TargetState::Mixed : TargetState::Foreign;
    });
}

/// Brings the file to its new content.
Result<void> rollForward(
    platform::HeldFolder &folder, const OpenedFile &found, platform::File &redo, const RedoHeader &header)
{
    const auto target = openByInode(folder, found.name, header.inode, found.info.device, platform::OpenMode::ReadWrite);
    if (!target)
        return tl::unexpected(target.error());
    if (!target->file)
        return failure(ErrorCode::ChangedMeanwhile, platform::inFolder(folder.path(), found.name),
            QStringLiteral("the file was exchanged meanwhile"));
    const QString path = platform::inFolder(folder.path(), found.name);
    auto written = overwrite(*target->file, path, redo, header.newOffset(), header.newSize);
    if (written && header.keepModified)
        static_cast<void>(target->file->setModified(header.oldModified));
    return written;
}

/// The redo file, locked by us; a null file if it does not concern us.
Result<OpenedFile> openRedo(platform::HeldFolder &folder, const QString &redoName)
{
    auto file = folder.openFile(redoName, platform::OpenMode::ReadWrite);
    if (!file) {
        const ErrorCode code = file.error().code;
        const bool isNotForUs = code == ErrorCode::NotFound || code == ErrorCode::NotAFile ||
                                code == ErrorCode::AccessDenied || code == ErrorCode::ReadOnlyDrive;
        return isNotForUs ? Result<OpenedFile>(OpenedFile()) : tl::unexpected(file.error());
    }
    const auto locked = (*file)->tryLock();
    if (!locked)
        return tl::unexpected(locked.error());
    // Whoever cannot make it ours can at least not lock us out.
    const auto isOurs = (*file)->isPrivate();
    const auto info = (*file)->info();
    if (!isOurs || !info)
        return tl::unexpected(isOurs ? info.error() : isOurs.error());
    if (!*isOurs)
        return OpenedFile();
    if (!*locked)
        return failure(ErrorCode::ChangedMeanwhile, platform::inFolder(folder.path(), redoName),
            QStringLiteral("another program is writing the file"));
    return OpenedFile{redoName, std::move(*file), *info};
}

/// Finishes the overwriting of an own file. Gone if the redo file has done its duty.
Result<RedoState> finishTarget(
    platform::HeldFolder &folder, const OpenedFile &target, bool isOwn, platform::File &redo, const RedoHeader &header)
{
    const auto state = stateOf(target, redo, header);
    if (!state)
        return tl::unexpected(state.error());
    if (*state == TargetState::Foreign)
        return RedoState::Kept;
    if (*state == TargetState::New || (*state == TargetState::Old && !isOwn))
        return RedoState::Gone;
    if (!isOwn)
        return RedoState::Pending;
    return rollForward(folder, target, redo, header).map([] { return RedoState::Gone; });
}

} // namespace

Result<RedoState> finishRedo(
    platform::FileSystem &fileSystem, platform::HeldFolder &folder, const QString &redoName, const QString &targetName)
{
    const auto redo = openRedo(folder, redoName);
    if (!redo)
        return tl::unexpected(redo.error());
    if (!redo->file)
        return RedoState::None;
    const auto header = readRedo(*redo->file);
    if (!header)
        return tl::unexpected(header.error());
    const auto discarded = [&] { return discard(folder, redoName, *redo->file).map([] { return RedoState::Gone; }); };
    if (!*header)
        return discarded();

    const RedoHeader &found = **header;
    const quint64 device = redo->info.device;
    const auto target = targetName.isEmpty()
                            ? openTarget(folder, found, device)
                            : openByInode(folder, targetName, found.inode, device, platform::OpenMode::Read);
    if (!target)
        return tl::unexpected(target.error());
    if (!platform::isMp3Name(target->file ? target->name : found.name))
        return RedoState::None; // we make them for no others
    if (!target->file)
        return targetName.isEmpty() ? RedoState::Kept : RedoState::None;
    const bool isOwn = target->info.owner == fileSystem.currentUser();
    const auto finished = finishTarget(folder, *target, isOwn, *redo->file, found);
    return finished && *finished == RedoState::Gone ? discarded() : finished;
}

Result<RedoState> finishRedo(platform::FileSystem &fileSystem, const QString &folder, const QString &redoName)
{
    return fileSystem.openFolder(folder).and_then([&](const std::shared_ptr<platform::HeldFolder> &held) {
        return isRedoName(redoName) ? finishRedo(fileSystem, *held, redoName) : RedoState::None;
    });
}

Result<void> rewriteUnderRedo(platform::FileSystem &fileSystem, const RewriteTarget &target, const NewContent &content,
    const WriteOptions &options)
{
    const auto &[folder, name] = target.place;
    const QString redo = redoName(target.info.inode);
    const auto earlier = finishRedo(fileSystem, *folder, redo, name);
    if (!earlier)
        return tl::unexpected(earlier.error());
    if (*earlier == RedoState::Pending)
        return failure(ErrorCode::AccessDenied, target.place.path(),
            QStringLiteral("an interrupted save of another user's file has to be finished first"));
    if (*earlier == RedoState::Kept)
        return failure(
            ErrorCode::Interrupted, target.place.path(), QStringLiteral("%1 holds its former contents").arg(redo));

    auto temporary = TemporaryFile::create(folder, options.journal);
    if (!temporary)
        return tl::unexpected(temporary.error());
    const RedoHeader header{
        target.info.inode, content.size, target.info.size, target.info.modified, options.keepModified, name};
    auto prepared = fillRedo(temporary->file(), header, target, content)
                        .and_then([&] { return expectUnchanged(target); })
                        .and_then([&] { return temporary->moveTo(redo); });
    if (!prepared)
        return prepared;

    const std::unique_ptr<platform::File> held = temporary->release();
    if (auto synced = folder->sync(); !synced) {
        static_cast<void>(discard(*folder, redo, *held)); // nothing was overwritten yet
        return synced;
    }
    auto written = overwrite(target.file, target.place.path(), *held, header.newOffset(), header.newSize);
    if (!written) {
        const auto undone = rollBack(target, header, redo, *held);
        if (!undone)
            return failure(ErrorCode::HalfWritten, target.place.path(),
                written.error().detail + QStringLiteral("; undoing it failed: ") + undone.error().detail);
        return written;
    }
    if (options.keepModified || options.modified)
        static_cast<void>(target.file.setModified(options.modified.value_or(target.info.modified)));
    // If it stays after all, recovery finds the file as it should be and does nothing.
    static_cast<void>(discard(*folder, redo, *held));
    return {};
}

} // namespace ravlin::storage
