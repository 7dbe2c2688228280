// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/app/windowservices.h"

#include "core/app/programstate.h"
#include "ui/app/listcontroller.h"
#include "ui/controls/busy.h"
#include "ui/controls/plain/messagebox.h"
#include "ui/files/filelist.h"

namespace ravlin {

WindowServices::WindowServices(ProgramState &state, FileList &list, ListController &controller, Busy &busy,
    history::History &history, QWidget *window)
    : QObject(window), m_state(state), m_list(list), m_controller(controller), m_busy(busy), m_history(history),
      m_window(window)
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
    const bool selectsOne = m_state.options.keepSelection;
    if (!selectsOne)
        selection->select(current, QItemSelectionModel::Deselect | QItemSelectionModel::Rows);
    m_list.setCurrentRow(next.row(), FileList::Selection::Keep);
    selection->select(next,
        (selectsOne ? QItemSelectionModel::ClearAndSelect : QItemSelectionModel::Select) | QItemSelectionModel::Rows);
    m_controller.showCurrentRow();
    return true;
}

void WindowServices::refreshList()
{
    m_controller.RefreshList();
}

/// Empty for a file outside the current folder.
QString WindowServices::rowTextOf(const QString &path) const
{
    const QString &folder = m_controller.currentFolder();
    return path.startsWith(folder) ? path.mid(folder.size()) : QString();
}

void WindowServices::refreshListAt(const QString &path, const QStringList &selected)
{
    QStringList texts;
    for (const QString &one : selected)
        texts << rowTextOf(one);
    m_controller.RefreshListAt(rowTextOf(path), texts);
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

void WindowServices::record(history::Kind kind, const std::function<std::optional<WorkFailures>()> &work)
{
    if (m_busy.isRunning())
        return;
    history::Operation operation(&m_history, kind, m_state.currentFolder);
    const std::optional<WorkFailures> failures = work();
    if (!failures)
        return;
    for (const auto &[path, error] : failures->failed)
        operation.failed(path, error);
    history::Summary summary = operation.finish();
    summary.notTriedCount = failures->notTried;
    Q_EMIT recorded(summary);
}

bool WindowServices::ask(const QString &question, const QString &furtherText)
{
    MessageBox box(MessageBox::Question, QString(), question, MessageBox::Yes | MessageBox::No, m_window);
    box.setObjectName(QStringLiteral("question"));
    box.setFurtherText(furtherText);
    box.setDefaultButton(MessageBox::No);
    return box.exec() == MessageBox::Yes;
}

void WindowServices::showError(const QString &text)
{
    MessageBox box(MessageBox::Critical, QString(), text, MessageBox::Ok, m_window);
    box.setObjectName(QStringLiteral("error"));
    box.exec();
}

} // namespace ravlin
