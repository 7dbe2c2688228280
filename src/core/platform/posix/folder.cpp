// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/folder.h"

#include "core/platform/posix/file.h"
#include "core/platform/posix/systemerror.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

namespace ravlin::platform {
namespace {

class PosixFolder final : public Folder
{
public:
    PosixFolder(DIR *stream, QString path, const struct stat &status)
        : m_stream(stream), m_path(std::move(path)), m_identity(status.st_dev, status.st_ino)
    {
    }
    ~PosixFolder() override { ::closedir(m_stream); }
    PosixFolder(const PosixFolder &) = delete;
    PosixFolder &operator=(const PosixFolder &) = delete;

    Result<std::vector<FolderEntry>> entries(const std::stop_token &stop) override;
    Result<bool> hasVisibleSubfolder() override;
    Result<FileInfo> info(const QString &name) override;
    Result<std::unique_ptr<File>> openFile(const QString &name) override;
    std::pair<quint64, quint64> identity() const override { return m_identity; }

private:
    EntryKind kindOf(const dirent &entry) const;
    /// Hands every entry but "." and ".." to visitor until that returns false.
    template <typename Visitor>
    Result<void> visit(Visitor visitor);

    DIR *const m_stream;
    const QString m_path;
    const std::pair<quint64, quint64> m_identity;
};

EntryKind PosixFolder::kindOf(const dirent &entry) const
{
    if (entry.d_type == DT_REG)
        return EntryKind::File;
    if (entry.d_type == DT_DIR)
        return EntryKind::Folder;
    if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN)
        return EntryKind::Other;
    struct stat status
    {
    };
    if (::fstatat(::dirfd(m_stream), entry.d_name, &status, 0) != 0)
        return EntryKind::Other; // a link that leads nowhere
    return S_ISREG(status.st_mode) ? EntryKind::File : S_ISDIR(status.st_mode) ? EntryKind::Folder : EntryKind::Other;
}

template <typename Visitor>
Result<void> PosixFolder::visit(Visitor visitor)
{
    ::rewinddir(m_stream);
    for (;;) {
        errno = 0;
        // Each PosixFolder has a stream of its own and this is its only reader.
        const dirent *entry = ::readdir(m_stream); // NOLINT(concurrency-mt-unsafe)
        if (!entry && errno != 0)
            return systemError(errno, m_path, "readdir");
        if (!entry)
            return {};
        const bool isDots = std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0;
        if (!isDots && !visitor(*entry))
            return {};
    }
}

Result<std::vector<FolderEntry>> PosixFolder::entries(const std::stop_token &stop)
{
    std::vector<FolderEntry> found;
    const Result<void> visited = visit([&](const dirent &entry) {
        if (stop.stop_requested())
            return false;
        const char *name = entry.d_name;
        found.push_back({decodePath(name, static_cast<qsizetype>(std::strlen(name))), kindOf(entry), name[0] == '.'});
        return true;
    });
    if (!visited)
        return tl::unexpected(visited.error());
    return found;
}

Result<bool> PosixFolder::hasVisibleSubfolder()
{
    bool found = false;
    const Result<void> visited = visit([&](const dirent &entry) {
        found = entry.d_name[0] != '.' && kindOf(entry) == EntryKind::Folder;
        return !found;
    });
    if (!visited)
        return tl::unexpected(visited.error());
    return found;
}

Result<FileInfo> PosixFolder::info(const QString &name)
{
    struct stat status
    {
    };
    if (::fstatat(::dirfd(m_stream), encodePath(name).constData(), &status, 0) != 0)
        return systemError(errno, m_path + name, "fstatat");
    return fileInfo(status);
}

Result<std::unique_ptr<File>> PosixFolder::openFile(const QString &name)
{
    const QByteArray native = encodePath(name);
    const int descriptor = uninterrupted(
        [&] { return ::openat(::dirfd(m_stream), native.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); });
    if (descriptor < 0)
        return systemError(errno, m_path + name, "open");
    struct stat status
    {
    };
    if (::fstat(descriptor, &status) != 0) {
        const int number = errno;
        ::close(descriptor);
        return systemError(number, m_path + name, "fstat");
    }
    if (!S_ISREG(status.st_mode)) {
        ::close(descriptor);
        return tl::unexpected(Error{ErrorCode::NotAFile, m_path + name, QStringLiteral("not a plain file")});
    }
    return std::make_unique<PosixFile>(descriptor, name, fileInfo(status));
}

} // namespace

Result<std::unique_ptr<Folder>> Folder::open(const QString &path)
{
    DIR *stream = ::opendir(encodePath(path).constData());
    if (!stream && errno == ENOTDIR)
        return tl::unexpected(Error{ErrorCode::NotAFile, path, QStringLiteral("not a folder")});
    if (!stream)
        return systemError(errno, path, "opendir");
    struct stat status
    {
    };
    if (::fstat(::dirfd(stream), &status) != 0) {
        const int number = errno;
        ::closedir(stream);
        return systemError(number, path, "fstat");
    }
    return std::make_unique<PosixFolder>(stream, path.endsWith(Separator) ? path : path + Separator, status);
}

} // namespace ravlin::platform
