// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/nodes.h"

#include "core/platform/windows/file.h"

#include <vector>

#include <winioctl.h>

namespace ravlin::platform {
namespace {

constexpr DWORD LargestLink = 16 * 1024; ///< MAXIMUM_REPARSE_DATA_BUFFER_SIZE

/// The content of a link, as the system stores it.
Result<std::vector<std::byte>> linkData(const QString &path)
{
    const NativePath native(path);
    const Handle link = openExisting(native, 0, FILE_FLAG_OPEN_REPARSE_POINT);
    if (!link)
        return lastError(path, "CreateFileW");
    std::vector<std::byte> data(LargestLink);
    DWORD size = 0;
    if (!::DeviceIoControl(link.get(), FSCTL_GET_REPARSE_POINT, nullptr, 0, data.data(), LargestLink, &size, nullptr))
        return lastError(path, "DeviceIoControl");
    data.resize(size);
    return data;
}

/// Creates the file or folder that is to become the link.
bool makePlaceholder(const NativePath &path, bool isFolder)
{
    if (isFolder)
        return ::CreateDirectoryW(path.text(), nullptr) != 0;
    const Handle made(
        ::CreateFileW(path.text(), GENERIC_WRITE, ShareAll, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    return static_cast<bool>(made);
}

} // namespace

Result<Node> nodeAt(const QString &path)
{
    const NativePath native(path);
    if (!native.isValid())
        return systemError(ERROR_INVALID_NAME, path, "CreateFileW");
    const Handle handle = openExisting(native, FILE_READ_ATTRIBUTES, FILE_FLAG_OPEN_REPARSE_POINT);
    if (!handle)
        return lastError(path, "CreateFileW");
    return infoOf(handle.get(), path).map([&](const FileInfo &info) {
        const bool isThisLink = isLink(handle.get());
        const NodeKind kind = isThisLink      ? NodeKind::Link
                              : info.isFolder ? NodeKind::Folder
                              : info.isFile   ? NodeKind::File
                                              : NodeKind::Other;
        return Node{kind, info};
    });
}

bool isTaken(const QString &path)
{
    const auto node = nodeAt(path);
    return node || node.error().code != ErrorCode::NotFound;
}

Result<void> copyLink(const QString &from, const QString &to)
{
    auto data = linkData(from);
    if (!data)
        return tl::unexpected(data.error());
    const NativePath target(to);
    const DWORD attributes = ::GetFileAttributesW(NativePath(from).text());
    if (!target.isValid() || attributes == INVALID_FILE_ATTRIBUTES)
        return systemError(ERROR_INVALID_NAME, target.isValid() ? from : to, "GetFileAttributesW");
    if (!makePlaceholder(target, (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0))
        return lastError(to, "CreateFileW");
    DWORD number = 0;
    {
        const Handle made = openExisting(target, GENERIC_WRITE, FILE_FLAG_OPEN_REPARSE_POINT);
        DWORD size = 0;
        if (!made || !::DeviceIoControl(made.get(), FSCTL_SET_REPARSE_POINT, data->data(),
                         static_cast<DWORD>(data->size()), nullptr, 0, &size, nullptr))
            number = ::GetLastError();
    }
    if (number == 0)
        return {};
    static_cast<void>(
        FileSystem::native().remove(to).or_else([&](const Error &) { return FileSystem::native().removeFolder(to); }));
    return systemError(number, to, "DeviceIoControl");
}

/// Leaves out the access list, which comes from the new folder, as everywhere on this system.
Result<void> takeAttributes(const QString &from, const QString &to)
{
    const NativePath source(from);
    const NativePath target(to);
    if (!source.isValid() || !target.isValid())
        return systemError(ERROR_INVALID_NAME, source.isValid() ? to : from, "CreateFileW");
    const Handle wanted = openExisting(source, FILE_READ_ATTRIBUTES, FILE_FLAG_OPEN_REPARSE_POINT);
    if (!wanted)
        return lastError(from, "CreateFileW");
    if (!isLink(wanted.get())) {
        if (auto copied = copyStreams(from, to); !copied)
            return copied;
    }
    const Handle present =
        openExisting(target, FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES, FILE_FLAG_OPEN_REPARSE_POINT);
    if (!present)
        return lastError(to, "CreateFileW");
    const auto taken = copyBasics(wanted.get(), present.get(), TakeTimes::All, to);
    const bool isDamage = !taken && (taken.error().code == ErrorCode::NoSpace || taken.error().code == ErrorCode::Io);
    return isDamage ? taken : Result<void>();
}

void forgetCached(const QString &path)
{
    // Opening a file without buffering makes the system write and drop what the cache has of it.
    const NativePath native(path);
    if (native.isValid())
        openExisting(native, GENERIC_READ, FILE_FLAG_NO_BUFFERING);
}

} // namespace ravlin::platform
