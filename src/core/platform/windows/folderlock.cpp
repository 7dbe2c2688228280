// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/folderlock.h"

#include "core/platform/windows/native.h"

namespace ravlin::platform {
namespace {

/// A named object of the system: it vanishes with the last handle to it. The system locks ranges of files only, and to
/// keep a folder open in a way that others notice would keep its owner from renaming it as well.
class WindowsFolderLock final : public FolderLock
{
public:
    explicit WindowsFolderLock(Handle object) : m_object(std::move(object)) {}

private:
    Handle m_object;
};

} // namespace

std::unique_ptr<FolderLock> lockFolder(const QString &path)
{
    const NativePath native(path);
    if (!native.isValid())
        return nullptr;
    const Handle folder = openExisting(native, FILE_READ_ATTRIBUTES, FILE_FLAG_OPEN_REPARSE_POINT);
    if (!folder || isLink(folder.get()))
        return nullptr;
    const auto info = infoOf(folder.get(), path);
    if (!info || !info->isFolder)
        return nullptr;
    constexpr int Hex = 16;
    const QString name =
        QStringLiteral("Global\\ravlin-folder-%1-%2").arg(info->device, 0, Hex).arg(info->inode, 0, Hex);
    Handle object(::CreateEventW(nullptr, TRUE, FALSE, name.toStdWString().c_str()));
    if (!object || ::GetLastError() == ERROR_ALREADY_EXISTS)
        return nullptr;
    return std::make_unique<WindowsFolderLock>(std::move(object));
}

} // namespace ravlin::platform
