// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/update/downloadqueue.h"

#include "core/online/update/updateaddress.h"
#include "core/platform/nodes.h"

#include <QPointer>

#include <utility>

namespace ravlin {

DownloadQueue::DownloadQueue(InetRetreive &download, Host host, QObject *parent)
    : QObject(parent), m_download(download), m_host(std::move(host))
{
}

void DownloadQueue::start(const QUrl &versionFile, const QString &folder, std::vector<Entry> entries)
{
    cancel();
    m_versionFile = versionFile;
    m_folder = platform::withEndSeparator(folder);
    m_entries = std::move(entries);
    m_next = 0;
    m_isBusy = true;
    next();
}

void DownloadQueue::cancel()
{
    m_download.cancel();
    m_isBusy = false;
    ++m_run;
}

std::function<void()> DownloadQueue::inThisRun(std::function<void()> call)
{
    return [self = QPointer(this), run = m_run, call = std::move(call)] {
        if (self && self->m_isBusy && self->m_run == run)
            call();
    };
}

void DownloadQueue::next()
{
    if (m_next == m_entries.size()) {
        end(true);
        return;
    }
    const Entry entry = m_entries[m_next++];
    const UpdateResult<QString> name = safeFileName(entry.record.fileName);
    const UpdateResult<QUrl> url = downloadUrl(m_versionFile, entry.record);
    if (!name || !url) {
        fail(entry, name ? url.error() : name.error());
        return;
    }
    const QString path = m_folder + *name;
    if (!platform::isTaken(path)) {
        fetch(entry, *url, path, false);
        return;
    }
    const auto replace = inThisRun([this, entry, url = *url, path] { fetch(entry, url, path, true); });
    const auto leaveOut = inThisRun([this] { next(); });
    m_host.askToReplace(path, [replace, leaveOut](bool mayReplace) {
        if (mayReplace)
            replace();
        else
            leaveOut();
    });
}

void DownloadQueue::fetch(const Entry &entry, const QUrl &url, const QString &path, bool replaces)
{
    Q_EMIT begun(entry.row, entry.record.fileName, path);
    m_download.start({url, path, replaces}, [this, entry](const UpdateResult<InetRetreive::Downloaded> &outcome) {
        if (!outcome) {
            fail(entry, outcome.error());
            return;
        }
        const auto goOn = inThisRun([this] { next(); });
        Q_EMIT downloaded(entry.row, outcome->path, outcome->isChecked);
        goOn();
    });
}

void DownloadQueue::fail(const Entry &entry, const UpdateFailure &failure)
{
    const bool goesOn = failure.isOfOneFile();
    m_host.tellFailure(entry.record.fileName, failure, inThisRun([this, goesOn] {
        if (goesOn)
            next();
        else
            end(false);
    }));
}

void DownloadQueue::end(bool hasReachedEnd)
{
    m_isBusy = false;
    ++m_run;
    Q_EMIT finished(hasReachedEnd);
}

} // namespace ravlin
