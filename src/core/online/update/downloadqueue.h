// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/update/inetretreive.h"
#include "core/online/update/versionfile.h"

#include <QObject>
#include <QUrl>

#include <functional>
#include <vector>

namespace ravlin {

/// Downloads the files of several records into one folder, one at a time. Refuses an unsafe name. Replaces an existing
/// file only if the user agrees, else skips it. After a failure of one file it goes on; after one that would hit the
/// others too, it ends.
///
/// The host may answer at any later time; the queue waits.
class DownloadQueue : public QObject
{
    Q_OBJECT

public:
    struct Entry
    {
        int row = 0; ///< chosen by the caller
        VersionRecord record;
    };
    struct Host
    {
        /// Asks whether the file at the path may be replaced.
        std::function<void(const QString &path, const std::function<void(bool)> &answer)> askToReplace;
        /// Reports a failed download. goOn must be called once the user has seen it.
        std::function<void(const QString &fileName, const UpdateFailure &failure, const std::function<void()> &goOn)>
            tellFailure;
    };

    /// download must outlive this and not be used elsewhere meanwhile.
    DownloadQueue(InetRetreive &download, Host host, QObject *parent = nullptr);

    /// folder: with or without a trailing separator.
    void start(const QUrl &versionFile, const QString &folder, std::vector<Entry> entries);
    /// Ends the run. No signal follows, and pending answers have no effect.
    void cancel();
    bool isBusy() const { return m_isBusy; }

Q_SIGNALS:
    void begun(int row, const QString &fileName, const QString &path);
    void downloaded(int row, const QString &path, bool isChecked);
    /// Once per start. hasReachedEnd: every entry was dealt with.
    void finished(bool hasReachedEnd);

private:
    void next();
    void fetch(const Entry &entry, const QUrl &url, const QString &path, bool replaces);
    void fail(const Entry &entry, const UpdateFailure &failure);
    void end(bool hasReachedEnd);
    /// Wraps a call so that it does nothing after the end of the current run.
    std::function<void()> inThisRun(std::function<void()> call);

    InetRetreive &m_download;
    Host m_host;
    QUrl m_versionFile;
    QString m_folder;
    std::vector<Entry> m_entries;
    std::size_t m_next = 0;
    bool m_isBusy = false;
    int m_run = 0; ///< number of the current or next run
};

} // namespace ravlin
