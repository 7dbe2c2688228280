// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/mpeg/clsxanalyzer.h"

#include <memory>

namespace ravlin {

namespace {

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

/// The text for a failure; bytesSearched is used for -9 only. The spelling is part of the contract with callers.
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
    // A damaged stream was found all the same, and its values are of use.
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
