// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

#include <QString>
#include <QStringList>

namespace ravlin {

/// What the file service can do.
enum class FileOperation
{
    Move = 1,
    Copy = 2,
    Delete = 3,
    Rename = 4
};

/// Bits of FileRequest::flags.
inline constexpr int FlagNoConfirmation = 16; ///< don't ask before putting something into the trash
inline constexpr int FlagAllowUndo = 64;      ///< delete into the trash

/// One request, for any number of paths.
struct FileRequest
{
    quintptr owner = 0; ///< the window that dialogs belong to; 0: none
    FileOperation operation = FileOperation::Copy;
    QString source;      ///< one path, or several with a zero character behind each
    QString destination; ///< empty for a deletion
    int flags = 0;
};

/// The result of a request that was carried out in full, or was empty.
inline constexpr int ResultDone = 0;
/// The user said no, or stopped it.
inline constexpr int ResultCancelled = 1223;

/// Carries requests out, with the questions and messages that they need.
class FileService
{
public:
    virtual ~FileService() = default;
    /// Returns ResultDone, ResultCancelled, or another number if something failed.
    virtual int perform(const FileRequest &request) = 0;
};

/// A request's source for these rows: for each the folder (with its separator), the row's text and a zero character.
QString sourceList(const QString &folder, const QStringList &rowTexts);
/// The paths of a request's source.
QStringList sourcePaths(const QString &source);

/// The operations on files and folders: the program changes names and places of files through it. Its only state is the
/// file system and the service.
///
/// A source is one path, or several with a zero character after each, which make one request. If a text that it needs
/// is empty, an operation does nothing and returns 0; else it returns the service's result. allowUndo adds
/// FlagAllowUndo to the flags.
class clsFileFunc
{
public:
    /// Without a service: the operations that return an int return ResultCancelled.
    explicit clsFileFunc(platform::FileSystem &fileSystem) : m_fileSystem(fileSystem) {}
    clsFileFunc(platform::FileSystem &fileSystem, FileService &service) : m_fileSystem(fileSystem), m_service(&service)
    {
    }

    int CopyFile(const QString &source, const QString &destination, bool allowUndo = true, int flags = 0);
    int MoveFile(const QString &source, const QString &destination, bool allowUndo = true, int flags = 0);
    int RenameFile(const QString &source, const QString &newName, bool allowUndo, int flags = 0);
    int DeleteFile(const QString &source, bool allowUndo = true, int flags = 0);

    /// Gives a file or folder another path on the same file system. Does nothing if either text is empty or both are
    /// the same. Never overwrites: AlreadyExists. A change of case alone works where the file system ignores case, too.
    Result<void> RenameFile(const QString &source, const QString &newName);

    /// Makes a program the one that opens files of an extension, see platform::makeFileDefault.
    static Result<void> MakeFileDefault(
        const QString &className, const QString &description, const QString &programPath, const QString &extension);
    /// The path of a system folder without a separator at its end, or empty if the system has none. number: of
    /// platform::SpecialFolder; owner: ignored.
    static QString GetSpecialFolder(quintptr owner, int number);
    /// The folders of Windows and of its programs; empty on other systems.
    static QString GetWinPath();
    static QString GetSysPath();

private:
    int RunFileOperation(
        const QString &source, const QString &destination, FileOperation operation, bool allowUndo, int flags);

    platform::FileSystem &m_fileSystem;
    FileService *m_service = nullptr;
};

} // namespace ravlin
