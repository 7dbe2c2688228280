// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/list/listrow.h"
#include "core/platform/filesystem.h"

#include <QHash>
#include <QString>

#include <cstddef>
#include <map>
#include <vector>

namespace ravlin {

/// Remembers what the file list read from files, so that listing a folder again reads only files that changed.
///
/// A file is unchanged if its folder's path, name, identity, size and both time stamps are what they were just before
/// it was read. The time of change (ctime) is one of them: a program can restore the time of modification, as ravlin!
/// does when it undoes a write, but not that one. A time stamp hides a change within the same tick of the file system's
/// clock, so a file that changed too shortly before it was read is not remembered (isSettled).
///
/// If there are more files than the capacity, forgets the folders listed longest ago. Used by one thread at a time.
class TagCache
{
public:
    /// Enough for a large collection. A file takes 64 bytes besides the texts that it shares with its row.
    static constexpr std::size_t DefaultCapacity = 300'000;

    /// What identifies an unchanged file.
    struct FileState
    {
        qint64 size = -1; ///< below 0: not known, differs from every file's
        qint64 modified = 0;
        qint64 changed = 0;
        quint64 inode = 0;
        quint64 device = 0;

        FileState() = default;
        explicit FileState(const platform::FileInfo &info)
            : size(info.size), modified(info.modified), changed(info.changed), inode(info.inode), device(info.device)
        {
        }
        bool operator==(const FileState &) const = default;
    };
    struct Entry
    {
        FileState state;
        ListedFile file;
    };
    using Entries = std::vector<Entry>;

    explicit TagCache(std::size_t capacity = DefaultCapacity) : m_capacity(capacity) {}

    /// Whether any later change must give the file a new time of change. now: nanoseconds since 1970, not after info
    /// was read.
    static bool isSettled(const platform::FileInfo &info, qint64 now);

    /// Removes and returns a folder's entries, in the order given to put(); empty for an unknown folder.
    Entries take(const QString &folderPath);
    /// Replaces a folder's entries. Keeps none if they are more than the capacity.
    void put(const QString &folderPath, Entries entries);
    void clear();
    /// The number of files.
    std::size_t size() const { return m_size; }

private:
    struct Folder
    {
        Entries entries;
        quint64 lastUse = 0;
    };

    const std::size_t m_capacity;
    std::size_t m_size = 0;
    quint64 m_clock = 0; ///< counts uses
    QHash<QString, Folder> m_folders;
    std::map<quint64, QString> m_byLastUse;
};

} // namespace ravlin
