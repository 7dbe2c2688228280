// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/windows/file.h"

#include "core/platform/windows/relative.h"

#include <algorithm>

#include <winioctl.h>

namespace ravlin::platform {
namespace {

constexpr qint64 HundredNanoseconds = 100;
constexpr qint64 EpochDifference = 116'444'736'000'000'000; ///< from 1601 to 1970 in steps of 100 ns
constexpr qint64 CopyBufferSize = 1024 * 1024;
constexpr size_t LargestTransfer = 0x4000'0000; ///< bytes in one call, which counts in 32 bits
constexpr unsigned HalfBits = 32;
/// The byte to lock: beyond the end of any file, since the system keeps others from reading and writing a locked one.
constexpr DWORD LockOffsetHigh = 0x7fff'fff0;

OVERLAPPED position(qint64 offset)
{
    OVERLAPPED place{};
    place.Offset = static_cast<DWORD>(static_cast<quint64>(offset));
    place.OffsetHigh = static_cast<DWORD>(static_cast<quint64>(offset) >> HalfBits);
    return place;
}

} // namespace

WindowsFile::WindowsFile(Handle handle, QString path, const FileInfo &atOpening)
    : m_handle(std::move(handle)), m_path(std::move(path)), m_atOpening(atOpening)
{
}

Result<qint64> WindowsFile::readAt(std::span<char> buffer, qint64 offset)
{
    m_atOpening.reset();
    size_t done = 0;
    while (done < buffer.size()) {
        OVERLAPPED place = position(offset + static_cast<qint64>(done));
        const auto wanted = static_cast<DWORD>(std::min(buffer.size() - done, LargestTransfer));
        DWORD got = 0;
        if (!::ReadFile(m_handle.get(), buffer.data() + done, wanted, &got, &place)) {
            if (::GetLastError() == ERROR_HANDLE_EOF)
                break;
            return lastError(m_path, "ReadFile");
        }
        if (got == 0)
            break;
        done += got;
    }
    return static_cast<qint64>(done);
}

Result<qint64> WindowsFile::writeAt(std::span<const char> bytes, qint64 offset)
{
    m_atOpening.reset();
    if (bytes.empty())
        return 0;
    OVERLAPPED place = position(offset);
    const auto wanted = static_cast<DWORD>(std::min(bytes.size(), LargestTransfer));
    DWORD written = 0;
    if (!::WriteFile(m_handle.get(), bytes.data(), wanted, &written, &place))
        return lastError(m_path, "WriteFile");
    if (written == 0)
        return systemError(ERROR_WRITE_FAULT, m_path, "WriteFile");
    return written;
}

Result<void> WindowsFile::truncate(qint64 size)
{
    m_atOpening.reset();
    FILE_END_OF_FILE_INFO end{};
    end.EndOfFile.QuadPart = size;
    if (!::SetFileInformationByHandle(m_handle.get(), FileEndOfFileInfo, &end, sizeof end))
        return lastError(m_path, "SetFileInformationByHandle");
    return {};
}

Result<void> WindowsFile::sync()
{
    if (!::FlushFileBuffers(m_handle.get()))
        return lastError(m_path, "FlushFileBuffers");
    return {};
}

Result<FileInfo> WindowsFile::info()
{
    if (m_atOpening) {
        const FileInfo atOpening = *m_atOpening;
        m_atOpening.reset();
        return atOpening;
    }
    return infoOf(m_handle.get(), m_path);
}

Result<FileIdentity> WindowsFile::identity()
{
    const auto now = infoOf(m_handle.get(), m_path);
    if (!now)
        return tl::unexpected(now.error());
    FileIdentity identity{now->device, now->inode, 0};
    FILE_BASIC_INFO basic = {};
    if (::GetFileInformationByHandleEx(m_handle.get(), FileBasicInfo, &basic, sizeof basic) != 0)
        identity.born = (basic.CreationTime.QuadPart - EpochDifference) * HundredNanoseconds;
    return identity;
}

Result<qint64> WindowsFile::copyFrom(File &source, qint64 sourceOffset, qint64 offset, qint64 length)
{
    m_atOpening.reset();
    const qint64 wanted = std::clamp<qint64>(length, 0, CopyBufferSize);
    const auto buffer = std::make_unique_for_overwrite<char[]>(static_cast<size_t>(wanted));
    const auto got = source.readAt({buffer.get(), static_cast<size_t>(wanted)}, sourceOffset);
    if (!got || *got == 0)
        return got;
    return writeAt({buffer.get(), static_cast<size_t>(*got)}, offset);
}

/// The other file's handle; none for a file of another kind, which then gives nothing.
HANDLE WindowsFile::handleOf(File &file)
{
    const auto *const native = dynamic_cast<WindowsFile *>(&file);
    return native == nullptr ? nullptr : native->m_handle.get();
}

Result<void> WindowsFile::takeAttributes(File &source)
{
    m_atOpening.reset();
    void *const from = handleOf(source);
    return checkEncryption(from, m_handle.get(), m_path).and_then([&] {
        return copyStreams(from, m_handle.get(), m_path);
    });
}

Result<void> WindowsFile::takePermissions(File &source)
{
    m_atOpening.reset();
    void *const from = handleOf(source);
    return copyAccessList(from, m_handle.get(), m_path).and_then([&] {
        return copyBasics(from, m_handle.get(), TakeTimes::Creation, m_path);
    });
}

void WindowsFile::takeTimes(File &source)
{
    m_atOpening.reset();
    FILE_BASIC_INFO wanted{};
    if (!::GetFileInformationByHandleEx(handleOf(source), FileBasicInfo, &wanted, sizeof wanted))
        return;
    wanted.ChangeTime.QuadPart = 0; // zero leaves a time or the attributes as they are
    wanted.FileAttributes = 0;
    ::SetFileInformationByHandle(m_handle.get(), FileBasicInfo, &wanted, sizeof wanted);
}

Result<void> WindowsFile::setPermissions(quint32 permissions)
{
    constexpr quint32 OwnerMayWrite = 0200;
    m_atOpening.reset();
    // This one may be open for reading only.
    const Handle changed = openIn(m_handle.get(), {}, {FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES});
    if (!changed || !setReadOnly(changed.get(), (permissions & OwnerMayWrite) == 0))
        return lastError(m_path, "SetFileInformationByHandle");
    return {};
}

Result<void> WindowsFile::setModified(qint64 nanoseconds)
{
    m_atOpening.reset();
    FILE_BASIC_INFO basic{}; // zero leaves a time or the attributes as they are
    basic.LastWriteTime.QuadPart = nanoseconds / HundredNanoseconds + EpochDifference;
    if (!::SetFileInformationByHandle(m_handle.get(), FileBasicInfo, &basic, sizeof basic))
        return lastError(m_path, "SetFileInformationByHandle");
    return {};
}

void WindowsFile::forgetCached()
{
    // Opening a file without buffering makes the system write and drop what the cache has of it.
    openIn(m_handle.get(), {}, {GENERIC_READ, FILE_NO_INTERMEDIATE_BUFFERING});
}

Result<bool> WindowsFile::isPrivate()
{
    return isPrivateFile(m_handle.get(), m_path);
}

Result<bool> WindowsFile::tryLock()
{
    m_atOpening.reset(); // whether the file is still there counts from the lock on
    OVERLAPPED place{};
    place.OffsetHigh = LockOffsetHigh;
    if (::LockFileEx(m_handle.get(), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place))
        return true;
    const DWORD number = ::GetLastError();
    if (number == ERROR_LOCK_VIOLATION || number == ERROR_IO_PENDING)
        return false;
    return systemError(number, m_path, "LockFileEx");
}

Result<std::unique_ptr<File>> openPlainFile(const QString &path, OpenMode mode)
{
    const NativePath native(path);
    if (!native.isValid())
        return systemError(ERROR_INVALID_NAME, path, "CreateFileW");
    const DWORD access = mode == OpenMode::Read ? GENERIC_READ : GENERIC_READ | GENERIC_WRITE;
    Handle handle = openExisting(native, access);
    if (!handle) {
        const DWORD number = ::GetLastError();
        // Some folders cannot be opened for reading and none for writing; report them as folders all the same.
        const Handle looked = openExisting(native, FILE_READ_ATTRIBUTES);
        const auto info = looked ? infoOf(looked.get(), path) : lastError(path, "CreateFileW");
        if (info && info->isFolder)
            return tl::unexpected(Error{ErrorCode::NotAFile, path, QStringLiteral("not a plain file")});
        return systemError(number, path, "CreateFileW");
    }
    return fileBehind(std::move(handle), path);
}

Result<std::unique_ptr<File>> fileBehind(Handle handle, const QString &path)
{
    const auto info = infoOf(handle.get(), path);
    if (!info || !info->isFile)
        return tl::unexpected(Error{ErrorCode::NotAFile, path, QStringLiteral("not a plain file")});
    return std::make_unique<WindowsFile>(std::move(handle), path, *info);
}

} // namespace ravlin::platform
