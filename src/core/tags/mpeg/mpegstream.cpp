// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/mpeg/mpegstream.h"

#include "core/tags/mpeg/mpeginfoframe.h"
#include "core/tags/mpeg/mpegsync.h"
#include "core/tags/mpeg/mpegtags.h"

#include <algorithm>
#include <array>
#include <set>

namespace ravlin::mpeg {

namespace {

/// Time in units that give every sampling rate a whole number per sample (the least common multiple of the rates), so
/// that the lengths of streams that change their rate add up exactly.
constexpr qint64 TicksPerSecond = 14'112'000;

qint64 ticks(qint64 samples, int sampleRate)
{
    return samples * (TicksPerSecond / sampleRate);
}

/// A run of agreeing frames: what the walk needs at each of them.
struct Run
{
    quint32 word = 0; ///< a header that all agree with
    FrameHeader header;
    int freeLength = 0;
    std::array<qint32, 32> lengths{}; ///< frame lengths by lengthIndex(), 0 where there is no such frame

    explicit Run(const SyncPoint &point) : word(point.header.word), header(point.header), freeLength(point.freeLength)
    {
        for (quint32 index = 0; index < lengths.size(); ++index) {
            const quint32 bits = ((index & 0x1EU) << 11U) | ((index & 1U) << 9U);
            const auto frame = FrameHeader::parse((word & ~0xF200U) | bits);
            const bool isKnown = frame && (!frame->isFreeFormat() || freeLength > 0);
            lengths[index] = isKnown ? frame->length(freeLength) : 0;
        }
    }
};

class Walk
{
public:
    Walk(platform::ByteSource &source, std::span<char> buffer) : m_window(source, buffer), m_synchroniser(m_window) {}

    Result<StreamInfo> analyse(qint64 audioEnd);

private:
    bool findFirst();
    void takeInfoFrame(const SyncPoint &first);
    void walkRun(const Run &run);
    void takeBitRates(const Run &run, quint32 indices);
    std::optional<SyncPoint> continuation();
    bool isZeroFrom(qint64 offset);
    void skipTags();
    void summarise();
    qint64 playedSamples() const;
    int bitRate() const;

