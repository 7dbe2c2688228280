// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/update/connectionstate.h"
#include "core/online/update/downloadprogress.h"
#include "core/online/update/updatefailure.h"
#include "core/online/web/webget.h"
#include "core/online/web/webtext.h"
#include "core/storage/leftovers.h"

#include <QCryptographicHash>
#include <QObject>
#include <QUrl>

#include <functional>
#include <optional>

namespace ravlin {

/// The SHA-256 that a checksum file gives for a file, as 32 bytes. The text is either 64 hexadecimal digits alone, or
/// lines as sha256sum writes them ("DIGITS  NAME" or "DIGITS *NAME"), of which the one with that name counts. Returns
/// nothing for any other text.
std::optional<QByteArray> checksumIn(QByteArrayView text, const QString &fileName);

/// Downloads files, one at a time, on the event loop of its thread. A file gets its name only once it is complete: as
/// long as the server announced, matching its checksum ("NAME.sha256" beside it on the server, if there is one), and
/// synced. Until then it is a temporary file in the same folder, which a failure, cancel() and the destructor remove.
/// Downloaded files are never run or opened.
class InetRetreive : public QObject
{
    Q_OBJECT

public:
    struct Job
    {
        QUrl url;
        QString path;          ///< in an existing folder; the name is safe, see safeFileName()
        bool replaces = false; ///< replace a file of that name, instead of failing
    };
    struct Downloaded
    {
        QString path;
        bool isChecked = false; ///< by a checksum
    };
    using Done = std::function<void(const UpdateResult<Downloaded> &)>;

    static constexpr qint64 MaximumSize = 1024 * 1024 * 1024; ///< bytes

    explicit InetRetreive(platform::FileSystem &fileSystem, QObject *parent = nullptr);
    ~InetRetreive() override;

    /// Limits for a file. The defaults are MaximumSize, 30 seconds without a byte, and 6 hours in all.
    void setSettings(const FetchSettings &settings) { m_web.setSettings(settings); }
    const FetchSettings &settings() const { return m_web.settings(); }

    /// Goes before progressText(); empty at first.
    void setLeadingText(const QString &text) { m_leadingText = text; }

    /// Calls done once, after this has returned. Does not call it after cancel() or another start, which ends this one.
    void start(const Job &job, Done done);
    /// Ends the download, if there is one, and removes what there is of it.
    void cancel();
    bool isBusy() const { return m_done != nullptr; }

    /// Of the current download, or else the last.
    const DownloadProgress &progress() const { return m_progress; }
    QString progressText() const { return m_progress.text(m_leadingText); }

Q_SIGNALS:
    void stateChanged(ravlin::ConnectionState state);
    /// The headers are there, with or without a size: see progress().
    void sizeTold();
    void progressed();

private:
    void follow(WebStep step);
    Result<void> openFile();
    void takeChunks();
    Result<void> append(const QByteArray &bytes);
    void finishContent();
    void askForChecksum();
    void takeChecksum(const WebAnswer &text);
    Result<void> giveName();
    void complete(bool isChecked);
    void fail(const UpdateFailure &failure);
    void failOfFile(Error error);
    void end(const UpdateResult<Downloaded> &outcome);

    platform::FileSystem &m_fileSystem;
    WebGet m_web;
    WebText m_checksum;
    QString m_leadingText;
    Job m_job;
    Done m_done; ///< empty if there is no download
    DownloadProgress m_progress;
    std::optional<storage::TemporaryFile> m_file;
    qint64 m_written = 0; ///< bytes
    qint64 m_synced = 0;
    QCryptographicHash m_hash{QCryptographicHash::Sha256};
    bool m_isEndCertain = false; ///< a broken connection would have been noticed
};

} // namespace ravlin
