// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/texttable.h"
#include "core/files/operations/fileoperations.h"

#include <QString>

class QWidget;

namespace ravlin {

class Busy;
class Captions;

/// What FileOperations asks and tells, as windows over the main window: questions before something is deleted, the
/// question about a name that is taken, the wait window with a way to stop, and what was not done.
class OperationDialogs final : public FileOperationHost
{
public:
    /// All outlive this.
    OperationDialogs(const Captions &captions, Busy &busy, QWidget *window);

    std::optional<ClashDecision> askClash(const Clash &clash) override;
    bool confirmTrash(const QStringList &paths) override;
    bool confirmDeleteForGood(const QStringList &paths) override;
    bool runLong(OperationKind kind, const std::function<void(const Watch &)> &work) override;
    void tell(const OperationReport &report) override;

    /// Whether since the last call of this files may have been changed: not where a question was answered with no, or
    /// other work was under way.
    bool takeHasWorked();

private:
    struct Question
    {
        Text oneFile;
        Text manyFiles;
        Text folder;
    };
    QString questionAbout(const QStringList &paths, const Question &question) const;
    bool ask(const QString &question, const QStringList &paths, bool isForGood);

    const Captions &m_captions;
    Busy &m_busy;
    QWidget *m_window;
    bool m_hasWorked = false;
};

} // namespace ravlin
