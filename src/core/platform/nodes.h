// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

/// What stands under a path itself, without following a symbolic link there; for copying, moving and deleting trees.
namespace ravlin::platform {

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

    /// Whether both are one and the same, also under two names.
    bool isSameAs(const Node &other) const
    {
        return info.inode == other.info.inode && info.device == other.info.device;
    }
};

Result<Node> nodeAt(const QString &path);
/// Whether the name is taken, also by a link that leads nowhere. What can't be looked at counts as taken.
bool isTaken(const QString &path);

/// Makes a new symbolic link with the very text of the one at from; AlreadyExists when the name is taken.
Result<void> copyLink(const QString &from, const QString &to);

/// Gives the file, folder or link at to what can be had of the other's owner, group, permissions, extended attributes,
/// access control lists and times. What the system or the file system refuses (another owner, permissions on a memory
/// stick) is left out; a full or broken disk is an error. The bits that run a program as its owner are not given
/// without that owner.
Result<void> takeAttributes(const QString &from, const QString &to);

/// Lets the system forget what it keeps of a synced file in memory, so that reading it comes from the disk.
void forgetCached(const QString &path);

} // namespace ravlin::platform
