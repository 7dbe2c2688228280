// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

/// What a path itself names, without following a symbolic link there; for copying, moving and deleting trees.
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

    /// Whether both are one and the same, be it under two names.
    bool isSameAs(const Node &other) const
    {
        return info.inode == other.info.inode && info.device == other.info.device;
    }
};

Result<Node> nodeAt(const QString &path);
/// Whether the name is taken, be it by a link that leads nowhere. What cannot be examined counts as taken.
bool isTaken(const QString &path);

/// Creates a symbolic link with the same text as the one at from; AlreadyExists if the name is taken.
Result<void> copyLink(const QString &from, const QString &to);

/// Copies owner, group, permissions, extended attributes, access control lists and times to the file, folder or link at
/// to, as far as possible. What the system or the file system refuses (another owner, permissions on a memory stick) is
/// left out; a full or broken disk is an error. The bits that run a program as its owner are copied only with that
/// owner.
Result<void> takeAttributes(const QString &from, const QString &to);

/// Makes the system drop a synced file from its cache, so that the next read comes from the disk.
void forgetCached(const QString &path);

} // namespace ravlin::platform
