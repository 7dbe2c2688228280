#pragma once

#include "app/idiomas.h"
#include "app/programstate.h"
#include "app/qttexts.h"
#include "app/settings.h"
#include "files/tagcache.h"
#include "files/undo.h"
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
    QtTexts qtTexts;
    ProgramState state;
    SessionChoices choices;
    TagCache tagCache;
    UndoHistory undoHistory;
    platform::FileSystem &fileSystem = platform::FileSystem::native();
    TagStore tagStore{state, fileSystem};
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
