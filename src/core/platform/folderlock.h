// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <memory>

namespace ravlin::platform {

/// Holds a folder's advisory lock until it is destroyed; the system drops it when the program dies.
class FolderLock
{
public:
    FolderLock() = default;
    virtual ~FolderLock() = default;
    FolderLock(const FolderLock &) = delete;
    FolderLock &operator=(const FolderLock &) = delete;
};

/// Nothing when another holds it, when the path is no folder itself, or where the file system knows no locks. Does not
/// wait. Windows: seen by the programs of this computer only.
std::unique_ptr<FolderLock> lockFolder(const QString &path);

} // namespace ravlin::platform
