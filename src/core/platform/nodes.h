// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

/// Looks at what a path itself names, without following a symbolic link there. To act on it, hold its folder.
namespace ravlin::platform {

Result<Node> nodeAt(const QString &path);
/// Whether the name is taken, be it by a link that leads nowhere. What cannot be examined counts as taken.
bool isTaken(const QString &path);
/// Whether nothing can be written on the drive that holds the path's folder. False if it can't be told.
bool isOnReadOnlyDrive(const QString &path);
/// Whether the path's folder is, or may be, on another computer's drive. False if it can't be told.
bool isOnNetwork(const QString &path);

} // namespace ravlin::platform
