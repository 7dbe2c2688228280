// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/folder.h"

#include "core/platform/posix/file.h"
#include "core/platform/posix/systemerror.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cstring>

namespace ravlin::platform {

struct Folder::Native
{
    Native(DIR *opened, QString itsPath) : stream(opened), path(std::move(itsPath)) {}
    ~Native() { ::closedir(stream); }
    Native(const Native &) = delete;
    Native &operator=(const Native &) = delete;

    EntryKind kindOf(const dirent &entry) const;
    /// Hands every entry but "." and ".." to visitor until that returns false.
    template <typename Visitor>
    Result<void> visit(Visitor visitor) const;

    DIR *const stream;
    const QString path; ///< ends in the separator
    std::pair<quint64, quint64> identity;
};

EntryKind Folder::Native::kindOf(const dirent &entry) const
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
    if (::fstatat(::dirfd(stream), entry.d_name, &status, 0) != 0)
        return EntryKind::Other; // a link that leads nowhere
    return S_ISREG(status.st_mode) ? EntryKind::File : S_ISDIR(status.st_mode) ? EntryKind::Folder : EntryKind::Other;
}

template <typename Visitor>
Result<void> Folder::Native::visit(Visitor visitor) const
{
    ::rewinddir(stream);
    for (;;) {
        errno = 0;
        // Each Folder has a stream of its own and this is its only reader.
        const dirent *entry = ::readdir(stream); // NOLINT(concurrency-mt-unsafe)
        if (!entry && errno != 0)
            return systemError(errno, path, "readdir");
        if (!entry)
            return {};
        const bool isDots = std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0;
        if (!isDots && !visitor(*entry))
            return {};
    }
}

Folder::Folder(std::unique_ptr<Native> native) : m_native(std::move(native)) {}
Folder::Folder(Folder &&other) noexcept = default;
Folder &Folder::operator=(Folder &&other) noexcept = default;
Folder::~Folder() = default;

Result<Folder> Folder::open(const QString &path)
{
    DIR *stream = ::opendir(encodePath(path).constData());
    if (!stream && errno == ENOTDIR)
        return tl::unexpected(Error{ErrorCode::NotAFile, path, QStringLiteral("not a folder")});
    if (!stream)
        return systemError(errno, path, "opendir");
    auto native = std::make_unique<Native>(stream, withEndSeparator(path));
    struct stat status
    {
    };
    if (::fstat(::dirfd(stream), &status) != 0)
        return systemError(errno, path, "fstat");
    native->identity = {status.st_dev, status.st_ino};
    return Folder(std::move(native));
}

Result<std::vector<FolderEntry>> Folder::entries(const std::stop_token &stop) const
{
    std::vector<FolderEntry> found;
    return m_native
        ->visit([&](const dirent &entry) {
            if (stop.stop_requested())
                return false;
            const char *name = entry.d_name;
            found.push_back(
                {decodePath(name, static_cast<qsizetype>(std::strlen(name))), m_native->kindOf(entry), name[0] == '.'});
            return true;
        })
        .map([&] { return std::move(found); });
}

Result<bool> Folder::hasVisibleSubfolder() const
{
    bool found = false;
    return m_native
        ->visit([&](const dirent &entry) {
            found = entry.d_name[0] != '.' && m_native->kindOf(entry) == EntryKind::Folder;
            return !found;
        })
        .map([&] { return found; });
}

Result<FileInfo> Folder::info(const QString &name) const
{
    struct stat status
    {
    };
    if (::fstatat(::dirfd(m_native->stream), encodePath(name).constData(), &status, 0) != 0)
        return systemError(errno, m_native->path + name, "fstatat");
    return fileInfo(status);
}

Result<std::unique_ptr<File>> Folder::openFile(const QString &name) const
{
    const QByteArray native = encodePath(name);
    return openPlainFile(::dirfd(m_native->stream), native.constData(), O_RDONLY, m_native->path + name);
}

bool Folder::isTopOfDrive() const
{
    struct stat above
    {
    };
    if (::fstatat(::dirfd(m_native->stream), "..", &above, 0) != 0)
        return false;
    // The top of all is the folder above itself.
    return above.st_dev != m_native->identity.first || above.st_ino == m_native->identity.second;
}

std::pair<quint64, quint64> Folder::identity() const
{
    return m_native->identity;
}

} // namespace ravlin::platform
