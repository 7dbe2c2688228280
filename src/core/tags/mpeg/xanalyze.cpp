// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/mpeg/xanalyze.h"

#include <algorithm>
#include <limits>
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
                   (stream.isVariable ? XAnalyzeVariable : 0U);
    return record;
}

XAnalyzer::Outcome XAnalyzer::analyse(mpeg::ByteSource &source)
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
    mpeg::FileSource source(**file, info->size);
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

} // namespace ravlin
