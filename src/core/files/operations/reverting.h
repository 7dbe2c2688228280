// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/operations/transfer.h"
#include "core/history/history.h"
#include "core/storage/recorder.h"

#include <QHash>
#include <QSet>

/// How undo() takes back single changes; only for undo.cpp.
namespace ravlin {

/// Where the file of a change is by now.
QString presentPath(history::History &history, const history::StoredChange &change);
/// Where it is to go: its former path, in what has become of its folder.
QString formerPath(history::History &history, const history::StoredChange &change);

/// Passes on what takes a change back, and tells the history which change that is.
class RevertingJournal final : public storage::Journal
{
public:
    explicit RevertingJournal(history::History &history, qint64 change = 0) : m_history(history), m_change(change) {}

    /// What is done to the file at that path takes back that change.
    void add(const QString &path, qint64 change) { m_changes.insert(path, change); }

    std::optional<Ticket> begin(const storage::ChangeRecord &change) override
    {
        if (const qint64 reverted = m_changes.value(change.path, m_change); reverted != 0)
            m_history.reverting(reverted);
        return m_history.begin(change);
    }
    void end(Ticket ticket, const Result<storage::ChangeDone> &done) override { m_history.end(ticket, done); }
    std::optional<Ticket> beginTemporary(const QString &folder, const QString &name) override
    {
        return m_history.beginTemporary(folder, name);
    }
    void endTemporary(Ticket ticket) override { m_history.endTemporary(ticket); }

private:
    history::History &m_history;
    const qint64 m_change;
    QHash<QString, qint64> m_changes;
};

/// Takes back single changes of one entry.
class Reverting
{
public:
    struct Of
    {
        bool isRedo = false;   ///< the changes are those of a taking back
        bool isMoving = false; ///< a copy is what a move came to that left its source
    };

    Reverting(history::History &history, platform::FileSystem &fileSystem, Of of, std::stop_token stop)
        : m_history(history), m_fileSystem(fileSystem), m_of(of), m_stop(std::move(stop))
    {
    }

    QString presentPath(const history::StoredChange &change) const { return ravlin::presentPath(m_history, change); }
    /// path: presentPath() of it. Returns where the file is now or, if it went into the trash, where it was.
    Result<QString> revert(const history::StoredChange &change, const QString &path);
    /// Whether that could be done, were the names in freed free; touches nothing.
    Result<QString> check(const history::StoredChange &change, const QString &path, const QSet<QString> &freed);

    const QStringList &lost() const { return m_lost; }
    /// What had been replaced and could not be brought back.
    const std::vector<FileFailure> &notBroughtBack() const { return m_notBroughtBack; }

private:
    /// A change to take back, with where its file is and where it goes.
    struct Step
    {
        const history::StoredChange &change;
        QString present;
        QString former;
    };

    Result<void> take(const Step &step);
    Result<void> moveBack(const Step &step);
    Result<TransferReport> moveBack(const Step &step, ClashAnswer forFolders);
    Result<void> makeFolder(const QString &path);
    Result<void> isUnchanged(const Step &step) const;
    Result<void> removeMade(const Step &step);
    Result<void> removeEmptyFolder(const Step &step);
    Result<void> intoTrash(const Step &step);
    Result<void> fromTrash(const Step &step);
    Result<void> restore(platform::TrashedItem item, const QString &path, qint64 change);
    bool wasEmptyFolder(const history::StoredChange &change) const;
    Result<void> makeFolderAgain(const Step &step);
    Result<void> endHalfMove(const Step &step);
    void bringBackReplaced(const Step &step);

    history::History &m_history;
    platform::FileSystem &m_fileSystem;
    const Of m_of;
    const std::stop_token m_stop;
    QStringList m_lost;
    std::vector<FileFailure> m_notBroughtBack;
};

} // namespace ravlin
