// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/list/currentfolder.h"

#include "core/files/list/listcolumns.h"
#include "core/storage/saferename.h"

namespace ravlin {

namespace {

constexpr qint64 BytesPerMegabyte = 1024 * 1024;

/// Gives files of interrupted renames their names back. Returns whether there were any: then list again. After a stop
/// it leaves that to the next listing.
bool broughtBack(const Result<Listing> &listing)
{
    bool any = false;
    if (listing && listing->isComplete) {
        for (const QString &folder : listing->interruptedRenames) {
            const auto done = storage::bringBackAside(platform::FileSystem::native(), folder);
            any = any || (done && !done->empty());
        }
    }
    return any;
}

} // namespace

void enterFolder(ProgramState &state, const QString &chosenPath, platform::FileSystem &fileSystem)
{
    if (chosenPath != state.currentFolderAsChosen)
        state.cancelled = false;
    state.currentFolderAsChosen = chosenPath;
    state.currentFolder = platform::withEndSeparator(chosenPath);
    state.freeMegabytes = fileSystem.freeBytes(state.currentFolder).value_or(0) / BytesPerMegabyte;
}

Listing RefreshList(const QString &currentFolder, const ScanOptions &options)
{
    Result<Listing> listing = ListFolder(currentFolder, QString(), options);
    if (broughtBack(listing))
        listing = ListFolder(currentFolder, QString(), options);
    return std::move(listing).value_or(Listing());
}

Listing RefreshListTree(const QString &currentFolder, const ScanOptions &options)
{
    Result<Listing> listing = ListFolderTree(currentFolder, options);
    if (broughtBack(listing))
        listing = ListFolderTree(currentFolder, options);
    return std::move(listing).value_or(Listing());
}

StatusTexts statusTexts(
    int rowCount, const QString &filesWord, const QString &currentFolder, const QString &currentRowText)
{
    if (rowCount == 0)
        return {};
    StatusTexts texts;
    texts.panel1 = QString::number(rowCount) + u' ' + filesWord;
    if (!currentRowText.isEmpty())
        texts.panel2 = shownName(currentFolder + currentRowText);
    return texts;
}

} // namespace ravlin
