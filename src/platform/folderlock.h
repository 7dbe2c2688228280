#pragma once

#include <QString>

#include <memory>

namespace ravlin::platform {

/// Holds a folder's advisory lock, which the system drops when the program dies.
class FolderLock
{
public:
    explicit FolderLock(int descriptor) : m_descriptor(descriptor) {}
    ~FolderLock();
    FolderLock(const FolderLock &) = delete;
    FolderLock &operator=(const FolderLock &) = delete;

private:
    const int m_descriptor;
};

/// Nothing when another holds it, when the path is no folder itself, or where the file system knows no locks. Does not
/// wait.
std::unique_ptr<FolderLock> lockFolder(const QString &path);

} // namespace ravlin::platform
