// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>

class QWidget;

namespace ravlin {

class FileList;
class PageOwner;
struct Program;

/// The command that looks the selected files up in a CD database: opens the window for it over the main window.
class LookupCommand : public QObject
{
    Q_OBJECT

public:
    LookupCommand(Program &program, PageOwner &owner, const FileList &list, QWidget *window);

    /// Opens the window, or brings it to the front. Nothing happens while no file is selected.
    void openForm();

private:
    Program &m_program;
    PageOwner &m_owner;
    const FileList &m_list;
    QWidget *m_window;
    QPointer<QWidget> m_form;
};

} // namespace ravlin
