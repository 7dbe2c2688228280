// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/operations/transfer.h"
#include "core/storage/copyfile.h"

#include <deque>
#include <future>
#include <list>
#include <semaphore>

/// How runTransfer() copies; only for transferrun.cpp.
namespace ravlin {

/// Something copied that a move will delete once all of it is safe. Keeps the state that was copied: nothing that has
/// changed since is deleted.
struct CopiedNode
{
    QString source;
    QString target;
    platform::Node node;
};

/// Copies files of one request. Several files wait for the disk at once, each on a thread of its own: one after the
/// other they would take several times as long.
class CopyQueue
{
public:
    CopyQueue(platform::FileSystem &fileSystem, storage::CopyWatch watch, storage::CopyCheck check)
        : m_fileSystem(fileSystem), m_watch(std::move(watch)), m_check(check)
    {
    }

    /// Begins the copy, or returns why it cannot begin. settle() returns how it ended.
    Result<void> add(const CopiedNode &copied, const QString &tag, bool replaces);
    bool isFull() const { return m_pending.size() >= Most; }

    struct Settled
    {
        CopiedNode copied;
        QString tag;
        bool replaced = false;
        Result<void> outcome;
    };
    /// Waits for all copies that were begun and returns them in that order.
    std::vector<Settled> settle();

private:
    struct Pending
    {
        Settled result;
        storage::FileCopy copy;
        std::future<Result<void>> outcome; ///< last: its destructor waits for the thread, which uses the rest
    };
    static constexpr std::ptrdiff_t MostWaiting = 8; ///< for the disk at once
    static constexpr std::size_t Most = 64;          ///< files open at once: two descriptors each

    platform::FileSystem &m_fileSystem;
    const storage::CopyWatch m_watch;
    const storage::CopyCheck m_check;
    std::counting_semaphore<MostWaiting> m_mayWait{MostWaiting};
    std::list<Pending> m_pending; ///< a list: threads hold addresses of its elements
};

/// Copies a folder with its contents into an existing empty folder, all or nothing.
class FolderCopy
{
public:
    FolderCopy(platform::FileSystem &fileSystem, CopyQueue &queue, std::stop_token stop)
        : m_fileSystem(fileSystem), m_queue(queue), m_stop(std::move(stop))
    {
    }

    /// Also sets and syncs the folders' attributes. After an error the caller discards the target.
    Result<void> copy(const CopiedNode &folder);
    /// Deletes what was copied of the source, unless it has changed.
    Result<void> removeSource();

private:
    Result<void> fill(const CopiedNode &folder);
    Result<void> take(const CopiedNode &entry);
    Result<void> settle();
    Result<void> finishFolders();

    platform::FileSystem &m_fileSystem;
    CopyQueue &m_queue;
    const std::stop_token m_stop;
    std::deque<CopiedNode> m_folders; ///< innermost first
    std::vector<CopiedNode> m_others; ///< files and links
};

/// Deletes a file or link that was copied; ChangedMeanwhile if it is no longer what was copied.
Result<void> removeCopied(platform::FileSystem &fileSystem, const CopiedNode &copied);

} // namespace ravlin
