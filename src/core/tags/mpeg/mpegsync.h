// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/bytewindow.h"
#include "core/tags/mpeg/mpegheader.h"

/// Tells real frames from bytes that only look like a header: a frame counts as found if headers of the same stream
/// follow it where its length says.
namespace ravlin::mpeg {

/// A frame found, with what stepping to the next frame needs.
struct SyncPoint
{
    qint64 offset = 0;
    FrameHeader header;
    int freeLength = 0; ///< bytes of an unpadded frame in free format, 0 else
};

/// Finds frames in a window. Every check looks at most LookAhead bytes ahead, so the cost of a search is proportional
/// to the bytes searched, whatever they are.
class Synchroniser
{
public:
    /// Longest frame in free format, in bytes. The highest bit rate that LAME makes (640 kbps) needs 5,760.
    static constexpr int MaximumFreeLength = 8192;
    /// Bytes after which a search gives up.
    static constexpr qint64 MaximumSearch = 64 * 1024 * 1024;
    /// Headers that must follow and agree; fewer if the stream ends before.
    static constexpr int Followers = 2;
    /// Bytes of one to three frames, and of the header behind them. A window of less than twice as many would be moved
    /// too often.
    static constexpr qsizetype LookAhead = 4 * (MaximumFreeLength + HeaderSize);

    explicit Synchroniser(platform::ByteWindow &window) : m_window(window) {}

    /// The frame at offset, if followers agreeing headers follow, or fewer before the end of the audio.
    std::optional<SyncPoint> frameAt(qint64 offset, int followers = Followers);
    /// The first such frame from offset on.
    std::optional<SyncPoint> search(qint64 offset, int followers = Followers);

private:
    std::optional<FrameHeader> headerAt(qint64 offset);
    bool isConfirmed(const SyncPoint &point, int followers);
    bool endsAt(qint64 offset);
    int freeLengthAt(qint64 offset, const FrameHeader &header);
    bool repeats(qint64 second, const FrameHeader &first, int freeLength);

    platform::ByteWindow &m_window;
};

} // namespace ravlin::mpeg
