// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/storage/safewrite.h"
#include "core/tags/id3/frameplan.h"

#include <optional>
#include <vector>

/// Writes ID3v2 tags: turns edits of the seven frame kinds into the new content of a file, frame by frame. Frames that
/// no edit touches are ranges of the old file and keep their bytes, flags and order. An edit to the value that a frame
/// already has leaves the frame as it is.
namespace ravlin::id3 {

/// The content of a file after the edits of its tag. file: all of it; tag is the one at its start, or nothing to make
/// a new one: ID3v2.3 or, if newVersion is 4, ID3v2.4. Returns nothing if the edits change nothing. The tag keeps its
/// version, and its size if the frames fit; else it grows and gets fresh padding.
///
/// Errors: BrokenTag if the tag can't be written without loss, TagTooLarge if only a part of it was read, TooLarge
/// beyond the format's 256 MB, those of reading.
Result<std::optional<std::vector<storage::Segment>>> composeSave(
    platform::ByteSource &file, const std::optional<Tag> &tag, const FieldEdits &edits, int newVersion = 3);

/// The content of the file without the ID3v2 tags at its start, one right behind the other. tagsEnd: where they must
/// end, the file's size less an ID3v1 tag. Returns nothing if there is none. Errors: BrokenTag if the first one claims
/// more, those of reading.
Result<std::optional<std::vector<storage::Segment>>> composeStrip(platform::ByteSource &file, qint64 tagsEnd);

} // namespace ravlin::id3
