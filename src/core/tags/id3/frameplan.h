// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/tags/id3/id3v2.h"

#include <map>

/// What edits of the seven frame kinds make of the frames of an ID3v2 tag. id3v2writer.h puts the result into a file.
namespace ravlin::id3 {

/// What becomes of the frames of one kind. Comments that programs keep for themselves are never touched.
struct FieldEdit
{
    bool remove = false;
    QString text;   ///< the value: title, artist, album, comment, year
    int number = 0; ///< the value of ContentType (a genre number) and TrackNumber
    /// A removal of comments takes only the one that is shown, and those with its description.
    bool isShownOnly = false;
    /// Year: another one than the file showed. The frames with day and time of the old one go (see planFrames).
    bool isNewYear = false;

    bool operator==(const FieldEdit &) const = default;
};

using FieldEdits = std::map<FrameKind, FieldEdit>;

/// What the edits make of a tag's frames.
struct FramePlan
{
    std::map<const Frame *, QByteArray> replaced; ///< an empty replacement drops the frame
    QByteArray appended;                          ///< new frames, behind the last one

    bool isEmpty() const { return replaced.empty() && appended.isEmpty(); }
};

/// The plan for a tag with that header; tag is nullptr for a new one. A frame that already shows the value of an edit
/// stays as it is. A new year drops TDAT and TIME, or TDA and TIM, which would make it a date that nobody stated; a tag
/// of ID3v2.4 has the whole date in the frame of the year. Errors: TooLarge.
Result<FramePlan> planFrames(const TagHeader &header, const Tag *tag, const FieldEdits &edits);

} // namespace ravlin::id3
