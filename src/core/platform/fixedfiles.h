// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace ravlin::platform {

/// The path of a file that the program keeps under one fixed name for other programs to open: in a folder of its own
/// in the user's cache, which is made if need be. Never in a folder that others can write to, where somebody could
/// put a file or link of that name first.
QString fixedFilePath(const QString &name);

/// The permissions that a new file gets by the user's choice (umask).
quint32 newFilePermissions();

} // namespace ravlin::platform
