// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/windows/heldfolder.h"

#include "core/platform/windows/file.h"
#include "core/platform/windows/relative.h"

#include <winioctl.h>

#include <cstddef>

namespace ravlin::platform {
namespace {

constexpr DWORD LargestLink = 16 * 1024; ///< MAXIMUM_REPARSE_DATA_BUFFER_SIZE
constexpr ACCESS_MASK ListAccess = FILE_LIST_DIRECTORY | FILE_TRAVERSE | FILE_READ_ATTRIBUTES | READ_CONTROL;
constexpr ACCESS_MASK SearchAccess = FILE_TRAVERSE | FILE_READ_ATTRIBUTES;
constexpr ACCESS_MASK ChangeAccess = DELETE | FILE_READ_ATTRIBUTES;

/// Opens a link itself, and anything else as usual.
Opening itself(ACCESS_MASK access, ULONG options = 0)
{
    return {access, options | FILE_OPEN_REPARSE_POINT};
}

class WindowsHeldFolder final : public HeldFolder
{
public:
    WindowsHeldFolder(Handle handle, QString path) : m_handle(std::move(handle)), m_path(std::move(path)) {}

    QString path() const override { return m_path; }
    Result<FileInfo> info() override { return infoOf(m_handle.get(), m_path); }
    Result<Node> node(const QString &name) override;
    Result<std::vector<QString>> names() override;
    Result<std::unique_ptr<File>> openFile(const QString &name, OpenMode mode) override;
    Result<std::unique_ptr<File>> createNew(const QString &name) override;
    Result<std::shared_ptr<HeldFolder>> openFolder(const QString &name) override;
    Result<std::shared_ptr<HeldFolder>> createFolder(const QString &name) override;
    Result<void> copyLink(HeldFolder &source, const QString &name, const QString &newName) override;
    Result<void> replace(const QString &name, HeldFolder &to, const QString &newName) override;
    Result<void> renameNew(const QString &name, HeldFolder &to, const QString &newName) override;
    Result<void> remove(const QString &name) override;
    Result<void> removeFolder(const QString &name) override;
    Result<void> takeAttributes(HeldFolder &source) override;
    Result<void> sync() override;
    Result<bool> tryLock() override;

private:
    QString pathOf(const QString &name) const { return inFolder(m_path, name); }
    Result<Handle> open(const QString &name, const Opening &opening) const;
    Result<Handle> openUnlinked(const QString &name, const Opening &opening) const;
    Result<void> rename(const QString &name, HeldFolder &to, const QString &newName, Existing existing) const;
    Result<void> remove(const QString &name, NodeKind kind) const;

