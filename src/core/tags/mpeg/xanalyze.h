// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"
#include "core/tags/mpeg/mpegstream.h"

#include <QString>

/// The stream analysis library `xanalyze`: the properties of a file's MPEG audio stream, found by walking all of its
/// frames.
///
/// Two ways in: XAnalyzer for everything that is known of the stream, and the three xanalyzer_ operations with their
/// record of eight integers; clsXAnalyzer adds names and texts. An analyser reads one file at a time and keeps its
/// buffer from file to file; threads use one each.
namespace ravlin {

/// Outcome of an analysis.
enum XAnalyzeCode : qint32
{
    XAnalyzeOk = 0,
    XAnalyzeInternalError = -2, ///< reading failed
    XAnalyzeNoMemory = -3,
    XAnalyzeNotFound = -4,   ///< no file of that name
    XAnalyzeCannotOpen = -5, ///< no access, or not a file
    XAnalyzeDamaged = -8,    ///< ends in a cut frame, or lost sync on the way; the values hold for what there is
    XAnalyzeNoFrame = -9,    ///< no frame was found
};

/// Bits of XAnalyzeRecord::flags.
enum XAnalyzeFlag : quint32
{
    XAnalyzeHasChecksum = 1,  ///< frames are protected by a CRC
    XAnalyzeHasInfoFrame = 2, ///< a Xing, Info or VBRI frame describes the stream
    XAnalyzeVariable = 4,     ///< the frames have different bit rates
    XAnalyzeCutOff = 8,       ///< the last frame is cut off
};

/// The result in numbers. After a code other than 0 and -8 only the fields whose description mentions it are filled;
/// the others are 0.
struct XAnalyzeRecord
{
    qint32 version = 0;      ///< 0 MPEG-2.5, 1 MPEG-1, 2 MPEG-2
    qint32 bitRate = 0;      ///< kilobits per second: the one of all frames, or their average, rounded to nearest
    qint32 frequency = 0;    ///< sampling rate in hertz
    qint32 layer = 0;        ///< 1 to 3
    qint32 channelMode = 0;  ///< 0 stereo, 1 joint stereo, 2 dual channel, 3 mono
    qint32 frames = 0;       ///< whole audio frames; after -9 the number of bytes searched
    qint32 milliseconds = 0; ///< playing time, rounded down
    quint32 flags = 0;       ///< XAnalyzeFlag bits
};

/// Analyses files.
class XAnalyzer
{
public:
    struct Outcome
    {
        XAnalyzeCode code = XAnalyzeOk;
        StreamInfo stream; ///< with 0 and -8; with -9 only bytesSearched
        /// The record of the outcome. Counts above 2^31 - 1 become that.
        XAnalyzeRecord record() const;
    };

    explicit XAnalyzer(platform::FileSystem &fileSystem) : m_fileSystem(fileSystem) {}

    Outcome analyse(const QString &path);
    /// The same for bytes from elsewhere.
    Outcome analyse(platform::ByteSource &source);

private:
    Outcome analyseFile(const QString &path);

    platform::FileSystem &m_fileSystem;
    std::vector<char> m_buffer; ///< for reading, kept from file to file
};

/// Makes an analyser for the caller to release. nullptr if there is no memory for it.
XAnalyzer *xanalyzer_new(platform::FileSystem &fileSystem = platform::FileSystem::native());
/// Analyses a file and fills the record. Returns an XAnalyzeCode. Paths may hold any character; no short form is
/// needed.
qint32 xanalyzer_process_file(XAnalyzer *handle, const QString &path, XAnalyzeRecord *record);
/// Releases an analyser. Ignores nullptr.
void xanalyzer_delete(XAnalyzer *handle);

/// The technical properties of one MP3 file, with names for codes and texts for failures. Uses the operations of
/// `xanalyze`. One thread at a time.
class clsXAnalyzer
{
public:
    explicit clsXAnalyzer(platform::FileSystem &fileSystem = platform::FileSystem::native()) : m_fileSystem(fileSystem)
    {
    }

    /// Analyses a file. Returns the library's code (XAnalyzeCode). 0 or more and -8 are success and set all properties;
    /// any other sets errorText() only, and the properties keep their values.
    int Analyse(const QString &path);

    /// "MPEG1", "MPEG2", "MPEG2.5" or "UNKNOWN"; empty before the first success. So is the next one.
    QString versionName() const { return m_versionName; }
    /// "Stereo", "Joint-Stereo", "Dual Channel", "Mono" or "Unknown".
    QString channelModeName() const { return m_channelModeName; }
    qint32 bitRate() const { return m_bitRate; }     ///< kilobits per second
    qint32 frequency() const { return m_frequency; } ///< hertz
    qint32 frames() const { return m_frames; }       ///< audio frames of the stream
    double length() const { return m_length; }       ///< playing time in seconds
    bool isVariable() const { return m_isVariable; } ///< variable bit rate
    bool isDamaged() const { return m_isDamaged; }   ///< the code was -8
    bool isCutOff() const { return m_isCutOff; }     ///< damaged in that the last frame is cut off
    /// Why the last analysis failed, in English; empty after a success.
    QString errorText() const { return m_errorText; }

    /// Takes over a result of the library, as Analyse() does.
    void take(qint32 code, const XAnalyzeRecord &record, const QString &path);

    /// A playing time as "mm:ss.t" or "h:mm:ss.t", t being tenths of a second, rounded down. milliseconds: 0 or more.
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
    bool m_isDamaged = false;
    bool m_isCutOff = false;
    QString m_errorText;
};

} // namespace ravlin
