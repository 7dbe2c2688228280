// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

#include <string_view>

namespace ravlin {

/// The frames that the program reads and edits, by the frame-kind numbers of its tag interface.
enum class FrameKind : quint8
{
    Other = 0,        ///< every frame that the program only carries along
    Comment = 3,      ///< COMM
    Album = 24,       ///< TALB
    ContentType = 27, ///< TCON
    Title = 36,       ///< TIT2
    LeadArtist = 48,  ///< TPE1
    TrackNumber = 54, ///< TRCK
    Year = 62,        ///< TYER, in ID3v2.4 TDRC
};

/// The kind for a frame identifier: four characters (ID3v2.3 §4, ID3v2.4 frames §4), three (ID3v2.2 §4), or three and
/// a blank or NUL, as some programs wrote them into newer tags. Both year frames count as Year in every version.
FrameKind frameKindOf(std::string_view identifier);

/// The identifier under which a new frame of that kind is written into a tag of that major version (2, 3 or 4).
std::string_view frameIdentifier(FrameKind kind, int majorVersion);

} // namespace ravlin
