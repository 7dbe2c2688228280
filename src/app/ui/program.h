#pragma once

#include "app/idiomas.h"
#include "app/programstate.h"
#include "app/settings.h"
#include "files/tagcache.h"
#include "naming/sessionchoices.h"
#include "platform/filesystem.h"
#include "tags/tagstore.h"

namespace ravlin {

/// What lives for the whole run. Made once, in main(), and passed by reference; used by the interface thread, and by
/// the one operation that it waits for.
struct Program
{
    Settings settings;
    Captions captions;
    ProgramState state;
    SessionChoices choices;
    TagCache tagCache;
    platform::FileSystem &fileSystem = platform::FileSystem::native();
    TagStore tagStore{state, fileSystem};
};

} // namespace ravlin
