// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/history/history.h"

#include <QObject>
#include <QThreadPool>

#include <atomic>
#include <functional>
#include <memory>

namespace ravlin::history {

/// Reads the history on a thread of its own, so that a window can show a long one without waiting, also while an
/// operation writes it: each question opens the database anew. Of each kind of question only the last one counts. The
/// answers arrive on the thread that asks: within the call if they are quick, else later.
class HistoryReader : public QObject
{
    Q_OBJECT

public:
    template <typename Answer>
    using Then = std::function<void(Result<Answer>)>;

    /// Milliseconds that a question waits for its answer, so that a window changes only once.
    static constexpr int QuickWait = 30;

    explicit HistoryReader(
        platform::FileSystem &fileSystem, QString path = History::defaultPath(), QObject *parent = nullptr);
    /// Waits for the question under way.
    ~HistoryReader() override;

    void readEntries(const Query &query, Then<std::vector<Entry>> then);
    void readFiles(qint64 entry, Then<std::vector<FileRecord>> then);
    /// History::laterOnSameFiles
    void readLater(qint64 entry, const std::set<qint64> &onlyFiles, Then<std::vector<Entry>> then);
    /// Drops the question for files; no answer follows.
    void dropFiles();

private:
    struct Job;
    /// Asks, and returns what is to be done with the answer.
    using Question = std::function<std::function<void()>(History &)>;

    void ask(std::shared_ptr<Job> &wanted, Question question);
    static void drop(std::shared_ptr<Job> &wanted);
    void run(Job &job);
    static void finish(std::shared_ptr<Job> &wanted, const std::shared_ptr<Job> &job);

    platform::FileSystem &m_fileSystem;
    QString m_path;
    std::shared_ptr<Job> m_entries;
    std::shared_ptr<Job> m_files;
    std::shared_ptr<Job> m_later;
    QThreadPool m_pool; ///< last, so that its work ends before the rest is destroyed
};

} // namespace ravlin::history
