// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/folder.h"

#include "core/platform/windows/file.h"

#include <vector>

namespace ravlin::platform {
namespace {

constexpr DWORD Hiding = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;

} // namespace

/// Goes by its path: an open handle would keep the folders above it from being renamed.
struct Folder::Native
{
    EntryKind kindOf(const WIN32_FIND_DATAW &entry) const;
    /// Hands every entry but "." and ".." to visitor until that returns false.
    template <typename Visitor>
    Result<void> visit(Visitor visitor) const;

    QString path; ///< ends in the separator
    std::pair<quint64, quint64> identity;
};

EntryKind Folder::Native::kindOf(const WIN32_FIND_DATAW &entry) const
{
    const bool isFolder = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    // The reparse tag is in a member that has no other use.
    const bool isLink =
        (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && IsReparseTagNameSurrogate(entry.dwReserved0);
    if (!isLink)
        return isFolder ? EntryKind::Folder : EntryKind::File;
    const auto target = FileSystem::native().info(path + fromWide(entry.cFileName));
    if (!target)
        return EntryKind::Other; // a link that leads nowhere
    return target->isFolder ? EntryKind::Folder : target->isFile ? EntryKind::File : EntryKind::Other;
}

template <typename Visitor>
Result<void> Folder::Native::visit(Visitor visitor) const
{
    const NativePath pattern(path + u'*');
    WIN32_FIND_DATAW found{};
    HANDLE search = ::FindFirstFileExW(
        pattern.text(), FindExInfoBasic, &found, FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH);
    if (search == INVALID_HANDLE_VALUE) {
        if (::GetLastError() == ERROR_FILE_NOT_FOUND) // the root of an empty drive: it has no "." either
            return {};
        return lastError(path, "FindFirstFileExW");
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
        return systemError(number, path, "FindNextFileW");
    return {};
}

Folder::Folder(std::unique_ptr<Native> native) : m_native(std::move(native)) {}
Folder::Folder(Folder &&other) noexcept = default;
Folder &Folder::operator=(Folder &&other) noexcept = default;
Folder::~Folder() = default;

Result<Folder> Folder::open(const QString &path)
{
    // For a file's path with a separator at its end the system reports that there is no such file.
    const auto info = FileSystem::native().info(withoutEndSeparator(path));
    if (!info)
        return tl::unexpected(info.error());
    if (!info->isFolder)
        return tl::unexpected(Error{ErrorCode::NotAFile, path, QStringLiteral("not a folder")});
    return Folder(std::make_unique<Native>(Native{withEndSeparator(path), {info->device, info->inode}}));
}

Result<std::vector<FolderEntry>> Folder::entries(const std::stop_token &stop) const
{
    std::vector<FolderEntry> found;
    return m_native
        ->visit([&](const WIN32_FIND_DATAW &entry) {
            if (stop.stop_requested())
                return false;
            const bool isHidden = (entry.dwFileAttributes & Hiding) != 0;
            found.push_back({fromWide(entry.cFileName), m_native->kindOf(entry), isHidden});
            return true;
        })
        .map([&] { return std::move(found); });
}

Result<bool> Folder::hasVisibleSubfolder() const
{
    bool found = false;
    return m_native
        ->visit([&](const WIN32_FIND_DATAW &entry) {
            found = (entry.dwFileAttributes & Hiding) == 0 && m_native->kindOf(entry) == EntryKind::Folder;
            return !found;
        })
        .map([&] { return found; });
}

Result<FileInfo> Folder::info(const QString &name) const
{
    return FileSystem::native().info(m_native->path + name);
}

Result<std::unique_ptr<File>> Folder::openFile(const QString &name) const
{
    return FileSystem::native().open(m_native->path + name, OpenMode::Read);
}

bool Folder::isTopOfDrive() const
{
    const NativePath folder(m_native->path);
    std::vector<wchar_t> top(m_native->path.size() + MAX_PATH);
    if (::GetVolumePathNameW(folder.text(), top.data(), static_cast<DWORD>(top.size())) == 0)
        return false;
    const auto info = FileSystem::native().info(fromWide(top.data()));
    return info && std::pair<quint64, quint64>(info->device, info->inode) == m_native->identity;
}

std::pair<quint64, quint64> Folder::identity() const
{
    return m_native->identity;
}

} // namespace ravlin::platform
