// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/error.h"

#include <QString>

namespace ravlin::platform {

/// Something that was put into the trash, and how to get it back.
struct TrashedItem
{
    QString original; ///< where it was
    QString file;     ///< where it is now
    QString info;     ///< the file beside it that tells desktops where it was and when it was deleted
};

/// The desktop's trash, as freedesktop.org's trash specification 1.0 lays it out. What is on the drive of the home
/// folder goes into the home trash; what is elsewhere into the trash at the top of its own drive, so that nothing is
/// ever copied. Links go as links. May be used from any thread.
///
/// Errors of moveToTrash: NoTrash when the drive has none and none can be made there; NotFound; AccessDenied and others
/// when the file or folder can't be moved. It is where it was then.
Result<TrashedItem> moveToTrash(const QString &path);

/// Whether moveToTrash would find a trash for it, without making one where it can be told before.
bool hasTrash(const QString &path);

/// Puts it back. AlreadyExists when its name is taken by now, NotFound when it is gone from the trash or the folder
/// that it was in is gone.
Result<void> restoreFromTrash(const TrashedItem &item);

} // namespace ravlin::platform
