// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/tags/id3/id3v2.h"

/// The headers of a tag that is written, made from those that were read.
namespace ravlin::id3 {

/// The header of a frame that stays, with its size in the form of the tag's version. In the other form the size is
/// recognised by what follows, which is going to change.
QByteArray headerInOwnForm(const FrameHeader &frame, int majorVersion);

/// The header of a tag whose header and body, without a footer, are that large.
QByteArray headerBytes(const TagHeader &header, qint64 regionSize);

/// The extended header for changed frames, without its checksum, which would no longer be right, and with the new size
/// of the padding (ID3v2.3 §3.2, ID3v2.4 structure §3.2). padding: everything in the tag behind the frames, whatever it
/// is, so that the number is the same whichever way the tag is written.
QByteArray extendedHeader(const TagHeader &header, QByteArray old, qint64 padding);

} // namespace ravlin::id3
