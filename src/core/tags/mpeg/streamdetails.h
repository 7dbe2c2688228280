// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

#include <QObject>
#include <QString>
#include <QThreadPool>

#include <memory>

namespace ravlin {

class clsXAnalyzer;

/// What the labels beside a file's tag say of its audio. An empty text: not known.
struct StreamDetails
{
    QString bitRate;   ///< "128 kbps"
    QString length;    ///< seconds, to the millisecond: "215.327 s"
    QString frequency; ///< "44100 hz"
    QString size;      ///< of the file: "5242880 bytes"
    QString clockTime; ///< the length as "03:35.3"
    QString problem;   ///< why there is no bit rate, length and frequency, in English; empty otherwise

    friend bool operator==(const StreamDetails &, const StreamDetails &) = default;
};

/// The texts for an analysis. found: it was a success. bytes: the file's size, or -1 when not known.
StreamDetails streamDetails(const clsXAnalyzer &analyzer, bool found, qint64 bytes);

/// Analyses a file and makes its texts. For any thread.
StreamDetails readStreamDetails(const QString &path, platform::FileSystem &fileSystem);

/// Reads the stream details of the file that is shown, without keeping the interface waiting: on a thread of its own,
/// one file at a time. Only the file asked for last is of interest; what is known of earlier ones is thrown away.
class StreamDetailsReader : public QObject
{
    Q_OBJECT

public:
    explicit StreamDetailsReader(platform::FileSystem &fileSystem, QObject *parent = nullptr);
    /// Waits for the file at work.
    ~StreamDetailsReader() override;

    /// Most files are read in less than this, in milliseconds: so long request() waits, to spare the eye the change.
    static constexpr int QuickWait = 15;

    /// Takes a file to read. ready() follows: within this call for a file that is quick to read, else later.
    void request(const QString &path);
    /// Nothing is wanted any longer; no ready() follows.
    void cancel();

Q_SIGNALS:
    void ready(const ravlin::StreamDetails &details);

private:
    struct Job;

    void finish(const std::shared_ptr<Job> &job);

    platform::FileSystem &m_fileSystem;
    std::shared_ptr<Job> m_wanted;
    QThreadPool m_pool; ///< last, so that it ends its work before the rest goes
};

} // namespace ravlin
