// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/update/inetretreive.h"
#include "core/online/update/versionfile.h"

#include <QObject>
#include <QUrl>

#include <functional>
#include <vector>

namespace ravlin {

/// Downloads the files of several records into one folder, one after the other. A name that is not safe is refused, a
/// file that is there already is replaced only if the user says so and is left out otherwise. What goes wrong with one
/// file is told, and the others follow; what would go wrong with the others as well ends the queue.
///
/// Questions and messages may be answered at any later time; nothing happens meanwhile.
class DownloadQueue : public QObject
{
    Q_OBJECT

public:
    struct Entry
    {
        int row = 0; ///< for the caller to know it by
        VersionRecord record;
    };
    struct Host
    {
        /// Whether the file at the path may be replaced.
        std::function<void(const QString &path, const std::function<void(bool)> &answer)> askToReplace;
        /// A file could not be downloaded. goOn is to be called once the user has seen it.
        std::function<void(const QString &fileName, const UpdateFailure &failure, const std::function<void()> &goOn)>
            tellFailure;
    };

    /// download is used by nobody else meanwhile and outlives this.
    DownloadQueue(InetRetreive &download, Host host, QObject *parent = nullptr);

    /// folder: with or without a separator at its end.
    void start(const QUrl &versionFile, const QString &folder, std::vector<Entry> entries);
    /// Ends it; no signal follows, and answers that are still to come are of no effect.
    void cancel();
    bool isBusy() const { return m_isBusy; }

Q_SIGNALS:
    void begun(int row, const QString &fileName, const QString &path);
    void downloaded(int row, const QString &path, bool isChecked);
    /// Once for each start. hasReachedEnd: every entry was dealt with.
    void finished(bool hasReachedEnd);

private:
    void next();
    void fetch(const Entry &entry, const QUrl &url, const QString &path, bool replaces);
    void fail(const Entry &entry, const UpdateFailure &failure);
    void end(bool hasReachedEnd);
    /// What calls it only as long as the run of now is still on.
    std::function<void()> inThisRun(std::function<void()> call);

    InetRetreive &m_download;
    Host m_host;
    QUrl m_versionFile;
    QString m_folder;
    std::vector<Entry> m_entries;
    std::size_t m_next = 0;
    bool m_isBusy = false;
    int m_run = 0; ///< number of the present run, or of the next one
};

} // namespace ravlin
