// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

#include <QString>

namespace ravlin::platform {

/// Something in the trash, and how to get it back.
struct TrashedItem
{
    QString original; ///< where it was
    QString file;     ///< where it is now
    QString info;     ///< the file that records for desktops where it was and when it was deleted
};

/// Puts a file, folder or link into the desktop's trash: on Windows the recycle bin, elsewhere the trash of
/// freedesktop.org's trash specification 1.0. What is on the drive of the home folder goes into the home trash, the
/// rest into the trash at the top of its own drive, so that nothing is ever copied. For any thread.
///
/// Errors: NoTrash if the drive has none and none can be made there; NoSpace if the drive is too full for it;
/// ReadOnlyDrive; NotFound; AccessDenied and others if it cannot be moved. After an error it is where it was, and no
/// new folder of a trash is left.
Result<TrashedItem> moveToTrash(const QString &path);
/// The same for a name in a held folder. ChangedMeanwhile if the folder's path leads to another folder by now.
Result<TrashedItem> moveToTrash(const Place &place);

/// Whether moveToTrash would find a trash for the path. Creates nothing.
bool hasTrash(const QString &path);

/// Puts it back. AlreadyExists if its name has been taken since; NotFound if it is gone from the trash, or its folder
/// is gone.
Result<void> restoreFromTrash(const TrashedItem &item);

} // namespace ravlin::platform
