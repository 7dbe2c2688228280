// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/nodes.h"

#include "core/platform/windows/native.h"

namespace ravlin::platform {

Result<Node> nodeAt(const QString &path)
{
    const NativePath native(path);
    if (!native.isValid())
        return systemError(ERROR_INVALID_NAME, path, "CreateFileW");
    const Handle handle = openExisting(native, FILE_READ_ATTRIBUTES, FILE_FLAG_OPEN_REPARSE_POINT);
    return handle ? nodeOf(handle.get(), path) : lastError(path, "CreateFileW");
}

bool isTaken(const QString &path)
{
    const auto node = nodeAt(path);
    return node || node.error().code != ErrorCode::NotFound;
}

bool isOnReadOnlyDrive(const QString &path)
{
    const NativePath native(folderOf(path));
    if (!native.isValid())
        return false;
    const Handle folder = openExisting(native, FILE_READ_ATTRIBUTES, FILE_FLAG_BACKUP_SEMANTICS);
    DWORD flags = 0;
    return folder &&
           ::GetVolumeInformationByHandleW(folder.get(), nullptr, 0, nullptr, nullptr, &flags, nullptr, 0) != 0 &&
           (flags & FILE_READ_ONLY_VOLUME) != 0;
}

bool isOnNetwork(const QString &path)
{
    constexpr DWORD MostLetters = 32768;
    const NativePath native(path);
    const auto drive = std::make_unique<wchar_t[]>(MostLetters);
    return native.isValid() && ::GetVolumePathNameW(native.text(), drive.get(), MostLetters) != 0 &&
           ::GetDriveTypeW(drive.get()) == DRIVE_REMOTE;
}

} // namespace ravlin::platform
