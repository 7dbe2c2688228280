// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

namespace ravlin::storage {

/// Deletes a file, a link, or a folder with everything in it, for good. Links are deleted, never followed. Ends at the
/// first error; the error's path tells where.
Result<void> removeTree(platform::FileSystem &fileSystem, const QString &path);

} // namespace ravlin::storage
