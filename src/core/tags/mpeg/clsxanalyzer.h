// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/tags/mpeg/xanalyze.h"

#include <QString>

namespace ravlin {

/// The technical properties of one MP3 file, with names for its codes and texts for its failures.
/// Uses the library `xanalyze`; shows nothing itself. One thread at a time.
class clsXAnalyzer
{
public:
    explicit clsXAnalyzer(platform::FileSystem &fileSystem = platform::FileSystem::native()) : m_fileSystem(fileSystem)
    {
    }

    /// Analyses a file. Returns the library's code (XAnalyzeCode): 0 or more and -8 are success and
    /// set all properties; any other sets errorText() only, and the properties keep what they held.
    int Analyse(const QString &path);

    /// "MPEG1", "MPEG2", "MPEG2.5" or "UNKNOWN"; empty before the first success, like the next one.
    QString versionName() const { return m_versionName; }
    /// "Stereo", "Joint-Stereo", "Dual Channel", "Mono" or "Unknown".
    QString channelModeName() const { return m_channelModeName; }
    qint32 bitRate() const { return m_bitRate; }     ///< kilobits per second
    qint32 frequency() const { return m_frequency; } ///< hertz
    qint32 frames() const { return m_frames; }       ///< audio frames of the stream
    double length() const { return m_length; }       ///< playing time in seconds
    bool isVariable() const { return m_isVariable; } ///< variable bit rate
    /// Why the last analysis failed, in English; empty after a success.
    QString errorText() const { return m_errorText; }

    /// Takes a result of the library over, as Analyse() does.
    void take(qint32 code, const XAnalyzeRecord &record, const QString &path);

    /// A playing time as "mm:ss.t" or "h:mm:ss.t", t being tenths of a second cut off.
    /// milliseconds: 0 or more.
    static QString FormatTime(qint64 milliseconds);

private:
    platform::FileSystem &m_fileSystem;
    QString m_versionName;
    QString m_channelModeName;
    qint32 m_bitRate = 0;
    qint32 m_frequency = 0;
    qint32 m_frames = 0;
    double m_length = 0.0;
    bool m_isVariable = false;
    QString m_errorText;
};

} // namespace ravlin
