// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/tags/mpeg/mpegheader.h"

#include <optional>
#include <span>

/// The frame in which encoders describe the whole stream, before its audio: Xing's (also named "Info" in streams of
/// constant bit rate) with LAME's extension, or Fraunhofer's (VBRI). It has the form of a silent audio frame, but
/// players skip it.
namespace ravlin::mpeg {

struct InfoFrame
{
    bool isVariable = false;      ///< "Xing" or "VBRI" rather than "Info"
    std::optional<qint64> frames; ///< audio frames, if stated
    /// Samples that the encoder put before and after the music, each 0 to 4095. Nothing if not stated.
    struct Trimming
    {
        int delay = 0;
        int padding = 0;
    };
    std::optional<Trimming> trimming;

    /// Parses a frame. Returns nothing if it is an ordinary one. frame: the bytes from the header on, at most the
    /// frame's own; may be cut short.
    static std::optional<InfoFrame> parse(const FrameHeader &header, std::span<const uchar> frame);
};

} // namespace ravlin::mpeg
