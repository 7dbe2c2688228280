// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

namespace ravlin {

class Captions;
class PageOwner;
class Settings;
class TagStore;
class UndoHistory;
struct ProgramState;

/// What the pages of the working modes and their windows work with. All of it outlives them.
struct PageContext
{
    PageOwner &owner;
    ProgramState &state;
    TagStore &tagStore;
    const Captions &captions;
    Settings &settings; ///< where the lists of used patterns live
    platform::FileSystem &fileSystem = platform::FileSystem::native();
    UndoHistory *undoHistory = nullptr; ///< records renames; nullptr: nothing does
};

} // namespace ravlin
