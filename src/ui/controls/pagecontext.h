// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

namespace ravlin::history {
class History;
} // namespace ravlin::history

namespace ravlin {

class Captions;
class PageOwner;
class Settings;
class TagStore;
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
    history::History *history = nullptr; ///< records changes; nullptr: nothing does
};

} // namespace ravlin
