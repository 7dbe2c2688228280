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

/// Remembers what the file list read from files, so that listing a folder again reads only the files that changed.
///
/// A file counts as unchanged when its folder's path, name, identity, size and both time stamps are what they were
/// right before it was read. The time of the last change (ctime) is among them because programs that keep the time of
/// modification (ravlin! does when it undoes a write) can't keep that one. A time stamp can hide a change only that
/// falls into the same tick of the file system's clock; so a file whose last change was too close to its reading is not
/// remembered (isSettled).
///
/// Folders that were listed longest ago are forgotten when the number of files passes the capacity. Used by one thread
/// at a time.
class TagCache
{
public:
    /// Enough for a large collection; a file takes 64 bytes besides the texts that it shares with its row.
    static constexpr std::size_t DefaultCapacity = 300'000;

    /// By what an unchanged file is recognised.
    struct FileState
    {
        qint64 size = -1; ///< below 0: not known, equals no file's
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

    /// Whether any later change to the file must give it a new time of change. now: nanoseconds since 1970, not after
    /// the moment in which info was asked for.
    static bool isSettled(const platform::FileInfo &info, qint64 now);

    /// Takes a folder's entries out, in the order in which they were put in; empty for an unknown folder.
    Entries take(const QString &folderPath);
    /// Puts a folder's entries in, in the place of older ones. More than the capacity are not kept.
    void put(const QString &folderPath, Entries entries);
    void clear();
    /// How many files are remembered.
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
