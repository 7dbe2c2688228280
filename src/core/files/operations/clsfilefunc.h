// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/operations/filerequest.h"
#include "core/platform/filesystem.h"

#include <QString>

namespace ravlin {

/// The operations on files and folders; every change of a file's name or place goes through it. Has no state but the
/// file system that it works on and the service that carries its requests out.
///
/// Those that take sources take one path, or several with a zero character behind each, and make one request of them
/// all; where a text that they need is empty they do nothing and return 0. allowUndo adds FlagAllowUndo to the flags.
/// The result is the service's.
class clsFileFunc
{
public:
    /// For renames alone: the other operations return ResultCancelled.
    explicit clsFileFunc(platform::FileSystem &fileSystem) : m_fileSystem(fileSystem) {}
    clsFileFunc(platform::FileSystem &fileSystem, FileService &service) : m_fileSystem(fileSystem), m_service(&service)
    {
    }

    int CopyFile(const QString &source, const QString &destination, bool allowUndo = true, int flags = 0);
    int MoveFile(const QString &source, const QString &destination, bool allowUndo = true, int flags = 0);
    int RenameFile(const QString &source, const QString &newName, bool allowUndo, int flags = 0);
    int DeleteFile(const QString &source, bool allowUndo = true, int flags = 0);

    /// Gives a file or folder another path on the same file system. Nothing happens when either text is empty or both
    /// are the same. What has the new name already is never overwritten: AlreadyExists. A change of case alone also
    /// works where the file system ignores case.
    Result<void> RenameFile(const QString &source, const QString &newName);

    /// Makes a program the one that opens files of an extension, see platform::makeFileDefault.
    static Result<void> MakeFileDefault(
        const QString &className, const QString &description, const QString &programPath, const QString &extension);
    /// The path of a folder that the system keeps for a purpose, without a separator at the end; empty where it has
    /// none. number: of platform::SpecialFolder; owner: the window that it is asked for, or none.
    static QString GetSpecialFolder(quintptr owner, int number);
    /// The folders of Windows and of its own programs; empty on other systems.
    static QString GetWinPath();
    static QString GetSysPath();

private:
    int RunFileOperation(
        const QString &source, const QString &destination, FileOperation operation, bool allowUndo, int flags);

    platform::FileSystem &m_fileSystem;
    FileService *m_service = nullptr;
};

} // namespace ravlin
