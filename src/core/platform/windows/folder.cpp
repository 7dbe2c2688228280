// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/folder.h"

#include "core/platform/windows/file.h"

namespace ravlin::platform {
namespace {

constexpr DWORD Hiding = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;

/// Goes by its path: an open handle would keep the folders above it from being renamed.
class WindowsFolder final : public Folder
{
public:
    WindowsFolder(QString path, const FileInfo &info) : m_path(std::move(path)), m_identity(info.device, info.inode) {}

    Result<std::vector<FolderEntry>> entries(const std::stop_token &stop) override;
    Result<bool> hasVisibleSubfolder() override;
    Result<FileInfo> info(const QString &name) override { return FileSystem::native().info(m_path + name); }
    Result<std::unique_ptr<File>> openFile(const QString &name) override
    {
        return FileSystem::native().open(m_path + name, OpenMode::Read);
    }
    std::pair<quint64, quint64> identity() const override { return m_identity; }

private:
    EntryKind kindOf(const WIN32_FIND_DATAW &entry) const;
    /// Hands every entry but "." and ".." to visitor until that returns false.
    template <typename Visitor>
    Result<void> visit(Visitor visitor);

    const QString m_path;
    const std::pair<quint64, quint64> m_identity;
};

EntryKind WindowsFolder::kindOf(const WIN32_FIND_DATAW &entry) const
{
    const bool isFolder = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    // The tag is in a member that has no other use.
    const bool isLink =
        (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && IsReparseTagNameSurrogate(entry.dwReserved0);
    if (!isLink)
        return isFolder ? EntryKind::Folder : EntryKind::File;
    const auto target = FileSystem::native().info(m_path + fromWide(entry.cFileName));
    if (!target)
        return EntryKind::Other; // a link that leads nowhere
    return target->isFolder ? EntryKind::Folder : target->isFile ? EntryKind::File : EntryKind::Other;
}

template <typename Visitor>
Result<void> WindowsFolder::visit(Visitor visitor)
{
    const NativePath native(m_path + u'*');
    WIN32_FIND_DATAW found{};
    HANDLE search = ::FindFirstFileExW(
        native.text(), FindExInfoBasic, &found, FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH);
    if (search == INVALID_HANDLE_VALUE) {
        if (::GetLastError() == ERROR_FILE_NOT_FOUND) // the root of an empty drive: it has no "." either
            return {};
        return lastError(m_path, "FindFirstFileExW");
    }
    bool isWanted = true;
    do {
        const QStringView name(found.cFileName);
        if (name != u"." && name != u"..")
            isWanted = visitor(found);
    } while (isWanted && ::FindNextFileW(search, &found) != 0);
    const DWORD number = ::GetLastError();
    ::FindClose(search);
    if (isWanted && number != ERROR_NO_MORE_FILES)
        return systemError(number, m_path, "FindNextFileW");
    return {};
}

Result<std::vector<FolderEntry>> WindowsFolder::entries(const std::stop_token &stop)
{
    std::vector<FolderEntry> found;
    const Result<void> visited = visit([&](const WIN32_FIND_DATAW &entry) {
        if (stop.stop_requested())
            return false;
        found.push_back({fromWide(entry.cFileName), kindOf(entry), (entry.dwFileAttributes & Hiding) != 0});
        return true;
    });
    if (!visited)
        return tl::unexpected(visited.error());
    return found;
}

Result<bool> WindowsFolder::hasVisibleSubfolder()
{
    bool found = false;
    const Result<void> visited = visit([&](const WIN32_FIND_DATAW &entry) {
        found = (entry.dwFileAttributes & Hiding) == 0 && kindOf(entry) == EntryKind::Folder;
        return !found;
    });
    if (!visited)
        return tl::unexpected(visited.error());
    return found;
}

} // namespace

Result<std::unique_ptr<Folder>> Folder::open(const QString &path)
{
    // The system says of a file's path with a separator behind it that it is none.
    QString bare = path;
    while (bare.endsWith(Separator) && !bare.endsWith(u":\\"))
        bare.chop(1);
    const auto info = FileSystem::native().info(bare);
    if (!info)
        return tl::unexpected(info.error());
    if (!info->isFolder)
        return tl::unexpected(Error{ErrorCode::NotAFile, path, QStringLiteral("not a folder")});
    return std::make_unique<WindowsFolder>(path.endsWith(Separator) ? path : path + Separator, *info);
}

} // namespace ravlin::platform
