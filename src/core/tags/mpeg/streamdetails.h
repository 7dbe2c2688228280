// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

#include <QObject>
#include <QString>
#include <QThreadPool>

#include <memory>

namespace ravlin {

class clsXAnalyzer;

/// What is wrong with a stream that was found.
enum class StreamFault
{
    None,
    CutOff, ///< the last frame is cut off
    Damaged ///< frames are missing between others
};

/// The texts of the labels about a file's audio. Empty: not known.
struct StreamDetails
{
    QString bitRate;   ///< "128 kbps"
    QString length;    ///< seconds, to the millisecond: "215.327 s"
    QString frequency; ///< "44100 hz"
    QString size;      ///< of the file: "5242880 bytes"
    QString clockTime; ///< the length as "03:35.3"
    QString problem;   ///< why there is no bit rate, length and frequency, in English; empty otherwise
    StreamFault fault = StreamFault::None; ///< the texts then hold for what there is

    friend bool operator==(const StreamDetails &, const StreamDetails &) = default;
};

/// The texts for an analysis. found: it succeeded. bytes: the file's size, or -1 if not known.
StreamDetails streamDetails(const clsXAnalyzer &analyzer, bool found, qint64 bytes);

/// Analyses a file and makes its texts. For any thread.
StreamDetails readStreamDetails(const QString &path, platform::FileSystem &fileSystem);

/// Reads the stream details of the file that is shown, on a thread of its own so that the interface does not wait. Only
/// the file requested last counts; results for earlier ones are dropped.
class StreamDetailsReader : public QObject
{
    Q_OBJECT

public:
    explicit StreamDetailsReader(platform::FileSystem &fileSystem, QObject *parent = nullptr);
    /// Waits for the analysis under way.
    ~StreamDetailsReader() override;

    /// Milliseconds that request() waits for the result. Most files take less, and the labels then change only once.
    static constexpr int QuickWait = 15;

    /// Requests a file. ready() follows: within this call if the file is quick to read, else later.
    void request(const QString &path);
    /// Drops the request; no ready() follows.
    void cancel();

Q_SIGNALS:
    void ready(const ravlin::StreamDetails &details);

private:
    struct Job;

    void finish(const std::shared_ptr<Job> &job);

    platform::FileSystem &m_fileSystem;
    std::shared_ptr<Job> m_wanted;
    QThreadPool m_pool; ///< last, so that its work ends before the rest is destroyed
};

} // namespace ravlin
