// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/filesystem.h"

#include "core/platform/posix/exclusiverename.h"
#include "core/platform/posix/file.h"
#include "core/platform/posix/systemerror.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace ravlin::platform {
namespace {

/// A path as the system takes it. The system stops at a zero byte, so a path with one would name another file.
class NativePath
{
public:
    explicit NativePath(const QString &path) : m_bytes(encodePath(path)) {}

    bool isValid() const { return std::memchr(m_bytes.constData(), 0, static_cast<size_t>(m_bytes.size())) == nullptr; }
    const char *bytes() const { return m_bytes.constData(); }

private:
    QByteArray m_bytes;
};

class PosixFileSystem final : public FileSystem
{
public:
    Result<std::unique_ptr<File>> open(const QString &path, OpenMode mode) override;
    Result<std::unique_ptr<File>> openUnlinked(const QString &path, OpenMode mode) override;
    Result<std::unique_ptr<File>> createNew(const QString &path) override;
    Result<FileInfo> info(const QString &path) override;
    Result<QString> canonicalPath(const QString &path) override;
    Result<void> replace(const QString &from, const QString &to) override;
    Result<void> renameNew(const QString &from, const QString &to) override;
    Result<void> createFolder(const QString &path) override;
    Result<void> removeFolder(const QString &path) override;
    Result<void> remove(const QString &path) override;
    Result<void> setPermissions(const QString &path, quint32 permissions) override;
    Result<void> syncFolder(const QString &folder) override;
    Result<qint64> freeBytes(const QString &path) override;
    Result<std::vector<QString>> names(const QString &folder) override;
    quint32 currentUser() override { return ::geteuid(); }
    quint32 currentGroup() override { return ::getegid(); }
};

int accessFlags(OpenMode mode)
{
    return mode == OpenMode::Read ? O_RDONLY : O_RDWR;
}

Result<std::unique_ptr<File>> openFile(const QString &path, int flags)
{
    const NativePath native(path);
    if (!native.isValid())
        return systemError(EINVAL, path, "open");
    // O_NONBLOCK: opening a pipe must not wait for its other end. Plain files ignore it.
    const int descriptor =
        uninterrupted([&] { return ::open(native.bytes(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0600); });
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

/// Runs a system call on a path and turns its failure into an error value.
template <typename Call>
Result<void> callOnPath(const QString &path, const char *name, Call call)
{
    const NativePath native(path);
    if (!native.isValid())
        return systemError(EINVAL, path, name);
    if (uninterrupted([&] { return call(native.bytes()); }) != 0)
        return systemError(errno, path, name);
    return {};
}

Result<std::unique_ptr<File>> PosixFileSystem::open(const QString &path, OpenMode mode)
{
    return openFile(path, accessFlags(mode));
}

Result<std::unique_ptr<File>> PosixFileSystem::openUnlinked(const QString &path, OpenMode mode)
{
    return openFile(path, accessFlags(mode) | O_NOFOLLOW);
}

Result<std::unique_ptr<File>> PosixFileSystem::createNew(const QString &path)
{
    return openFile(path, O_RDWR | O_CREAT | O_EXCL);
}

Result<FileInfo> PosixFileSystem::info(const QString &path)
{
    struct stat status = {};
    return callOnPath(path, "stat", [&](const char *native) { return ::stat(native, &status); }).map([&] {
        return fileInfo(status);
    });
}

Result<QString> PosixFileSystem::canonicalPath(const QString &path)
{
    const NativePath native(path);
    if (!native.isValid())
        return systemError(EINVAL, path, "realpath");
    const std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(native.bytes(), nullptr), &std::free);
    if (!resolved)
        return systemError(errno, path, "realpath");
    return decodePath(resolved.get(), static_cast<qsizetype>(std::strlen(resolved.get())));
}

Result<void> PosixFileSystem::replace(const QString &from, const QString &to)
{
    const NativePath target(to);
    if (!target.isValid())
        return systemError(EINVAL, to, "rename");
    return callOnPath(from, "rename", [&](const char *native) { return std::rename(native, target.bytes()); });
}

Result<void> PosixFileSystem::renameNew(const QString &from, const QString &to)
{
    const NativePath source(from);
    const NativePath target(to);
    if (!source.isValid() || !target.isValid())
        return systemError(EINVAL, source.isValid() ? to : from, "rename");
    if (const int number = renameExclusively(source.bytes(), target.bytes()); number != 0)
        return systemError(number, number == EEXIST ? to : from, "rename");
    return {};
}

Result<void> PosixFileSystem::createFolder(const QString &path)
{
    return callOnPath(path, "mkdir", [](const char *native) { return ::mkdir(native, 0777); });
}

Result<void> PosixFileSystem::removeFolder(const QString &path)
{
    return callOnPath(path, "rmdir", [](const char *native) { return ::rmdir(native); });
}

Result<void> PosixFileSystem::remove(const QString &path)
{
    return callOnPath(path, "unlink", [](const char *native) { return ::unlink(native); });
}

Result<void> PosixFileSystem::setPermissions(const QString &path, quint32 permissions)
{
    return callOnPath(path, "chmod", [&](const char *native) { return ::chmod(native, permissions & 07777U); });
}

Result<void> PosixFileSystem::syncFolder(const QString &folder)
{
    const NativePath native(folder);
    if (!native.isValid())
        return systemError(EINVAL, folder, "open");
    const int descriptor = uninterrupted([&] { return ::open(native.bytes(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
    if (descriptor < 0)
        return systemError(errno, folder, "open");
    const int outcome = uninterrupted([&] { return ::fsync(descriptor); });
    const int number = errno;
    ::close(descriptor);
    // EINVAL: a file system that needs no such call, for example one over the network.
    if (outcome != 0 && number != EINVAL)
        return systemError(number, folder, "fsync");
    return {};
}

Result<qint64> PosixFileSystem::freeBytes(const QString &path)
{
    struct statvfs status = {};
    const auto asked = callOnPath(path, "statvfs", [&](const char *native) { return ::statvfs(native, &status); });
    if (!asked)
        return tl::unexpected(asked.error());
    quint64 bytes = 0;
    const bool tooMany = __builtin_mul_overflow(quint64(status.f_bavail), quint64(status.f_frsize), &bytes);
    constexpr qint64 Most = std::numeric_limits<qint64>::max();
    return tooMany || bytes > quint64(Most) ? Most : qint64(bytes);
}

Result<std::vector<QString>> PosixFileSystem::names(const QString &folder)
{
    const NativePath native(folder);
    if (!native.isValid())
        return systemError(EINVAL, folder, "opendir");
    const std::unique_ptr<DIR, int (*)(DIR *)> stream(::opendir(native.bytes()), &::closedir);
    if (!stream)
        return systemError(errno, folder, "opendir");
    std::vector<QString> names;
    while (true) {
        errno = 0;
        const dirent *const entry = ::readdir(stream.get());
        if (entry == nullptr)
            break;
        const char *const name = entry->d_name;
        if (std::strcmp(name, ".") != 0 && std::strcmp(name, "..") != 0)
            names.push_back(decodePath(name, static_cast<qsizetype>(std::strlen(name))));
    }
    if (errno != 0)
        return systemError(errno, folder, "readdir");
    return names;
}

} // namespace

FileSystem &FileSystem::native()
{
    static PosixFileSystem fileSystem; // without state
    return fileSystem;
}

} // namespace ravlin::platform
