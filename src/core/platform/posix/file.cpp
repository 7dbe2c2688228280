// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/posix/file.h"

#include "core/platform/posix/metadata.h"
#include "core/platform/posix/systemerror.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

namespace ravlin::platform {
namespace {

constexpr qint64 NanosecondsPerSecond = 1'000'000'000;
constexpr qint64 CopyBufferSize = 1024 * 1024;
constexpr qint64 LargestTransfer = 0x7ffff000; ///< the most that Linux moves in one call

/// copy_file_range does not support every pair of files; reading and writing does.
bool needsPlainCopy(int number)
{
    return number == EXDEV || number == ENOSYS || number == EOPNOTSUPP || number == EINVAL || number == EPERM ||
           number == EBADF;
}

} // namespace

FileInfo fileInfo(const struct stat &status)
{
    FileInfo info;
    constexpr qint64 BlockSize = 512; // of st_blocks, whatever the file system's own is
    info.size = status.st_size;
    info.onDisk = status.st_blocks * BlockSize;
    info.modified = status.st_mtim.tv_sec * NanosecondsPerSecond + status.st_mtim.tv_nsec;
    info.changed = status.st_ctim.tv_sec * NanosecondsPerSecond + status.st_ctim.tv_nsec;
    info.inode = status.st_ino;
    info.device = status.st_dev;
    info.permissions = status.st_mode & 07777U;
    info.linkCount = static_cast<quint32>(status.st_nlink);
    info.owner = status.st_uid;
    info.group = status.st_gid;
    info.isFile = S_ISREG(status.st_mode);
    info.isFolder = S_ISDIR(status.st_mode);
    return info;
}

NodeKind kindOfMode(quint32 mode)
{
    if (S_ISREG(mode))
        return NodeKind::File;
    if (S_ISDIR(mode))
        return NodeKind::Folder;
    return S_ISLNK(mode) ? NodeKind::Link : NodeKind::Other;
}

Result<std::unique_ptr<File>> openPlainFile(int folder, const char *name, int flags, const QString &path)
{
    constexpr mode_t OwnerOnly = 0600;
    // O_NONBLOCK: opening a pipe must not wait for its other end. Plain files ignore it.
    const int descriptor =
        uninterrupted([&] { return ::openat(folder, name, flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, OwnerOnly); });
    if (descriptor < 0)
        return systemError(errno, path, "open");
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0) {
        const int number = errno;
        ::close(descriptor);
        return systemError(number, path, "fstat");
    }
    if (!S_ISREG(status.st_mode)) {
        ::close(descriptor);
        return tl::unexpected(Error{ErrorCode::NotAFile, path, QStringLiteral("not a plain file")});
    }
    return std::make_unique<PosixFile>(descriptor, path, fileInfo(status));
}

PosixFile::PosixFile(int descriptor, QString path, const FileInfo &atOpening)
    : m_descriptor(descriptor), m_path(std::move(path)), m_atOpening(atOpening)
{
}

PosixFile::~PosixFile()
{
    ::close(m_descriptor);
}

Result<qint64> PosixFile::readAt(std::span<char> buffer, qint64 offset)
{
    m_atOpening.reset();
    size_t done = 0;
    while (done < buffer.size()) {
        const ssize_t got = uninterrupted([&] {
            return ::pread(
                m_descriptor, buffer.data() + done, buffer.size() - done, offset + static_cast<qint64>(done));
        });
        if (got < 0)
            return systemError(errno, m_path, "pread");
        if (got == 0)
            break;
        done += static_cast<size_t>(got);
    }
    return static_cast<qint64>(done);
}

Result<qint64> PosixFile::writeAt(std::span<const char> bytes, qint64 offset)
{
    m_atOpening.reset();
    if (bytes.empty())
        return 0;
    const ssize_t written = uninterrupted([&] { return ::pwrite(m_descriptor, bytes.data(), bytes.size(), offset); });
    if (written < 0)
        return systemError(errno, m_path, "pwrite");
    if (written == 0)
        return systemError(EIO, m_path, "pwrite");
    return written;
}

Result<void> PosixFile::truncate(qint64 size)
{
    m_atOpening.reset();
    if (uninterrupted([&] { return ::ftruncate(m_descriptor, size); }) != 0)
        return systemError(errno, m_path, "ftruncate");
    return {};
}

Result<void> PosixFile::sync()
{
    // Not fdatasync: when the file replaces another, its owner, mode and attributes have to be on the disk too.
    if (uninterrupted([&] { return ::fsync(m_descriptor); }) != 0)
        return systemError(errno, m_path, "fsync");
    return {};
}

Result<FileInfo> PosixFile::info()
{
    if (m_atOpening) {
        const FileInfo atOpening = *m_atOpening;
        m_atOpening.reset();
        return atOpening;
    }
    struct stat status = {};
    if (::fstat(m_descriptor, &status) != 0)
        return systemError(errno, m_path, "fstat");
    return fileInfo(status);
}

