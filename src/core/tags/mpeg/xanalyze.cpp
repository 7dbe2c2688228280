// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/mpeg/xanalyze.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <new>

namespace ravlin {

namespace {

qint32 saturated(qint64 value)
{
    return qint32(std::min<qint64>(value, std::numeric_limits<qint32>::max()));
}

qint32 versionCode(mpeg::Version version)
{
    switch (version) {
    case mpeg::Version::Mpeg25:
        return 0;
    case mpeg::Version::Mpeg1:
        return 1;
    case mpeg::Version::Mpeg2:
        break;
    }
    return 2;
}

XAnalyzeCode openingCode(ErrorCode error)
{
    switch (error) {
    case ErrorCode::NotFound:
        return XAnalyzeNotFound;
    case ErrorCode::Io:
        return XAnalyzeInternalError;
    default:
        return XAnalyzeCannotOpen;
    }
}

XAnalyzeCode streamCode(const StreamInfo &stream)
{
    if (!stream.hasFrame())
        return XAnalyzeNoFrame;
    return stream.isDamaged() ? XAnalyzeDamaged : XAnalyzeOk;
}

QString versionNameOf(qint32 code)
{
    switch (code) {
    case 0:
        return QStringLiteral("MPEG2.5");
    case 1:
        return QStringLiteral("MPEG1");
    case 2:
        return QStringLiteral("MPEG2");
    default:
        return QStringLiteral("UNKNOWN");
    }
}

QString channelModeNameOf(qint32 code)
{
    switch (code) {
    case 0:
        return QStringLiteral("Stereo");
    case 1:
        return QStringLiteral("Joint-Stereo");
    case 2:
        return QStringLiteral("Dual Channel");
    case 3:
        return QStringLiteral("Mono");
    default:
        return QStringLiteral("Unknown");
    }
}

/// The text for a failure. bytesSearched is used for -9 only. Callers rely on the spelling.
QString errorTextOf(qint32 code, qint32 bytesSearched, const QString &path)
{
    const QString place = QStringLiteral("\r\n") + path;
    switch (code) {
    case XAnalyzeInternalError:
        return QStringLiteral("There was an internal error while tried to analize file") + place;
    case XAnalyzeNoMemory:
        return QStringLiteral("Not enough memory to analize file") + place;
    case XAnalyzeNotFound:
        return QStringLiteral("No file was found with the name:") + place;
    case XAnalyzeCannotOpen:
        return QStringLiteral("Cannot open file") + place;
    case XAnalyzeNoFrame:
        return QStringLiteral("Could not find frame start after looking at ") + QString::number(bytesSearched) +
               QStringLiteral(" bytes.");
    default:
        return QStringLiteral("Unknown error (") + QString::number(code) +
               QStringLiteral(") occured while trying to analyze file.");
    }
}

struct HandleDeleter
{
    void operator()(XAnalyzer *handle) const { xanalyzer_delete(handle); }
};

} // namespace

XAnalyzeRecord XAnalyzer::Outcome::record() const
{
    XAnalyzeRecord record;
    if (code == XAnalyzeNoFrame)
        record.frames = saturated(stream.bytesSearched);
    if (code != XAnalyzeOk && code != XAnalyzeDamaged)
        return record;
    record.version = versionCode(stream.version);
    record.bitRate = stream.bitRate;
    record.frequency = stream.sampleRate;
    record.layer = stream.layer;
    record.channelMode = qint32(stream.channelMode);
    record.frames = saturated(stream.frames);
    record.milliseconds = saturated(stream.milliseconds);
    record.flags = (stream.hasChecksum ? XAnalyzeHasChecksum : 0U) | (stream.hasInfoFrame ? XAnalyzeHasInfoFrame : 0U) |
                   (stream.isVariable ? XAnalyzeVariable : 0U) | (stream.isTruncated ? XAnalyzeCutOff : 0U);
    return record;
}

XAnalyzer::Outcome XAnalyzer::analyse(platform::ByteSource &source)
{
    const Result<StreamInfo> stream = mpeg::analyseStream(source, m_buffer);
    if (!stream)
        return {XAnalyzeInternalError, {}};
    return {streamCode(*stream), *stream};
}

XAnalyzer::Outcome XAnalyzer::analyse(const QString &path)
{
    try {
        return analyseFile(path);
    } catch (const std::bad_alloc &) {
        return {XAnalyzeNoMemory, {}};
    }
}

XAnalyzer::Outcome XAnalyzer::analyseFile(const QString &path)
{
    const auto file = m_fileSystem.open(path, platform::OpenMode::Read);
    if (!file)
        return {openingCode(file.error().code), {}};
    const Result<platform::FileInfo> info = (*file)->info();
    if (!info)
        return {XAnalyzeInternalError, {}};
    platform::FileSource source(**file, info->size);
    return analyse(source);
}

XAnalyzer *xanalyzer_new(platform::FileSystem &fileSystem)
{
    return new (std::nothrow) XAnalyzer(fileSystem);
}

qint32 xanalyzer_process_file(XAnalyzer *handle, const QString &path, XAnalyzeRecord *record)
{
    if (handle == nullptr || record == nullptr)
        return XAnalyzeInternalError;
    const XAnalyzer::Outcome outcome = handle->analyse(path);
    *record = outcome.record();
    return outcome.code;
}

void xanalyzer_delete(XAnalyzer *handle)
{
    delete handle;
}

int clsXAnalyzer::Analyse(const QString &path)
{
    const std::unique_ptr<XAnalyzer, HandleDeleter> handle(xanalyzer_new(m_fileSystem));
    XAnalyzeRecord record;
    const qint32 code = handle ? xanalyzer_process_file(handle.get(), path, &record) : qint32(XAnalyzeNoMemory);
    take(code, record, path);
    return code;
}

void clsXAnalyzer::take(qint32 code, const XAnalyzeRecord &record, const QString &path)
{
    // A damaged stream was found, and its values are useful.
    if (code < 0 && code != XAnalyzeDamaged) {
        m_errorText = errorTextOf(code, record.frames, path);
        return;
    }
    m_errorText.clear();
    m_versionName = versionNameOf(record.version);
    m_channelModeName = channelModeNameOf(record.channelMode);
    m_bitRate = record.bitRate;
    m_frequency = record.frequency;
    m_frames = record.frames;
    m_length = record.milliseconds / 1000.0;
    m_isVariable = (record.flags & XAnalyzeVariable) == XAnalyzeVariable;
    m_isDamaged = code == XAnalyzeDamaged;
    m_isCutOff = m_isDamaged && (record.flags & XAnalyzeCutOff) != 0;
}

QString clsXAnalyzer::FormatTime(qint64 milliseconds)
{
    constexpr qint64 Hour = 3'600'000;
    constexpr qint64 Minute = 60'000;
    constexpr qint64 Second = 1000;
    constexpr qint64 Tenth = 100;
    const auto twoDigits = [](qint64 number) { return QString::number(number).rightJustified(2, u'0'); };

    const qint64 hours = milliseconds / Hour;
    const qint64 inHour = milliseconds % Hour;
    const qint64 inMinute = inHour % Minute;
    const QString hoursText = hours > 0 ? QString::number(hours) + u':' : QString();
    return hoursText + twoDigits(inHour / Minute) + u':' + twoDigits(inMinute / Second) + u'.' +
           QString::number(inMinute % Second / Tenth);
}

} // namespace ravlin
