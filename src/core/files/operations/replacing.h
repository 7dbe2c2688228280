// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/trash.h"
#include "core/storage/copyfile.h"

#include <functional>
#include <optional>

namespace ravlin {

/// What became of the file or link whose place was taken, if any was.
struct Replaced
{
    std::optional<platform::TrashedItem> trashed = {};
    bool isLost = false;
};

/// Gives something its name by calling place(), which may not change anything when it fails. If it replaces what bears
/// the name, that goes into the trash first and comes back if place() fails. Where there is no trash, or no room in it,
/// it is lost. If it can't be put into the trash for another reason, nothing is placed. For any thread.
Result<Replaced> putInPlace(
    const platform::Place &target, bool replaces, const std::function<Result<void>(storage::Placing)> &place);

} // namespace ravlin
