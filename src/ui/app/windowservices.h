// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/pageowner.h"

#include <QObject>

class QWidget;

namespace ravlin {

class Busy;
class Captions;
class FileList;
class ListController;
struct ProgramState;

/// Gives the pages of the tab strip the list's rows, long work with the wait window, and boxes.
class WindowServices : public QObject, public PageOwner
{
    Q_OBJECT

public:
    WindowServices(ProgramState &state, FileList &list, ListController &controller, Busy &busy,
        history::History &history, QWidget *window);

    QString currentPath() const override;
    QStringList selectedPaths() const override;
    qsizetype selectedCount() const override;
    bool moveCurrent(qsizetype step) override;
    void refreshList() override;
    void refreshListAt(const QString &path, const QStringList &selected) override;
    bool runWithProgress(qsizetype rowCount, const std::function<void(const ProgressReport &)> &work) override;
    void record(history::Kind kind, const std::function<std::optional<WorkFailures>()> &work) override;
    bool ask(const QString &question, const QString &furtherText) override;
    void showError(const QString &text) override;

Q_SIGNALS:
    /// An operation that may have changed files has ended.
    void recorded(const history::Summary &summary);

private:
    QString rowTextOf(const QString &path) const;

    ProgramState &m_state;
    FileList &m_list;
    ListController &m_controller;
    Busy &m_busy;
    history::History &m_history;
    QWidget *m_window;
};

} // namespace ravlin
