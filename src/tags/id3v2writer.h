#pragma once

#include "platform/safewrite.h"
#include "tags/id3v2.h"

#include <map>
#include <optional>
#include <vector>

/// Writing of ID3v2 tags: turns edits of the seven frame kinds into the new content of a file, frame by frame. Frames
/// that no edit touches are ranges of the old file and keep their bytes, flags and order; a value that the tag has
/// already leaves its frame as it stands.
namespace ravlin::id3 {

/// What becomes of the frames of one kind. Comments that programs keep for themselves are never touched.
struct FieldEdit
{
    bool remove = false;
    QString text;   ///< the value: title, artist, album, comment, year
    int number = 0; ///< the value of ContentType (a genre number) and TrackNumber

    bool operator==(const FieldEdit &) const = default;
};

using FieldEdits = std::map<FrameKind, FieldEdit>;

/// True when the frame's value, as the program shows it, is that of the edit.
bool hasValue(const Frame &frame, const FieldEdit &edit);

/// The content of a file of fileSize bytes after the edits of its tag. tag is the one at its start, or nothing: then a
/// new ID3v2.3 tag is made. Nothing when the edits change nothing. The tag keeps its version, its region keeps its
/// size where the frames fit; else it grows and gets fresh padding.
///
/// Errors: BrokenTag when the tag can't be written without loss, TooLarge beyond the format's 256 MB, those of reading.
Result<std::optional<std::vector<platform::Segment>>> composeSave(
    platform::File &file, qint64 fileSize, const std::optional<Tag> &tag, const FieldEdits &edits);

/// The content of the file without the ID3v2 tags that stand at its start, one right behind the other. tagsEnd: where
/// they must end, the file's size less an ID3v1 tag. Nothing when there is none. Errors: BrokenTag when the first one
/// claims more, those of reading.
Result<std::optional<std::vector<platform::Segment>>> composeStrip(
    platform::File &file, qint64 fileSize, qint64 tagsEnd);

} // namespace ravlin::id3
