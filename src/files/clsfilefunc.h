#pragma once

#include "platform/filesystem.h"

#include <QString>

namespace ravlin {

/// The operations on files and folders; every change of a file's name or place goes through it. Has no state but the
/// file system that it works on.
class clsFileFunc
{
public:
    explicit clsFileFunc(platform::FileSystem &fileSystem) : m_fileSystem(fileSystem) {}

    /// Gives a file or folder another path on the same file system. Nothing happens when either text is empty or both
    /// are the same. What has the new name already is never overwritten: AlreadyExists. A change of case alone also
    /// works where the file system ignores case.
    Result<void> RenameFile(const QString &source, const QString &newName);

private:
    bool isSameButForCase(const QString &source, const QString &newName);
    Result<void> renameInTwoSteps(const QString &source, const QString &newName);

    platform::FileSystem &m_fileSystem;
};

} // namespace ravlin
