#include "files/currentfolder.h"

#include "files/listcolumns.h"

namespace ravlin {

namespace {

constexpr qint64 BytesPerMegabyte = 1024 * 1024;

} // namespace

void enterFolder(ProgramState &state, const QString &chosenPath, platform::FileSystem &fileSystem)
{
    if (chosenPath != state.currentFolderAsChosen)
        state.cancelled = false;
    state.currentFolderAsChosen = chosenPath;
    state.currentFolder = chosenPath;
    if (!state.currentFolder.endsWith(platform::Separator))
        state.currentFolder += platform::Separator;
    state.freeMegabytes = fileSystem.freeBytes(state.currentFolder).value_or(0) / BytesPerMegabyte;
}

Listing RefreshList(const QString &currentFolder, const ScanOptions &options)
{
    return ListFolder(currentFolder, QString(), options).value_or(Listing());
}

Listing RefreshListTree(const QString &currentFolder, const ScanOptions &options)
{
    return ListFolderTree(currentFolder, options).value_or(Listing());
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
