// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

namespace ravlin {

class Captions;
class PageOwner;
class Settings;
class TagStore;
struct ProgramState;
class UndoHistory;

/// What the pages that work on names, and their windows, work with. All of it outlives them.
struct NamingContext
{
    PageOwner &owner;
    ProgramState &state;
    TagStore &tagStore;
    const Captions &captions;
    Settings &settings; ///< for the patterns used before
    platform::FileSystem &fileSystem = platform::FileSystem::native();
    UndoHistory *undoHistory = nullptr; ///< is told of renames, where there is one
};

} // namespace ravlin
