// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/bytewindow.h"

/// The blocks that programs put before, between and after the frames of an MPEG stream. The stream analysis skips them,
/// so only their sizes matter here.
///
/// ID3v2 (id3v2.4.0-structure §3, §3.4, §5), ID3v1 and its "TAG+" extension, APEv1 and APEv2, Lyrics3 v1 and v2.
namespace ravlin::mpeg {

/// Bytes of the ID3v2 or APE tag (or, between joined files, the ID3v1 tag) that starts at offset. 0 if there is none or
/// it would reach beyond the end.
qint64 tagLengthAt(platform::ByteWindow &window, qint64 offset);

/// Where the tags at the end of the source begin, which is where audio must end: up to 64 tags in any order.
/// source.size() if there are none.
Result<qint64> trailingTagsStart(platform::ByteSource &source);

} // namespace ravlin::mpeg
