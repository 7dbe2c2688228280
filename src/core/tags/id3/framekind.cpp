// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/id3/framekind.h"

#include <array>

namespace ravlin {

namespace {

struct Identifiers
{
    FrameKind kind;
    std::string_view v22;
    std::string_view v23;
    std::string_view v24;
};

constexpr std::array<Identifiers, 7> Table{{
    {FrameKind::Title, "TT2", "TIT2", "TIT2"},
    {FrameKind::LeadArtist, "TP1", "TPE1", "TPE1"},
    {FrameKind::Album, "TAL", "TALB", "TALB"},
    {FrameKind::TrackNumber, "TRK", "TRCK", "TRCK"},
    {FrameKind::Year, "TYE", "TYER", "TDRC"},
    {FrameKind::ContentType, "TCO", "TCON", "TCON"},
    {FrameKind::Comment, "COM", "COMM", "COMM"},
}};

} // namespace

FrameKind frameKindOf(std::string_view identifier)
{
    if (identifier.size() < 3 || (identifier[0] != 'T' && identifier[0] != 'C'))
        return FrameKind::Other;
    if (identifier.size() == 4 && (identifier[3] == ' ' || identifier[3] == '\0'))
        identifier.remove_suffix(1);
    for (const Identifiers &entry : Table) {
        if (identifier == (identifier.size() == 3 ? entry.v22 : entry.v23) ||
            (identifier.size() == 4 && identifier == entry.v24))
            return entry.kind;
    }
    return FrameKind::Other;
}

std::string_view frameIdentifier(FrameKind kind, int majorVersion)
{
    for (const Identifiers &entry : Table) {
        if (entry.kind == kind)
            return majorVersion == 2 ? entry.v22 : majorVersion == 3 ? entry.v23 : entry.v24;
    }
    return {};
}

} // namespace ravlin
