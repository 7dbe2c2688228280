// SPDX-License-Identifier: GPL-3.0-or-later
// The stream analysis accepts any bytes: it ends, reads nothing outside of them, and what it reports is possible.
#include "core/tags/mpeg/mpegstream.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace {

void require(bool condition)
{
    if (!condition)
        std::abort();
}

/// The input repeated, so that a small one moves the reading window too.
class RepeatedSource final : public ravlin::platform::ByteSource
{
public:
    RepeatedSource(std::span<const char> bytes, qint64 size) : m_bytes(bytes), m_size(size) {}
    qint64 size() const override { return m_size; }
    ravlin::Result<qint64> readAt(std::span<char> buffer, qint64 offset) override
    {
        const qint64 count = std::clamp<qint64>(m_size - offset, 0, qint64(buffer.size()));
        qint64 done = 0;
        while (done < count) {
            const auto part = m_bytes.subspan(size_t((offset + done) % qint64(m_bytes.size())));
            const auto length = std::min<size_t>(part.size(), size_t(count - done));
            std::copy_n(part.begin(), length, buffer.begin() + done);
            done += qint64(length);
        }
        return count;
    }

private:
    std::span<const char> m_bytes;
    qint64 m_size;
};

void checkPlausible(const ravlin::StreamInfo &stream, qint64 size)
{
    require(stream.bytesSearched >= 0 && stream.bytesSearched <= size);
    require(stream.frames >= 0 && stream.audioBytes >= 0 && stream.audioBytes <= size);
    require(stream.samples >= stream.frames * 384 && stream.samples <= stream.frames * 1152);
    require(stream.playedSamples >= 0 && stream.playedSamples <= stream.samples);
    require(stream.milliseconds >= 0 && stream.milliseconds <= stream.samples / 8);
    require(stream.bitRate >= 0);
    if (!stream.hasFrame()) {
        require(stream.frames == 0);
        return;
    }
    require(stream.firstFrame < size);
    require(stream.layer >= 1 && stream.layer <= 3);
    require(stream.sampleRate >= 8000 && stream.sampleRate <= 48000);
    require(stream.firstFrame + stream.audioBytes <= size);
}

void analyse(ravlin::platform::ByteSource &source)
{
    std::vector<char> buffer;
    const ravlin::Result<ravlin::StreamInfo> stream = ravlin::mpeg::analyseStream(source, buffer);
    require(stream.has_value());
    checkPlausible(*stream, source.size());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    constexpr qint64 RepeatedSize = 2 * ravlin::mpeg::WindowSize + 77;
    const std::span<const char> bytes(reinterpret_cast<const char *>(data), size);
    ravlin::platform::MemorySource whole(QByteArrayView(bytes.data(), qsizetype(size)));
    analyse(whole);
    // One input in 32, because it is slow.
    if (size > 0 && (data[size - 1] & 31U) == 31) {
        RepeatedSource repeated(bytes, RepeatedSize);
        analyse(repeated);
    }
    return 0;
}