Result<FileIdentity> PosixFile::identity()
{
    struct statx status = {};
    if (::statx(m_descriptor, "", AT_EMPTY_PATH, STATX_INO | STATX_BTIME, &status) != 0)
        return systemError(errno, m_path, "statx");
    FileIdentity identity{0, status.stx_ino, 0};
    if ((status.stx_mask & STATX_BTIME) != 0)
        identity.born = status.stx_btime.tv_sec * NanosecondsPerSecond + status.stx_btime.tv_nsec;
    // Most file systems make this number from their UUID.
    struct statfs volume = {};
    if (::fstatfs(m_descriptor, &volume) == 0)
        std::memcpy(&identity.volume, &volume.f_fsid, std::min(sizeof identity.volume, sizeof volume.f_fsid));
    return identity;
}

Result<qint64> PosixFile::copyFrom(File &source, qint64 sourceOffset, qint64 offset, qint64 length)
{
    m_atOpening.reset();
    const auto *const native = dynamic_cast<PosixFile *>(&source);
    if (native == nullptr)
        return copyThroughMemory(source, sourceOffset, offset, length);
    off_t from = sourceOffset;
    off_t to = offset;
    const auto wanted = static_cast<size_t>(std::clamp<qint64>(length, 0, LargestTransfer));
    const ssize_t copied =
        uninterrupted([&] { return ::copy_file_range(native->m_descriptor, &from, m_descriptor, &to, wanted, 0); });
    if (copied > 0)
        return copied;
    if (copied < 0 && !needsPlainCopy(errno))
        return systemError(errno, m_path, "copy_file_range");
    // Some file systems return 0 before the end of the source; only reading finds the end.
    return copyThroughMemory(source, sourceOffset, offset, length);
}

Result<qint64> PosixFile::copyThroughMemory(File &source, qint64 sourceOffset, qint64 offset, qint64 length)
{
    const qint64 wanted = std::clamp<qint64>(length, 0, CopyBufferSize);
    const auto buffer = std::make_unique_for_overwrite<char[]>(static_cast<size_t>(wanted));
    const auto got = source.readAt({buffer.get(), static_cast<size_t>(wanted)}, sourceOffset);
    if (!got || *got == 0)
        return got;
    return writeAt({buffer.get(), static_cast<size_t>(*got)}, offset);
}

/// The other file's descriptor, or -1.
int PosixFile::descriptorOf(File &file)
{
    const auto *const native = dynamic_cast<PosixFile *>(&file);
    return native == nullptr ? -1 : native->m_descriptor;
}

Result<void> PosixFile::takeOwner(File &source)
{
    m_atOpening.reset();
    return copyOwner(descriptorOf(source), m_descriptor, m_path);
}

Result<void> PosixFile::takeAttributes(File &source)
{
    m_atOpening.reset();
    return copyAttributes(descriptorOf(source), m_descriptor, m_path);
}

Result<void> PosixFile::takePermissions(File &source)
{
    m_atOpening.reset();
    return copyPermissions(descriptorOf(source), m_descriptor, m_path);
}

void PosixFile::takeTimes(File &source)
{
    m_atOpening.reset();
    static_cast<void>(copyTimes(descriptorOf(source), m_descriptor, m_path));
}

Result<void> PosixFile::setPermissions(quint32 permissions)
{
    m_atOpening.reset();
    if (uninterrupted([&] { return ::fchmod(m_descriptor, permissions & 07777U); }) != 0)
        return systemError(errno, m_path, "fchmod");
    return {};
}

void PosixFile::forgetCached()
{
    ::posix_fadvise(m_descriptor, 0, 0, POSIX_FADV_DONTNEED);
}

Result<bool> PosixFile::isPrivate()
{
    return isPrivateFile(m_descriptor, m_path);
}

Result<void> PosixFile::setModified(qint64 nanoseconds)
{
    m_atOpening.reset();
    qint64 seconds = nanoseconds / NanosecondsPerSecond;
    qint64 rest = nanoseconds % NanosecondsPerSecond;
    if (rest < 0) { // before 1970
        --seconds;
        rest += NanosecondsPerSecond;
    }
    const timespec times[2] = {{0, UTIME_OMIT}, {seconds, rest}};
    if (::futimens(m_descriptor, times) != 0)
        return systemError(errno, m_path, "futimens");
    return {};
}

Result<bool> PosixFile::tryLock()
{
    m_atOpening.reset(); // whether the file is still there counts from the lock on
    if (uninterrupted([&] { return ::flock(m_descriptor, LOCK_EX | LOCK_NB); }) == 0)
        return true;
    if (errno == EWOULDBLOCK)
        return false;
    return systemError(errno, m_path, "flock");
}

} // namespace ravlin::platform
