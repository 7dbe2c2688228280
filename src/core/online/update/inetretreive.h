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

/// Downloads one file after the other, on the event loop of the thread that it lives in. The file bears its name only
/// when it is whole: as long as the server announced, with the checksum that stands beside it on the server where one
/// does ("NAME.sha256"), and on the disk. Until then it is a temporary file in the same folder, which a failure, a
/// cancel() and the end of this object remove. Nothing that was downloaded is ever run or opened.
class InetRetreive : public QObject
{
    Q_OBJECT

public:
    struct Job
    {
        QUrl url;
        QString path;          ///< in a folder that exists; the name is safe, see safeFileName()
        bool replaces = false; ///< takes the place of a file of that name; without it that is a failure
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

    /// The limits for a file. At first MaximumSize, half a minute without a sign of life, and some hours in all.
    void setSettings(const FetchSettings &settings) { m_web.setSettings(settings); }
    const FetchSettings &settings() const { return m_web.settings(); }

    /// What stands in front of progressText(); nothing at first.
    void setLeadingText(const QString &text) { m_leadingText = text; }

    /// Calls done once, later than this returns; not at all after cancel() or another start, which ends this one.
    void start(const Job &job, Done done);
    /// Ends the download, if there is one, and leaves nothing of it behind.
    void cancel();
    bool isBusy() const { return m_done != nullptr; }

    /// Of the present download, or else the last.
    const DownloadProgress &progress() const { return m_progress; }
    QString progressText() const { return m_progress.text(m_leadingText); }

Q_SIGNALS:
    void stateChanged(ravlin::ConnectionState state);
    /// The server has announced the size, or not: see progress().
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
    Done m_done; ///< empty when there is no download
    DownloadProgress m_progress;
    std::optional<storage::TemporaryFile> m_file;
    qint64 m_written = 0; ///< bytes
    qint64 m_synced = 0;
    QCryptographicHash m_hash{QCryptographicHash::Sha256};
    bool m_isEndCertain = false; ///< a connection that broke would have shown
};

} // namespace ravlin
