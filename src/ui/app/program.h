// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/idiomas.h"
#include "core/app/programstate.h"
#include "core/app/qttexts.h"
#include "core/app/settings.h"
#include "core/files/list/tagcache.h"
#include "core/files/operations/undo.h"
#include "core/naming/sessionchoices.h"
#include "core/platform/filesystem.h"
#include "core/tags/store/tagstore.h"
#include "ui/controls/pagecontext.h"

namespace ravlin {

/// What lives for the whole run. Made once, in main(), and passed by reference; used by the interface thread, and by
/// the one operation that it waits for.
struct Program
{
    Settings settings;
    Captions captions;
    QtTexts qtTexts;
    ProgramState state;
    SessionChoices choices;
    TagCache tagCache;
    UndoHistory undoHistory;
    platform::FileSystem &fileSystem = platform::FileSystem::native();
    TagStore tagStore{state, fileSystem};

    PageContext pageContext(PageOwner &owner)
    {
        return {owner, state, tagStore, captions, settings, fileSystem, &undoHistory};
    }
};

/// Makes a language the one of the interface, by its name; one that is none changes nothing but the name. Windows show
/// it when they next apply their captions.
inline void speakLanguage(Program &program, const QString &languageName)
{
    program.captions.setLanguageName(languageName);
    program.captions.fill();
    program.qtTexts.speak(languageName);
}

} // namespace ravlin