    platform::ByteWindow m_window;
    Synchroniser m_synchroniser;
    StreamInfo m_info;
    std::optional<SyncPoint> m_first; ///< where the first run starts
    std::optional<InfoFrame> m_infoFrame;
    qint64 m_position = 0;
    qint64 m_ticks = 0;       ///< length of all samples
    std::set<int> m_bitRates; ///< those seen, in kilobits per second; 0 for free format
};

Result<StreamInfo> Walk::analyse(qint64 audioEnd)
{
    m_window.setEnd(audioEnd);
    if (findFirst()) {
        std::optional<SyncPoint> point = m_first;
        while (point) {
            m_position = point->offset;
            const Run run(*point);
            walkRun(run);
            point = m_info.isTruncated ? std::nullopt : continuation();
        }
        summarise();
    }
    if (m_window.error())
        return tl::unexpected(*m_window.error());
    return m_info;
}

void Walk::skipTags()
{
    while (const qint64 length = tagLengthAt(m_window, m_position))
        m_position += length;
}

/// Finds the first frame and takes the header values from the first audio frame. Returns false if there is no frame.
bool Walk::findFirst()
{
    skipTags();
    const qint64 start = m_position;
    m_first = m_synchroniser.search(start);
    // A file of two or three frames before unknown data can't show more followers.
    if (!m_first)
        m_first = m_synchroniser.search(start, 1);
    const qint64 searchEnd = std::min(start + Synchroniser::MaximumSearch, m_window.end());
    m_info.bytesSearched = (m_first ? m_first->offset : searchEnd) - start;
    if (!m_first)
        return false;
    m_info.firstFrame = m_first->offset;
    takeInfoFrame(*m_first);
    const FrameHeader &header = m_first->header;
    m_info.version = header.version;
    m_info.layer = header.layer;
    m_info.sampleRate = header.sampleRate;
    m_info.channelMode = header.channelMode;
    m_info.hasChecksum = header.hasChecksum;
    return true;
}

/// Steps over the info frame if the first frame is one.
void Walk::takeInfoFrame(const SyncPoint &first)
{
    const auto length = size_t(first.header.length(first.freeLength));
    std::span<const uchar> frame = m_window.at(first.offset, qsizetype(length));
    frame = frame.first(std::min(frame.size(), length));
    m_infoFrame = InfoFrame::parse(first.header, frame);
    if (!m_infoFrame)
        return;
    m_info.hasInfoFrame = true;
    m_position = first.offset + qint64(length);
    if (const auto audio = m_synchroniser.frameAt(m_position, 1); audio && agree(audio->header.word, first.header.word))
        m_first = audio;
    else
        m_first->offset = m_position; // the walk finds out what follows
}

/// Steps over agreeing frames from m_position to the first place without one.
void Walk::walkRun(const Run &run)
{
    const int samplesPerFrame = run.header.samples();
    const qint64 start = m_position;
    const qint64 framesBefore = m_info.frames;
    quint32 bitRateIndices = 0; // a bit for each one seen
    bool isRunning = true;
    while (isRunning) {
        const std::span<const uchar> bytes = m_window.at(m_position, HeaderSize);
        const auto size = qint64(bytes.size());
        const qint64 left = m_window.end() - m_position;
        qint64 offset = 0;
        while (offset + HeaderSize <= size) {
            const quint32 word = bigEndian32(bytes.data() + offset);
            const quint32 index = lengthIndex(word);
            const qint32 length = run.lengths[index];
            isRunning = agree(word, run.word) && length > 0;
            if (!isRunning)
                break;
            if (offset + length > left) {
                m_info.isTruncated = true;
                isRunning = false;
                break;
            }
            bitRateIndices |= 1U << (index >> 1U);
            ++m_info.frames;
            offset += length;
        }
        m_position += offset;
        isRunning = isRunning && m_position + HeaderSize <= m_window.end();
    }
    const qint64 samples = (m_info.frames - framesBefore) * samplesPerFrame;
    m_info.audioBytes += m_position - start;
    m_info.samples += samples;
    m_ticks += ticks(samples, run.header.sampleRate);
    takeBitRates(run, bitRateIndices);
}

void Walk::takeBitRates(const Run &run, quint32 indices)
{
    for (quint32 index = 0; index < 15; ++index) {
        if ((indices & (1U << index)) != 0)
            m_bitRates.insert(FrameHeader::parse((run.word & ~0xF000U) | index << 12U).value().bitRate);
    }
}

/// Where the walk continues if no agreeing frame begins at m_position: behind tags, with a stream of another kind
/// (joined files), or after a search. Returns nothing at the end.
std::optional<SyncPoint> Walk::continuation()
{
    const qint64 before = m_position;
    skipTags();
    if (m_position >= m_window.end())
        return std::nullopt;
    if (auto point = m_synchroniser.frameAt(m_position, m_position > before ? 1 : Synchroniser::Followers))
        return point;
    if (isZeroFrom(m_position))
        return std::nullopt; // the file is padded, not damaged
    const std::span<const uchar> bytes = m_window.at(m_position, HeaderSize);
    if (bytes.size() < size_t(HeaderSize) && !bytes.empty() && bytes[0] == 0xFF) {
        m_info.isTruncated = true; // within a header
        return std::nullopt;
    }
    ++m_info.resynchronisations;
    return m_synchroniser.search(m_position);
}

/// Whether only zeros follow. Stops at the first other byte, so it costs no more than the search.
bool Walk::isZeroFrom(qint64 offset)
{
    const qint64 limit = offset + Synchroniser::MaximumSearch;
    while (offset < limit) {
        const std::span<const uchar> bytes = m_window.at(offset, 1);
        if (bytes.empty())
            return true;
        if (std::any_of(bytes.begin(), bytes.end(), [](uchar byte) { return byte != 0; }))
            return false;
        offset += qint64(bytes.size());
    }
    return false;
}

qint64 Walk::playedSamples() const
{
    constexpr qint64 DecoderDelay = 529; // samples that a Layer III decoder lags behind
    if (!m_infoFrame || !m_infoFrame->trimming)
        return m_info.samples;
    const auto [delay, padding] = *m_infoFrame->trimming;
    const qint64 told = m_infoFrame->frames.value_or(0);
    if (m_info.frames >= told)
        return std::max<qint64>(0, m_info.samples - delay - padding);
    // The end is missing, and with it some or all of the padding.
    const qint64 musicEnd = told * m_first->header.samples() + DecoderDelay - padding;
    return std::max<qint64>(0, std::min(m_info.samples, musicEnd) - delay - DecoderDelay);
}

void Walk::summarise()
{
    if (m_infoFrame && m_infoFrame->trimming) {
        m_info.encoderDelay = m_infoFrame->trimming->delay;
        m_info.encoderPadding = m_infoFrame->trimming->padding;
    }
    m_info.playedSamples = playedSamples();
    const qint64 trimmed = ticks(m_info.samples - m_info.playedSamples, m_info.sampleRate);
    m_info.milliseconds = std::max<qint64>(0, m_ticks - trimmed) / (TicksPerSecond / 1000);
    m_info.isVariable = m_bitRates.size() > 1;
    m_info.bitRate = bitRate();
}

/// Kilobits per second. A frame may be a byte shorter or longer than its bit rate demands, so if all frames state the
/// same bit rate, that counts; otherwise the average.
int Walk::bitRate() const
{
    constexpr qint64 TicksPerMillisecond = TicksPerSecond / 1000;
    if (m_bitRates.size() == 1 && *m_bitRates.begin() > 0)
        return *m_bitRates.begin();
    // Bits per millisecond are kilobits per second.
    return m_ticks == 0 ? 0 : int((m_info.audioBytes * 8 * TicksPerMillisecond + m_ticks / 2) / m_ticks);
}

} // namespace

Result<StreamInfo> analyseStream(platform::ByteSource &source, std::vector<char> &buffer)
{
    static_assert(Synchroniser::LookAhead <= WindowSize / 2);
    const auto needed = static_cast<size_t>(std::clamp<qint64>(source.size(), 1, WindowSize));
    if (buffer.size() < needed)
        buffer.resize(needed);
    return trailingTagsStart(source).and_then([&](qint64 audioEnd) { return Walk(source, buffer).analyse(audioEnd); });
}

} // namespace ravlin::mpeg
