// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/app/windowservices.h"

#include "core/app/programstate.h"
#include "ui/app/listcontroller.h"
#include "ui/controls/busy.h"
#include "ui/controls/plain/messagebox.h"
#include "ui/files/filelist.h"

namespace ravlin {

WindowServices::WindowServices(
    ProgramState &state, FileList &list, ListController &controller, Busy &busy, QWidget *window)
    : QObject(window), m_state(state), m_list(list), m_controller(controller), m_busy(busy), m_window(window)
{
}

QString WindowServices::currentPath() const
{
    return m_controller.pathOfRow(m_list.currentRow());
}

QStringList WindowServices::selectedPaths() const
{
    QStringList paths = m_list.selectedRowTexts();
    for (QString &path : paths)
        path.prepend(m_controller.currentFolder());
    return paths;
}

qsizetype WindowServices::selectedCount() const
{
    qsizetype count = 0;
    for (const QItemSelectionRange &range : m_list.selectionModel()->selection())
        count += range.height();
    return count;
}

bool WindowServices::moveCurrent(qsizetype step)
{
    const QModelIndex current = m_list.currentIndex();
    const QModelIndex next = current.siblingAtRow(static_cast<int>(current.row() + step));
    if (!current.isValid() || !next.isValid())
        return false;
    QItemSelectionModel *selection = m_list.selectionModel();
    selection->select(current, QItemSelectionModel::Deselect | QItemSelectionModel::Rows);
    m_list.setCurrentRow(next.row(), FileList::Selection::Keep);
    selection->select(next, QItemSelectionModel::Select | QItemSelectionModel::Rows);
    m_controller.showCurrentRow();
    return true;
}

void WindowServices::refreshList()
{
    m_controller.RefreshList();
}

void WindowServices::refreshListAt(const QString &path)
{
    const QString &folder = m_controller.currentFolder();
    m_controller.RefreshListAt(path.startsWith(folder) ? path.mid(folder.size()) : QString());
}

bool WindowServices::runWithProgress(qsizetype rowCount, const std::function<void(const ProgressReport &)> &work)
{
    if (m_busy.isRunning())
        return false;
    // The flag of a save refused for want of space ended one batch. If it stayed, every later save in this folder would
    // silently do nothing; each save makes its own check and shows its own message.
    m_state.cancelled = false;
    return m_busy.run(static_cast<int>(rowCount), work);
}

bool WindowServices::ask(const QString &question)
{
    MessageBox box(MessageBox::Question, QString(), question, MessageBox::Yes | MessageBox::No, m_window);
    box.setObjectName(QStringLiteral("question"));
    return box.exec() == MessageBox::Yes;
}

void WindowServices::showError(const QString &text)
{
    MessageBox box(MessageBox::Critical, QString(), text, MessageBox::Ok, m_window);
    box.setObjectName(QStringLiteral("error"));
    box.exec();
}

} // namespace ravlin
