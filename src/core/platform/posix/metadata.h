// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/error.h"

/// Owner, permissions, times, extended attributes and access lists (which are attributes too, acl(5)) of what is open.
/// from and to are descriptors; path, that of to, is for error values only. An attribute that the system or the file
/// system refuses is left out; a full or broken disk is an error.
namespace ravlin::platform {

/// Failures that must not pass in silence where attributes are copied as far as possible.
bool isDamage(int number);

/// Does what it may; AccessDenied if that is not all.
Result<void> copyOwner(int from, int to, const QString &path);
/// All extended attributes but the access lists.
Result<void> copyAttributes(int from, int to, const QString &path);
/// Permissions and access lists. The bits that run a program as its owner or group only if these are the same.
Result<void> copyPermissions(int from, int to, const QString &path);
Result<void> copyTimes(int from, int to, const QString &path);

/// Does the work of File::isPrivate.
Result<bool> isPrivateFile(int descriptor, const QString &path);
/// Whether the open folder can be one that this user has just created for himself.
bool mayBeOwnFolder(int descriptor);

} // namespace ravlin::platform
