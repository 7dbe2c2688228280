// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/storage/safewrite.h"
#include "core/tags/id3/frameplan.h"

#include <optional>
#include <vector>

/// Writing of ID3v2 tags: turns edits of the seven frame kinds into the new content of a file, frame by frame. Frames
/// that no edit touches are ranges of the old file and keep their bytes, flags and order; a value that the tag has
/// already leaves its frame as it stands.
namespace ravlin::id3 {

/// The content of a file of fileSize bytes after the edits of its tag. tag is the one at its start, or nothing: then a
/// new tag is made, of ID3v2.3 or, where newVersion is 4, ID3v2.4. Nothing when the edits change nothing. The tag keeps
/// its version, its region keeps its size where the frames fit; else it grows and gets fresh padding.
///
/// Errors: BrokenTag when the tag can't be written without loss, TooLarge beyond the format's 256 MB, those of reading.
Result<std::optional<std::vector<storage::Segment>>> composeSave(
    platform::File &file, qint64 fileSize, const std::optional<Tag> &tag, const FieldEdits &edits, int newVersion = 3);

/// The content of the file without the ID3v2 tags that stand at its start, one right behind the other. tagsEnd: where
/// they must end, the file's size less an ID3v1 tag. Nothing when there is none. Errors: BrokenTag when the first one
/// claims more, those of reading.
Result<std::optional<std::vector<storage::Segment>>> composeStrip(
    platform::File &file, qint64 fileSize, qint64 tagsEnd);

} // namespace ravlin::id3
