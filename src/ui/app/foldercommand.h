// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

class QWidget;

namespace ravlin {

class FileList;
class FolderTree;
class PageOwner;
struct Program;
struct RenameWish;

/// The command that renames the current folder after the tag of its first file: opens the dialog, renames, and lets
/// tree and list follow.
class FolderCommand : public QObject
{
    Q_OBJECT

public:
    FolderCommand(Program &program, PageOwner &owner, FolderTree &tree, const FileList &list, QWidget *window);

    /// Nothing happens while no folder is chosen.
    void openDialog();

private:
    void rename(const RenameWish &wish);

    Program &m_program;
    PageOwner &m_owner;
    FolderTree &m_tree;
    const FileList &m_list;
    QWidget *m_window;
};

} // namespace ravlin
