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
/// What a user names by a path is looked up once; from then on a HeldFolder and a File stand for it, so that nobody can
/// exchange it for something else between two steps (docs/decisions/0018-handles-instead-of-paths.md).
///
/// Thread safety: several threads may use a FileSystem at once, but only one a File.
namespace ravlin::platform {

struct FileInfo
{
    qint64 size = 0;     ///< bytes
    qint64 onDisk = 0;   ///< bytes that its blocks take; 0 where the system does not tell
    qint64 modified = 0; ///< nanoseconds since 1970, UTC
    qint64 changed = 0;  ///< the same, of the last change to content or metadata; programs cannot set it
    quint64 inode = 0;   ///< with device: the file's identity
    quint64 device = 0;
    quint32 permissions = 0; ///< POSIX permission bits (07777); on Windows 0444 or 0666, of folders 0700
    quint32 linkCount = 1;   ///< hard links
    quint32 owner = 0;
    quint32 group = 0;
    bool isFile = false; ///< a plain file (after following symbolic links, where info() does)
    bool isFolder = false;

    /// The read-only attribute: the owner's write bit is missing. Says nothing about what the current user may do.
    bool isReadOnly() const { return (permissions & 0200U) == 0; }
};

/// What makes a file the same one after it was renamed or moved, also after the next start of the system. A part that
/// the system does not give is 0.
struct FileIdentity
{
    quint64 volume = 0; ///< of the file system itself, not of the device that it is on, where the system tells
    quint64 inode = 0;
    qint64 born = 0; ///< nanoseconds since 1970, UTC

    bool operator==(const FileIdentity &) const = default;
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
    virtual Result<FileIdentity> identity()
    {
        return info().map([](const FileInfo &now) { return FileIdentity{now.device, now.inode, 0}; });
    }
    /// Copies length bytes from another file of the same file system, inside the kernel where possible (sharing blocks
    /// on file systems that can), else by reading and writing. May copy fewer, but at least one byte; the caller goes
    /// on. Returns 0 only at the source's end.
    virtual Result<qint64> copyFrom(File &source, qint64 sourceOffset, qint64 offset, qint64 length) = 0;
    /// Gives this file the other's owner and group. What may not be set is left out: AccessDenied then.
    virtual Result<void> takeOwner(File &source) = 0;
    /// Gives this file the other's extended attributes. An attribute that the file system refuses is left out; a full
    /// or broken disk is an error. Permissions and access list stay as they are.
    virtual Result<void> takeAttributes(File &source) = 0;
    /// Gives this file the other's permissions and access control list, which until then keep everybody else out of a
    /// new file: the last step before it gets its name. The bits that run a program as its owner are left out unless
    /// both have that owner. AccessDenied or Unsupported on a file system that has no such permissions.
    virtual Result<void> takePermissions(File &source) = 0;
    /// Gives this file the times of the last reading and writing of the other. Best effort.
    virtual void takeTimes(File &source) = 0;
    /// POSIX permission bits; on Windows only the read-only attribute, by the owner's write bit. Works on a file that
    /// is open for reading.
    virtual Result<void> setPermissions(quint32 permissions) = 0;
    /// nanoseconds since 1970, UTC.
    virtual Result<void> setModified(qint64 nanoseconds) = 0;
    /// Makes the system drop a synced file from its cache, so that the next read comes from the disk.
    virtual void forgetCached() = 0;
    /// Whether this can only be a work file of the current user, as createNew makes them: it is the user's, nobody else
    /// may read or write it, it has this one name, and the file system is one that keeps owners and permissions. False
    /// when in doubt.
    virtual Result<bool> isPrivate() = 0;
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

/// What a name itself stands for, without following a symbolic link.
enum class NodeKind
{
    File,
    Folder,
    Link, ///< a symbolic link, wherever it leads
    Other ///< a device, pipe or socket
};

struct Node
{
    NodeKind kind = NodeKind::Other;
    FileInfo info;

    /// Whether both are one and the same, be it under two names.
    bool isSameAs(const Node &other) const { return isSameAs(other.info); }
    bool isSameAs(const FileInfo &other) const { return info.inode == other.inode && info.device == other.device; }
};

/// A folder that is held open. Every name is looked up in that very folder, whatever its path leads to by now, and no
/// link is followed: neither can anybody who may write to the folder lead a call out of it. A name with a separator,
/// "." and ".." are InvalidArgument. Several threads may use a HeldFolder at once.
class HeldFolder
{
public:
    virtual ~HeldFolder() = default;

    /// The path by which it was opened; for messages and lists, never to reach anything.
    virtual QString path() const = 0;
    /// The folder's own state.
    virtual Result<FileInfo> info() = 0;
    /// What a name stands for; NotFound if it is free.
    virtual Result<Node> node(const QString &name) = 0;
    /// The names in the folder in no particular order, without "." and "..".
    virtual Result<std::vector<QString>> names() = 0;

