// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/operations/replacing.h"

namespace ravlin {

namespace {

/// Whether what is there is to be replaced nevertheless, as the user has wished.
bool isLackOfTrash(ErrorCode code)
{
    return code == ErrorCode::NoTrash || code == ErrorCode::NoSpace;
}

} // namespace

Result<Replaced> putInPlace(
    const platform::Place &target, bool replaces, const std::function<Result<void>(storage::Placing)> &place)
{
    if (!replaces)
        return place(storage::Placing::New).map([] { return Replaced(); });
    const auto trashed = platform::moveToTrash(target);
    if (!trashed && trashed.error().code == ErrorCode::NotFound) // somebody has removed it meanwhile
        return place(storage::Placing::New).map([] { return Replaced(); });
    if (!trashed && isLackOfTrash(trashed.error().code))
        return place(storage::Placing::InPlaceOf).map([] { return Replaced{.isLost = true}; });
    if (!trashed)
        return tl::unexpected(trashed.error());
    const auto placed = place(storage::Placing::New);
    if (placed)
        return Replaced{.trashed = *trashed};
    static_cast<void>(platform::restoreFromTrash(*trashed)); // if its name is taken by now, the trash keeps it
    return tl::unexpected(placed.error());
}

} // namespace ravlin
