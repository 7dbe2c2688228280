// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/bytewindow.h"

/// The blocks that programs put before, between and after the frames of an MPEG stream. Only their
/// sizes matter here: the stream analysis steps over them.
///
/// ID3v2 (id3v2.4.0-structure §3, §3.4, §5), ID3v1 and its "TAG+" extension, APEv1 and APEv2,
/// Lyrics3 v1 and v2.
namespace ravlin::mpeg {

/// Bytes of the ID3v2 or APE tag (or, between two files joined, the ID3v1 tag) that starts at
/// offset; 0 when there is none or it would reach beyond the end.
qint64 tagLengthAt(platform::ByteWindow &window, qint64 offset);

/// Where the tags at the end of the source begin: the end of what can be audio. Any number of tags
/// up to 64 in any order; source.size() when there are none.
Result<qint64> trailingTagsStart(platform::ByteSource &source);

} // namespace ravlin::mpeg
