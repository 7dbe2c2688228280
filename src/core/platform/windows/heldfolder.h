// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

/// Folders behind a handle.
namespace ravlin::platform {

/// Does the work of FileSystem::openFolder.
Result<std::shared_ptr<HeldFolder>> openHeldFolder(const QString &path);
/// Does the work of FileSystem::follow.
Result<Place> followLinks(const QString &path);

} // namespace ravlin::platform
