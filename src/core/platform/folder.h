// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

#include <memory>
#include <stop_token>
#include <utility>
#include <vector>

namespace ravlin::platform {

/// What a name in a folder stands for; for a symbolic link, what the link leads to.
enum class EntryKind
{
    File,
    Folder,
    Other
};

struct FolderEntry
{
    QString name;
    EntryKind kind = EntryKind::Other;
    bool isHidden = false; ///< hidden or system attribute; on POSIX a leading full stop
};

/// An open folder: lists its entries and opens its files without walking the whole path for each. info() and openFile()
/// may be called by several threads at once. A folder that is renamed meanwhile stays open under its new name, except
/// on Windows, where an open handle would keep the folders above from being renamed.
class Folder
{
public:
    /// Errors: NotFound, NotAFile (not a folder), AccessDenied, Io.
    static Result<Folder> open(const QString &path);
    Folder(Folder &&other) noexcept;
    Folder &operator=(Folder &&other) noexcept;
    ~Folder();

    /// The entries in the file system's order, without "." and "..". If a stop is requested, those found so far.
    Result<std::vector<FolderEntry>> entries(const std::stop_token &stop = {}) const;
    /// Whether the folder holds at least one folder that is not hidden. Reads no further than the first.
    Result<bool> hasVisibleSubfolder() const;
    /// The state of what a name stands for, following a symbolic link. One system call.
    Result<FileInfo> info(const QString &name) const;
    /// Opens a plain file of this folder for reading; errors as those of FileSystem::open.
    Result<std::unique_ptr<File>> openFile(const QString &name) const;
    /// Whether no folder of the same drive lies above it. False if that can't be found out.
    bool isTopOfDrive() const;
    /// Device and inode: equal for one folder reached by different paths.
    std::pair<quint64, quint64> identity() const;

private:
    struct Native;
    explicit Folder(std::unique_ptr<Native> native);

    std::unique_ptr<Native> m_native;
};

} // namespace ravlin::platform