    /// Opens an existing plain file; anything else, and a link to one, is NotAFile. Never blocks.
    virtual Result<std::unique_ptr<File>> openFile(const QString &name, OpenMode mode) = 0;
    /// Creates a file for reading and writing that only its owner may use (mode 0600); AlreadyExists if the name is
    /// taken, be it by a link that leads nowhere.
    virtual Result<std::unique_ptr<File>> createNew(const QString &name) = 0;
    /// Opens a folder in this one; anything else, and a link to one, is NotAFile.
    virtual Result<std::shared_ptr<HeldFolder>> openFolder(const QString &name) = 0;
    /// Creates a folder that only its owner may use (mode 0700) and opens it. AlreadyExists if the name is taken;
    /// ChangedMeanwhile if somebody exchanged it before it was open.
    virtual Result<std::shared_ptr<HeldFolder>> createFolder(const QString &name) = 0;
    /// Creates a link with the same text, owner and times as the one of that name in source, as far as possible.
    /// AlreadyExists if the new name is taken, NotAFile if the other is no link.
    virtual Result<void> copyLink(HeldFolder &source, const QString &name, const QString &newName) = 0;

    /// Puts what has the name in the place of what has newName in the folder to, in one step: a reader always sees the
    /// old one or the new one. Unsupported unless both folders are on one file system.
    virtual Result<void> replace(const QString &name, HeldFolder &to, const QString &newName) = 0;
    /// Renames a file, folder or link like FileSystem::renameNew.
    virtual Result<void> renameNew(const QString &name, HeldFolder &to, const QString &newName) = 0;
    /// Removes a file or link. A link is removed itself.
    virtual Result<void> remove(const QString &name) = 0;
    /// Removes an empty folder; AlreadyExists if something is in it, NotFound for a file or a link.
    virtual Result<void> removeFolder(const QString &name) = 0;

    /// Gives this folder the other's owner, group, permissions, extended attributes, access control lists and times.
    /// What the system or the file system refuses is left out; a full or broken disk is an error.
    virtual Result<void> takeAttributes(HeldFolder &source) = 0;
    /// Returns once the folder's own entries (creations, renames) are on the disk.
    virtual Result<void> sync() = 0;
    /// Takes the folder's advisory lock until it is closed, like File::tryLock. Unsupported where folders have no
    /// locks.
    virtual Result<bool> tryLock()
    {
        return tl::unexpected(Error{ErrorCode::Unsupported, path(), QStringLiteral("folders have no locks here")});
    }
};

/// A name in a held folder. Once it is made, the path that led there plays no part any more.
struct Place
{
    std::shared_ptr<HeldFolder> folder;
    QString name;

    /// For messages and lists.
    QString path() const { return inFolder(folder->path(), name); }
};

/// Nothing here changes the mode, the owner, the times or the attributes of what a path leads to, and nothing removes
/// or replaces it: somebody else may exchange it at any time. File and HeldFolder do that.
class FileSystem
{
public:
    virtual ~FileSystem() = default;

    /// The operating system's own.
    static FileSystem &native();

    /// Opens an existing file, following symbolic links. Never blocks on a pipe or device: those are NotAFile.
    virtual Result<std::unique_ptr<File>> open(const QString &path, OpenMode mode) = 0;
    /// Follows symbolic links.
    virtual Result<FileInfo> info(const QString &path) = 0;
    /// The path with every symbolic link resolved; the file has to exist.
    virtual Result<QString> canonicalPath(const QString &path) = 0;
    /// Opens a folder and holds it. Links in the path are resolved once; one that is put there meanwhile is
    /// ChangedMeanwhile. What is not a folder is NotAFile. A folder that may be searched but not listed can be held,
    /// too; then names() and sync() are AccessDenied.
    virtual Result<std::shared_ptr<HeldFolder>> openFolder(const QString &path) = 0;
    /// Where the file at path really is: follows the links at the path's end as well, and holds the last one's folder.
    /// The file has to exist. A link at the end that belongs to another user (other than the system's own) is
    /// AccessDenied: it may have been put there to have the current user change a file that its owner could not.
    virtual Result<Place> follow(const QString &path) = 0;
    /// Renames a file, folder or symbolic link, but never in the place of another: AlreadyExists if the new name is
    /// taken, even by a folder or a link that leads nowhere. Unsupported unless both paths are on one file system.
    /// Where the file system ignores case, a name that differs in case alone is taken, by the file itself.
    virtual Result<void> renameNew(const QString &from, const QString &to) = 0;
    /// Creates one folder for the user; AlreadyExists if the name is taken, NotFound if the folder above is missing.
    virtual Result<void> createFolder(const QString &path) = 0;
    /// Bytes that the current user may still write on the file system that holds path.
    virtual Result<qint64> freeBytes(const QString &path) = 0;
    /// The names in a folder in no particular order, without "." and "..".
    virtual Result<std::vector<QString>> names(const QString &folder) = 0;
    /// The owner that files created now get, and the group that they usually get (a folder may give its own).
    virtual quint32 currentUser() = 0;
    virtual quint32 currentGroup() = 0;
};

} // namespace ravlin::platform
