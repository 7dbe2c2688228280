// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/programstate.h"
#include "core/files/list/folderscan.h"
#include "core/platform/filesystem.h"

/// What the main window does about its folder and list, without the window.
namespace ravlin {

/// Makes a folder the current one: its path as chosen, the path with the separator at its end, and its drive's free
/// space (0 when the system doesn't tell). Another folder than before clears the cancelled flag.
void enterFolder(ProgramState &state, const QString &chosenPath, platform::FileSystem &fileSystem);

/// The rows for the list of a folder; a folder that can't be listed has none. What an interrupted rename left under a
/// name for the time being gets its former name back. May run on any thread.
Listing RefreshList(const QString &currentFolder, const ScanOptions &options = {});
/// The same with all folders below it.
Listing RefreshListTree(const QString &currentFolder, const ScanOptions &options = {});

/// What the two panels of the status bar show.
struct StatusTexts
{
    QString panel1; ///< how many files there are
    QString panel2; ///< the path of the list's current file
};

/// filesWord: the language's word for files. Without rows both are empty; without a current row the second one is.
StatusTexts statusTexts(
    int rowCount, const QString &filesWord, const QString &currentFolder, const QString &currentRowText);

} // namespace ravlin
