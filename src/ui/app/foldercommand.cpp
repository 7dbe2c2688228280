// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/app/foldercommand.h"

#include "core/app/pageowner.h"
#include "core/files/renaming/renaming.h"
#include "ui/app/program.h"
#include "ui/files/filelist.h"
#include "ui/files/foldertree.h"
#include "ui/naming/dialog.h"
#include "ui/naming/problemtext.h"

namespace ravlin {

FolderCommand::FolderCommand(
    Program &program, PageOwner &owner, FolderTree &tree, const FileList &list, QWidget *window)
    : QObject(window), m_program(program), m_owner(owner), m_tree(tree), m_list(list), m_window(window)
{
}

void FolderCommand::openDialog()
{
    const QString folder = m_program.state.currentFolder;
    if (folder.isEmpty())
        return;
    const QString firstFile = m_list.rowCount() == 0 ? QString() : folder + m_list.rowText(0);
    auto *dialog = new Dialog(m_program.pageContext(m_owner), folder, firstFile, m_window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &Dialog::renameRequested, this, &FolderCommand::rename);
    dialog->show();
}

void FolderCommand::rename(const RenameWish &wish)
{
    RenamingOutcome outcome;
    const bool ran = m_owner.runWithProgress(1, [&](const ProgressReport &progress) {
        const RenamingPlan plan(m_program.fileSystem, {wish});
        outcome = runRenaming(m_program.fileSystem, plan, {progress});
    });
    if (!ran)
        return;
    m_program.undoHistory.addRenames(outcome.renames, outcome.foldersMade);
    const RenameRow &row = outcome.rows.front();
    const Captions &captions = m_program.captions;
    if (row.renames())
        m_tree.refreshTo(row.path);
    else if (row.problem)
        m_owner.showError(problemText(captions, *row.problem));
    else if (row.error)
        m_owner.showError(captions.errorText(row.error->code));
    else if (row.isCollision)
        m_owner.showError(captions.text(Text::ErrorAlreadyExists));
}

} // namespace ravlin
