// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace ravlin {

/// The folder that a command line names, as text: quotes around it are taken off, and a name that ends in ".mp3" is cut
/// back to the folder that holds the file, the separator included (a name without any separator from its second
/// character on is cut to its first character). Any other text is a folder's path as it stands. Nothing is looked up on
/// the disk.
QString folderOfCommandLine(const QString &commandLine);

} // namespace ravlin
