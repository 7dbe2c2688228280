// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/programstate.h"
#include "core/files/list/folderscan.h"
#include "core/platform/filesystem.h"

/// The main window's rules for its folder and list.
namespace ravlin {

/// Makes a folder the current one: sets its path as chosen, the path with the separator at its end, and its drive's
/// free space (0 if unknown). Clears the cancelled flag if the folder is another one.
void enterFolder(ProgramState &state, const QString &chosenPath, platform::FileSystem &fileSystem);

/// Lists a folder; one that can't be listed has no rows. Gives files that an interrupted rename left under a temporary
/// name their former names back. May run on any thread.
Listing RefreshList(const QString &currentFolder, const ScanOptions &options = {});
/// The same with all folders below it.
Listing RefreshListTree(const QString &currentFolder, const ScanOptions &options = {});

/// The texts of the status bar.
struct StatusTexts
{
    QString panel1; ///< how many files there are
    QString panel2; ///< the path of the list's current file
};

/// filesWord: the language's word for files. Both are empty without rows, the second without a current row.
StatusTexts statusTexts(
    int rowCount, const QString &filesWord, const QString &currentFolder, const QString &currentRowText);

} // namespace ravlin
