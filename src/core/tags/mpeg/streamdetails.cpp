// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/mpeg/streamdetails.h"

#include "core/tags/mpeg/xanalyze.h"

#include <QLocale>
#include <QSemaphore>

namespace ravlin {

struct StreamDetailsReader::Job
{
    QString path;
    StreamDetails details; ///< the worker's until it releases done
    QSemaphore done;
};

StreamDetails streamDetails(const clsXAnalyzer &analyzer, bool found, qint64 bytes)
{
    StreamDetails details;
    if (bytes >= 0)
        details.size = QStringLiteral("%1 bytes").arg(bytes);
    if (!found) {
        details.problem = analyzer.errorText();
        return details;
    }
    details.bitRate = QStringLiteral("%1 kbps").arg(analyzer.bitRate());
    details.frequency = QStringLiteral("%1 hz").arg(analyzer.frequency());
    details.length = QString::number(analyzer.length(), 'f', QLocale::FloatingPointShortest) + QStringLiteral(" s");
    if (analyzer.isDamaged())
        details.fault = analyzer.isCutOff() ? StreamFault::CutOff : StreamFault::Damaged;
    details.clockTime = clsXAnalyzer::FormatTime(qRound64(analyzer.length() * 1000));
    return details;
}

StreamDetails readStreamDetails(const QString &path, platform::FileSystem &fileSystem)
{
    clsXAnalyzer analyzer(fileSystem);
    const int code = analyzer.Analyse(path);
    const Result<platform::FileInfo> info = fileSystem.info(path);
    return streamDetails(analyzer, code >= 0 || code == XAnalyzeDamaged, info ? info->size : -1);
}

StreamDetailsReader::StreamDetailsReader(platform::FileSystem &fileSystem, QObject *parent)
    : QObject(parent), m_fileSystem(fileSystem)
{
    m_pool.setMaxThreadCount(1);
}

StreamDetailsReader::~StreamDetailsReader()
{
    cancel();
    m_pool.waitForDone();
}

void StreamDetailsReader::cancel()
{
    m_wanted.reset();
    m_pool.clear();
}

void StreamDetailsReader::request(const QString &path)
{
    cancel();
    m_wanted = std::make_shared<Job>();
    m_wanted->path = path;
    m_pool.start([this, job = m_wanted] {
        job->details = readStreamDetails(job->path, m_fileSystem);
        job->done.release();
        QMetaObject::invokeMethod(
            this, [this, job] { finish(job); }, Qt::QueuedConnection);
    });
    if (const std::shared_ptr<Job> job = m_wanted; job->done.tryAcquire(1, QuickWait))
        finish(job);
}

void StreamDetailsReader::finish(const std::shared_ptr<Job> &job)
{
    if (job != m_wanted)
        return;
    m_wanted.reset();
    Q_EMIT ready(job->details);
}

} // namespace ravlin