    Handle m_handle;
    QString m_path;
    Handle m_lock;
};

tl::unexpected<Error> notAName(const QString &path)
{
    return tl::unexpected(Error{ErrorCode::InvalidArgument, path, QStringLiteral("not a name in a folder")});
}

tl::unexpected<Error> notAFile(const QString &path, const QString &detail)
{
    return tl::unexpected(Error{ErrorCode::NotAFile, path, detail});
}

Result<Handle> WindowsHeldFolder::open(const QString &name, const Opening &opening) const
{
    if (!isPlainName(name))
        return notAName(pathOf(name));
    Handle opened;
    if (!patiently([&] {
            opened = openIn(m_handle.get(), name, opening);
            return static_cast<bool>(opened);
        }))
        return lastError(pathOf(name), "NtCreateFile");
    return opened;
}

/// Opens anything but a link. Content in a cloud store is fetched only if it is not opened as a link itself, so look
/// first, and then whether that is what was opened.
Result<Handle> WindowsHeldFolder::openUnlinked(const QString &name, const Opening &opening) const
{
    const auto looked = open(name, itself(FILE_READ_ATTRIBUTES));
    if (!looked)
        return tl::unexpected(looked.error());
    if (isLink(looked->get()))
        return notAFile(pathOf(name), QStringLiteral("a link"));
    const auto seen = infoOf(looked->get(), pathOf(name));
    auto opened = open(name, opening);
    if (!opened)
        return opened;
    const auto got = infoOf(opened->get(), pathOf(name));
    if (!seen || !got)
        return tl::unexpected(seen ? got.error() : seen.error());
    if (seen->inode != got->inode || seen->device != got->device)
        return tl::unexpected(Error{ErrorCode::ChangedMeanwhile, pathOf(name), QStringLiteral("exchanged")});
    return opened;
}

Result<Node> WindowsHeldFolder::node(const QString &name)
{
    return open(name, itself(FILE_READ_ATTRIBUTES)).and_then([&](const Handle &opened) {
        return nodeOf(opened.get(), pathOf(name));
    });
}

Result<std::vector<QString>> WindowsHeldFolder::names()
{
    // Opened anew: the handle keeps the place up to which it was read.
    const Handle listed = openIn(m_handle.get(), {}, {FILE_LIST_DIRECTORY, FILE_DIRECTORY_FILE});
    return listed ? namesIn(listed.get(), m_path) : lastError(m_path, "NtCreateFile");
}

Result<std::unique_ptr<File>> WindowsHeldFolder::openFile(const QString &name, OpenMode mode)
{
    const auto present = node(name);
    if (!present)
        return tl::unexpected(present.error());
    if (present->kind != NodeKind::File)
        return notAFile(pathOf(name), QStringLiteral("not a plain file"));
    const ACCESS_MASK access = mode == OpenMode::Read ? GENERIC_READ : GENERIC_READ | GENERIC_WRITE;
    auto opened = openUnlinked(name, {access, FILE_NON_DIRECTORY_FILE});
    if (!opened)
        return tl::unexpected(opened.error());
    return fileBehind(std::move(*opened), pathOf(name));
}

/// The new file gets the access list that the folder gives to what is created in it.
Result<std::unique_ptr<File>> WindowsHeldFolder::createNew(const QString &name)
{
    auto made = open(name, {GENERIC_READ | GENERIC_WRITE | WRITE_DAC, FILE_NON_DIRECTORY_FILE, FILE_CREATE});
    if (!made)
        return tl::unexpected(made.error());
    return fileBehind(std::move(*made), pathOf(name));
}

Result<std::shared_ptr<HeldFolder>> WindowsHeldFolder::openFolder(const QString &name)
{
    auto opened = openUnlinked(name, {ListAccess, FILE_DIRECTORY_FILE});
    if (!opened && opened.error().code == ErrorCode::AccessDenied)
        opened = openUnlinked(name, {SearchAccess, FILE_DIRECTORY_FILE});
    if (opened)
        return std::make_shared<WindowsHeldFolder>(std::move(*opened), pathOf(name));
    const auto present = node(name);
    if (present && present->kind != NodeKind::Folder)
        return notAFile(pathOf(name), QStringLiteral("not a folder"));
    return tl::unexpected(opened.error());
}

/// Creates and opens it in one step.
Result<std::shared_ptr<HeldFolder>> WindowsHeldFolder::createFolder(const QString &name)
{
    auto made = open(name, {ListAccess, FILE_DIRECTORY_FILE, FILE_CREATE});
    if (!made)
        return tl::unexpected(made.error());
    return std::make_shared<WindowsHeldFolder>(std::move(*made), pathOf(name));
}

Result<void> WindowsHeldFolder::copyLink(HeldFolder &source, const QString &name, const QString &newName)
{
    const auto *const from = dynamic_cast<WindowsHeldFolder *>(&source);
    if (from == nullptr)
        return notAName(pathOf(name));
    const auto link = from->open(name, itself(FILE_READ_ATTRIBUTES));
    if (!link)
        return tl::unexpected(link.error());
    if (!isLink(link->get()))
        return notAFile(from->pathOf(name), QStringLiteral("not a link"));
    std::vector<std::byte> content(LargestLink);
    DWORD size = 0;
    if (!::DeviceIoControl(
            link->get(), FSCTL_GET_REPARSE_POINT, nullptr, 0, content.data(), LargestLink, &size, nullptr))
        return lastError(from->pathOf(name), "DeviceIoControl");
    const auto info = infoOf(link->get(), from->pathOf(name));
    if (!info)
        return tl::unexpected(info.error());
    // What is created here becomes the link, by the same handle.
    const ULONG kind = info->isFolder ? FILE_DIRECTORY_FILE : FILE_NON_DIRECTORY_FILE;
    constexpr ACCESS_MASK Access = FILE_WRITE_DATA | FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES | DELETE;
    const auto made = open(newName, {Access, kind | FILE_OPEN_REPARSE_POINT, FILE_CREATE});
    if (!made)
        return tl::unexpected(made.error());
    DWORD returned = 0;
    if (!::DeviceIoControl(
            made->get(), FSCTL_SET_REPARSE_POINT, content.data(), size, nullptr, 0, &returned, nullptr)) {
        const DWORD number = ::GetLastError();
        removeOpened(made->get());
        return systemError(number, pathOf(newName), "DeviceIoControl");
    }
    const auto taken = copyBasics(link->get(), made->get(), TakeTimes::All, pathOf(newName));
    const bool isDamage = !taken && (taken.error().code == ErrorCode::NoSpace || taken.error().code == ErrorCode::Io);
    return isDamage ? taken : Result<void>();
}

Result<void> WindowsHeldFolder::rename(
    const QString &name, HeldFolder &to, const QString &newName, Existing existing) const
{
    const auto *const target = dynamic_cast<WindowsHeldFolder *>(&to);
    if (target == nullptr || !isPlainName(newName))
        return notAName(target != nullptr ? target->pathOf(newName) : pathOf(name));
    const auto opened = open(name, itself(ChangeAccess, FILE_WRITE_THROUGH));
    if (!opened)
        return tl::unexpected(opened.error());
    if (patiently([&] { return renameTo(opened->get(), target->m_handle.get(), newName, existing); }))
        return {};
    const DWORD number = ::GetLastError();
    const bool isTaken = number == ERROR_ALREADY_EXISTS || number == ERROR_FILE_EXISTS;
    return systemError(number, isTaken ? target->pathOf(newName) : pathOf(name), "NtSetInformationFile");
}

Result<void> WindowsHeldFolder::replace(const QString &name, HeldFolder &to, const QString &newName)
{
    return rename(name, to, newName, Existing::Replace);
}

Result<void> WindowsHeldFolder::renameNew(const QString &name, HeldFolder &to, const QString &newName)
{
    return rename(name, to, newName, Existing::Keep);
}

/// kind: a folder, or else anything that is none.
Result<void> WindowsHeldFolder::remove(const QString &name, NodeKind kind) const
{
    // Clearing the read-only attribute needs one right more, which not everybody who may remove has.
    auto opened = open(name, itself(ChangeAccess | FILE_WRITE_ATTRIBUTES));
    if (!opened && opened.error().code == ErrorCode::AccessDenied)
        opened = open(name, itself(ChangeAccess));
    if (!opened)
        return tl::unexpected(opened.error());
    const auto node = nodeOf(opened->get(), pathOf(name));
    if (!node)
        return tl::unexpected(node.error());
    if ((node->kind == NodeKind::Folder) != (kind == NodeKind::Folder))
        return systemError(kind == NodeKind::Folder ? ERROR_DIRECTORY : ERROR_ACCESS_DENIED, pathOf(name), "remove");
    if (!patiently([&] { return removeOpened(opened->get()); }))
        return lastError(pathOf(name), "SetFileInformationByHandle");
    return {};
}

Result<void> WindowsHeldFolder::remove(const QString &name)
{
    return remove(name, NodeKind::File);
}

Result<void> WindowsHeldFolder::removeFolder(const QString &name)
{
    return remove(name, NodeKind::Folder);
}

/// Leaves out the access list, which comes from the folder above, as everywhere on this system.
Result<void> WindowsHeldFolder::takeAttributes(HeldFolder &source)
{
    const auto *const from = dynamic_cast<WindowsHeldFolder *>(&source);
    if (from == nullptr)
        return notAName(m_path);
    if (auto copied = copyStreams(from->m_handle.get(), m_handle.get(), m_path); !copied)
        return copied;
    const Handle changed = openIn(m_handle.get(), {}, {FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES});
    if (!changed)
        return {};
    const auto taken = copyBasics(from->m_handle.get(), changed.get(), TakeTimes::All, m_path);
    const bool isDamage = !taken && (taken.error().code == ErrorCode::NoSpace || taken.error().code == ErrorCode::Io);
    return isDamage ? taken : Result<void>();
}

Result<void> WindowsHeldFolder::sync()
{
    // Fails if the user may not add to the folder, and on drives that need no such call. NTFS keeps an ordered journal
    // of names anyway.
    const Handle written = openIn(m_handle.get(), {}, {GENERIC_WRITE, FILE_DIRECTORY_FILE});
    if (written && !::FlushFileBuffers(written.get())) {
        const DWORD number = ::GetLastError();
        if (number == ERROR_DISK_FULL || number == ERROR_IO_DEVICE || number == ERROR_CRC)
            return systemError(number, m_path, "FlushFileBuffers");
    }
    return {};
}

/// The system locks parts of files only. An object named after the folder stands for its lock: it is there as long as
/// somebody, of whatever session, has it open.
Result<bool> WindowsHeldFolder::tryLock()
{
    constexpr int Hexadecimal = 16;
    if (m_lock)
        return true;
    const auto info = infoOf(m_handle.get(), m_path);
    if (!info)
        return tl::unexpected(info.error());
    const std::wstring name =
        QStringLiteral(R"(Global\ravlin-folder-%1-%2)")
            .arg(QString::number(info->device, Hexadecimal), QString::number(info->inode, Hexadecimal))
            .toStdWString();
    Handle lock(::CreateEventW(nullptr, TRUE, FALSE, name.c_str()));
    const DWORD number = ::GetLastError();
    if (!lock)
        return systemError(number, m_path, "CreateEventW");
    if (number == ERROR_ALREADY_EXISTS)
        return false;
    m_lock = std::move(lock);
    return true;
}

} // namespace

/// One call resolves the links in the path; from then on the handle stands for the folder.
Result<std::shared_ptr<HeldFolder>> openHeldFolder(const QString &path)
{
    // For a file's path with a separator at its end the system reports that there is no such file.
    const NativePath native(withoutEndSeparator(path));
    if (!native.isValid())
        return systemError(ERROR_INVALID_NAME, path, "CreateFileW");
    Handle opened = openExisting(native, ListAccess);
    if (!opened && ::GetLastError() == ERROR_ACCESS_DENIED)
        opened = openExisting(native, SearchAccess);
    if (!opened)
        return lastError(path, "CreateFileW");
    const auto info = infoOf(opened.get(), path);
    if (!info)
        return tl::unexpected(info.error());
    if (!info->isFolder)
        return notAFile(path, QStringLiteral("not a folder"));
    return std::make_shared<WindowsHeldFolder>(std::move(opened), path);
}

Result<Place> followLinks(const QString &path)
{
    const NativePath native(path);
    if (!native.isValid())
        return systemError(ERROR_INVALID_NAME, path, "CreateFileW");
    const Handle opened = openExisting(native, FILE_READ_ATTRIBUTES);
    if (!opened)
        return lastError(path, "CreateFileW");
    const auto meant = infoOf(opened.get(), path);
    if (!meant)
        return tl::unexpected(meant.error());
    const QString found = finalPath(opened.get());
    const QString real = found.isEmpty() ? withoutPrefix(fromWide(native.text())) : found;
    auto folder = openHeldFolder(folderOf(real));
    if (!folder)
        return tl::unexpected(folder.error());
    const auto node = (*folder)->node(nameOf(real));
    if (!node)
        return tl::unexpected(node.error());
    if (!node->isSameAs(*meant))
        return tl::unexpected(Error{ErrorCode::ChangedMeanwhile, path, QStringLiteral("exchanged")});
    return Place{std::move(*folder), nameOf(real)};
}

} // namespace ravlin::platform
