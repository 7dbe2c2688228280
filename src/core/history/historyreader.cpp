// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/history/historyreader.h"

#include <QSemaphore>

#include <utility>

namespace ravlin::history {

struct HistoryReader::Job
{
    Question question;
    std::atomic<bool> isDropped = false;
    std::function<void()> deliver; ///< the worker's until it releases done
    QSemaphore done;
};

HistoryReader::HistoryReader(platform::FileSystem &fileSystem, QString path, QObject *parent)
    : QObject(parent), m_fileSystem(fileSystem), m_path(std::move(path))
{
    m_pool.setMaxThreadCount(1);
}

HistoryReader::~HistoryReader()
{
    drop(m_entries);
    drop(m_files);
    drop(m_later);
    m_pool.waitForDone();
}

void HistoryReader::readEntries(const Query &query, Then<std::vector<Entry>> then)
{
    ask(m_entries, [query, then = std::move(then)](History &history) {
        return [then, answer = history.entries(query)]() mutable { then(std::move(answer)); };
    });
}

void HistoryReader::readFiles(qint64 entry, Then<std::vector<FileRecord>> then)
{
    ask(m_files, [entry, then = std::move(then)](History &history) {
        return [then, answer = history.files(entry)]() mutable { then(std::move(answer)); };
    });
}

void HistoryReader::readLater(qint64 entry, const std::set<qint64> &onlyFiles, Then<std::vector<Entry>> then)
{
    ask(m_later, [entry, onlyFiles, then = std::move(then)](History &history) {
        return [then, answer = history.laterOnSameFiles(entry, onlyFiles)]() mutable { then(std::move(answer)); };
    });
}

void HistoryReader::dropFiles()
{
    drop(m_files);
}

void HistoryReader::drop(std::shared_ptr<Job> &wanted)
{
    if (wanted)
        wanted->isDropped = true;
    wanted.reset();
}

void HistoryReader::ask(std::shared_ptr<Job> &wanted, Question question)
{
    drop(wanted);
    const auto job = std::make_shared<Job>();
    job->question = std::move(question);
    wanted = job;
    m_pool.start([this, job, &wanted] {
        run(*job);
        QMetaObject::invokeMethod(
            this, [job, &wanted] { finish(wanted, job); }, Qt::QueuedConnection);
    });
    if (job->done.tryAcquire(1, QuickWait))
        finish(wanted, job);
}

void HistoryReader::run(Job &job)
{
    if (!job.isDropped) {
        History history(m_fileSystem, m_path);
        job.deliver = job.question(history);
    }
    job.done.release();
}

void HistoryReader::finish(std::shared_ptr<Job> &wanted, const std::shared_ptr<Job> &job)
{
    if (job != wanted)
        return;
    wanted.reset();
    if (job->deliver)
        job->deliver();
}

} // namespace ravlin::history
