// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/tags/mpeg/mpegheader.h"

#include <optional>
#include <span>

/// The frame that encoders put before the audio to tell of the whole stream: Xing's (also named
/// "Info" in streams of constant bit rate) with LAME's extension, or Fraunhofer's (VBRI). It has
/// the form of an audio frame of silence, but players skip it.
namespace ravlin::mpeg {

struct InfoFrame
{
    bool isVariable = false;      ///< "Xing" or "VBRI" rather than "Info"
    std::optional<qint64> frames; ///< audio frames as told, when it tells them
    /// Samples that the encoder put before and after the music, each 0 to 4095; together absent
    /// when not told.
    struct Trimming
    {
        int delay = 0;
        int padding = 0;
    };
    std::optional<Trimming> trimming;

    /// The information in a frame, or nothing when it is an ordinary one. frame: the bytes from the
    /// header on, at most the frame's own; reads no further than they reach.
    static std::optional<InfoFrame> parse(const FrameHeader &header, std::span<const uchar> frame);
};

} // namespace ravlin::mpeg
