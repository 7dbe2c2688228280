// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/idiomas.h"
#include "core/app/programstate.h"
#include "core/app/qttexts.h"
#include "core/app/settings.h"
#include "core/files/list/tagcache.h"
#include "core/history/history.h"
#include "core/naming/sessionchoices.h"
#include "core/platform/filesystem.h"
#include "core/tags/store/tagstore.h"
#include "ui/controls/pagecontext.h"

class QWidget;

namespace ravlin {

class Busy;
class FileList;
class FolderTree;
class ListController;
class PageOwner;
class StatusPanels;
class Toolbar;

/// What lives for the whole run. Made once, in main(), and passed by reference; used by the interface thread and by the
/// one operation that it waits for.
struct Program
{
    Settings settings;
    Captions captions;
    QtTexts qtTexts;
    ProgramState state;
    SessionChoices choices;
    TagCache tagCache;
    platform::FileSystem &fileSystem = platform::FileSystem::native();
    history::History history{fileSystem};
    TagStore tagStore{state, fileSystem, &history};

    PageContext pageContext(PageOwner &owner)
    {
        return {owner, state, tagStore, captions, settings, fileSystem, &history};
    }
};

/// The main window and its parts, for whatever acts on several of them. All outlive it.
struct WindowParts
{
    Program &program;
    QWidget *window;
    Toolbar &toolbar;
    FolderTree &tree;
    FileList &list;
    StatusPanels &status;
    Busy &busy;
    ListController &lister;
    PageOwner &owner;
};

/// Makes the interface speak a language, by its name; an unknown name changes nothing but the name. Windows show it
/// when they next apply their captions.
inline void speakLanguage(Program &program, const QString &languageName)
{
    program.captions.setLanguageName(languageName);
    program.captions.fill();
    program.qtTexts.speak(languageName);
}

} // namespace ravlin
