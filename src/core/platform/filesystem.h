// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/error.h"
#include "core/platform/path.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <span>
#include <vector>

/// The operating system's files behind one interface: FileSystem::native() is the real one (posix/, windows/); tests
/// replace it by one that fails on purpose. Paths are those of path.h.
///
/// Thread safety: several threads may use a FileSystem at once, but only one a File.
namespace ravlin::platform {

struct FileInfo
{
    qint64 size = 0;     ///< bytes
    qint64 modified = 0; ///< nanoseconds since 1970, UTC
    qint64 changed = 0;  ///< the same, of the last change to content or metadata; programs cannot set it
    quint64 inode = 0;   ///< with device: the file's identity
    quint64 device = 0;
    quint32 permissions = 0; ///< POSIX permission bits (07777); on Windows 0444 or 0666
    quint32 linkCount = 1;   ///< hard links
    quint32 owner = 0;
    quint32 group = 0;
    bool isFile = false; ///< a plain file (after following symbolic links, where info() does)
    bool isFolder = false;

    /// The read-only attribute: the owner's write bit is missing. Says nothing about what the current user may do.
    bool isReadOnly() const { return (permissions & 0200U) == 0; }
};

/// An open file. Destruction closes it; sync() reports the errors that closing would.
class File
{
public:
    virtual ~File() = default;

    /// Reads up to buffer.size() bytes from offset (bytes from the start). Fewer only at the end of the file.
    virtual Result<qint64> readAt(std::span<char> buffer, qint64 offset) = 0;
    /// Writes from offset. May write fewer bytes than given, but at least one; the caller goes on from there.
    virtual Result<qint64> writeAt(std::span<const char> bytes, qint64 offset) = 0;
    virtual Result<void> truncate(qint64 size) = 0;
    /// Returns once the content is on the disk.
    virtual Result<void> sync() = 0;
    /// Right after opening: the state at opening.
    virtual Result<FileInfo> info() = 0;
    /// Copies length bytes from another file of the same file system, inside the kernel where possible (sharing blocks
    /// on file systems that can), else by reading and writing. May copy fewer, but at least one byte; the caller goes
    /// on. Returns 0 only at the source's end.
    virtual Result<qint64> copyFrom(File &source, qint64 sourceOffset, qint64 offset, qint64 length) = 0;
    /// Gives this file the other's owner, group, permissions, extended attributes and access control list.
    /// An owner that may not be set is an error (AccessDenied); an attribute that the file system refuses is not.
    virtual Result<void> takeMetadata(File &source) = 0;
    /// nanoseconds since 1970, UTC.
    virtual Result<void> setModified(qint64 nanoseconds) = 0;
    /// Takes the file's advisory lock until the file is closed. The lock distinguishes a file in the making from a
    /// leftover, for the system releases the locks of a dead program. Does not wait: false if another File holds the
    /// lock, Unsupported if the file system has no locks.
    virtual Result<bool> tryLock() = 0;
};

enum class OpenMode
{
    Read,
    ReadWrite
};

class FileSystem
{
public:
    virtual ~FileSystem() = default;

    /// The operating system's own.
    static FileSystem &native();

    /// Opens an existing file, following symbolic links. Never blocks on a pipe or device: those are NotAFile.
    virtual Result<std::unique_ptr<File>> open(const QString &path, OpenMode mode) = 0;
    /// Like open, but a symbolic link at the end of the path is NotAFile: for names that others may have planted.
    virtual Result<std::unique_ptr<File>> openUnlinked(const QString &path, OpenMode mode) = 0;
    /// Creates a file for reading and writing that only its owner may read; AlreadyExists if the name is taken.
    virtual Result<std::unique_ptr<File>> createNew(const QString &path) = 0;
    /// Follows symbolic links.
    virtual Result<FileInfo> info(const QString &path) = 0;
    /// The path with every symbolic link resolved; the file has to exist.
    virtual Result<QString> canonicalPath(const QString &path) = 0;
    /// Puts from in the place of to in one step: a reader always sees the old file or the new one.
    virtual Result<void> replace(const QString &from, const QString &to) = 0;
    /// Renames a file, folder or symbolic link, but never in the place of another: AlreadyExists if the new name is
    /// taken, even by a folder or a link that leads nowhere. Unsupported unless both paths are on one file system.
    /// Where the file system ignores case, a name that differs in case alone is taken, by the file itself.
    virtual Result<void> renameNew(const QString &from, const QString &to) = 0;
    /// Creates one folder; AlreadyExists if the name is taken, NotFound if the folder above is missing.
    virtual Result<void> createFolder(const QString &path) = 0;
    /// Removes an empty folder; AlreadyExists if something is in it.
    virtual Result<void> removeFolder(const QString &path) = 0;
    virtual Result<void> remove(const QString &path) = 0;
    virtual Result<void> setPermissions(const QString &path, quint32 permissions) = 0;
    /// Returns once the folder's own entries (creations, renames) are on the disk.
    virtual Result<void> syncFolder(const QString &folder) = 0;
    /// Bytes that the current user may still write on the file system that holds path.
    virtual Result<qint64> freeBytes(const QString &path) = 0;
    /// The names in a folder in no particular order, without "." and "..".
    virtual Result<std::vector<QString>> names(const QString &folder) = 0;
    /// The owner that files created now get, and the group that they usually get (a folder may give its own).
    virtual quint32 currentUser() = 0;
    virtual quint32 currentGroup() = 0;
};

} // namespace ravlin::platform
