// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/operations/replacing.h"
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
    platform::Place source;
    platform::Place target;
    platform::Node node;
    std::size_t level = 0; ///< for FolderCopy
};

/// Copies files of one request. Several files wait for the disk at once, each on a thread of its own: one after the
/// other they would take several times as long.
class CopyQueue
{
public:
    CopyQueue(storage::CopyWatch watch, storage::CopyCheck check) : m_watch(std::move(watch)), m_check(check) {}

    /// Begins the copy, or returns why it cannot begin. settle() returns how it ended. item: for the report; null: the
    /// name is free.
    Result<void> add(const CopiedNode &copied, const TransferItem *item);
    bool isFull() const { return m_pending.size() >= Most; }

    struct Settled
    {
        CopiedNode copied;
        const TransferItem *item = nullptr;
        Result<Replaced> outcome;
    };
    /// Waits for all copies that were begun and returns them in that order.
    std::vector<Settled> settle();

private:
    struct Pending
    {
        Settled result;
        storage::FileCopy copy;
        std::future<Result<Replaced>> outcome; ///< last: its destructor waits for the thread, which uses the rest
    };
    static constexpr std::ptrdiff_t MostWaiting = 8; ///< for the disk at once
    static constexpr std::size_t Most = 64;          ///< files open at once: two descriptors each, and their folders'

    const storage::CopyWatch m_watch;
    const storage::CopyCheck m_check;
    std::counting_semaphore<MostWaiting> m_mayWait{MostWaiting};
    std::list<Pending> m_pending; ///< a list: threads hold addresses of its elements
};

/// Copies a folder with its contents into an existing empty folder, all or nothing. Goes from folder to folder by
/// handle, so nothing that is exchanged meanwhile leads it elsewhere.
class FolderCopy
{
public:
    /// source: the folder to copy, by its place. target: the empty folder.
    FolderCopy(
        CopyQueue &queue, platform::Place source, std::shared_ptr<platform::HeldFolder> target, std::stop_token stop)
        : m_queue(queue), m_place(std::move(source)), m_target(std::move(target)), m_stop(std::move(stop))
    {
    }

    /// Also sets and syncs the folders' attributes. After an error the caller discards the target.
    Result<void> copy();
    /// Deletes what was copied of the source, unless it has changed.
    Result<void> removeSource();

private:
    using FolderPointer = std::shared_ptr<platform::HeldFolder>;
    struct CopiedName
    {
        QString name;
        platform::Node node;
    };
    /// One folder of the tree. Not held open: there may be more of them than a program may have open.
    struct Level
    {
        std::size_t above = 0; ///< of the folder that holds it; the first one is the source itself
        QString name;
        platform::FileInfo source; ///< which folder it was when it was copied
        platform::FileInfo target;
        std::vector<CopiedName> copied; ///< files and links
    };
    enum class Side
    {
        Source,
        Target
    };

    Result<void> fill(std::size_t level, const FolderPointer &source, const FolderPointer &target);
    Result<void> take(std::size_t level, const CopiedNode &found);
    Result<void> takeFolder(std::size_t level, const CopiedNode &entry);
    Result<void> settle();
    Result<void> finishFolders();
    /// Opens a folder of the tree again, from the root down; ChangedMeanwhile if it is not the one that was copied.
    Result<FolderPointer> reopen(std::size_t level, Side side) const;

    CopyQueue &m_queue;
    const platform::Place m_place;
    FolderPointer m_source;
    const FolderPointer m_target;
    const std::stop_token m_stop;
    std::vector<Level> m_levels; ///< inner folders after outer ones
};

/// Deletes a file or link that was copied; ChangedMeanwhile if it is no longer what was copied.
Result<void> removeCopied(platform::HeldFolder &folder, const QString &name, const platform::Node &copied);

} // namespace ravlin
