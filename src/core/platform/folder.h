// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

#include <memory>
#include <stop_token>
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
    bool isHidden = false; ///< hidden or system: on POSIX a leading full stop
};

/// An open folder: lists its entries and opens its files without walking the whole path for each. Entries may be opened
/// by several threads at once. A folder that is renamed meanwhile stays open under its new name.
class Folder
{
public:
    virtual ~Folder() = default;

    /// Errors: NotFound, NotAFile (no folder), AccessDenied, Io.
    static Result<std::unique_ptr<Folder>> open(const QString &path);

    /// The entries in the order in which the file system tells them, without "." and "..". Those found so far when a
    /// stop is requested.
    virtual Result<std::vector<FolderEntry>> entries(const std::stop_token &stop = {}) = 0;
    /// Whether there is at least one folder in it that is not hidden; reads no further than to the first.
    virtual Result<bool> hasVisibleSubfolder() = 0;
    /// What a name stands for; for a symbolic link, what the link leads to. One call of the system.
    virtual Result<FileInfo> info(const QString &name) = 0;
    /// Opens a plain file of this folder for reading; errors as those of FileSystem::open.
    virtual Result<std::unique_ptr<File>> openFile(const QString &name) = 0;
    /// Tells folders apart that are reached by different paths: device and inode.
    virtual std::pair<quint64, quint64> identity() const = 0;
};

} // namespace ravlin::platform
