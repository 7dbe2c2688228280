// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

/// The file "directorysizes" of a trash by freedesktop.org's trash specification 1.0: how much room each folder in the
/// trash takes, so that desktops need not measure it. Only a cache, which may be missing or wrong, so nothing here
/// reports failures, and a file that makes no sense begins anew.
namespace ravlin::platform {

/// Measures a folder that has come into the trash and notes its size. trash: the user's own, with "files" and "info".
void noteFolderSize(HeldFolder &trash, const QString &name);
/// Removes the note of a folder that has left the trash.
void forgetFolderSize(HeldFolder &trash, const QString &name);

} // namespace ravlin::platform
