// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/naming/conversion.h"
#include "core/tags/record/tagrecord.h"

#include <QString>

/// New names of files from their tags.
namespace ravlin {

struct SessionChoices;

/// How new names are made.
struct NamingRule
{
    static constexpr int ArtistTitle = 1; ///< `op1`
    static constexpr int TrackTitle = 2;  ///< `op2`
    static constexpr int Pattern = 3;     ///< `op3`

    int mode = 0;                 ///< one of the three; any other keeps every name, conversions apart
    QString pattern;              ///< of `op3`, with the placeholders of renamePlaceholders()
    ConversionChoice letterCase;  ///< runs first, over the whole bare name
    ConversionChoice replacement; ///< of blanks and underscores

    /// The rule that the renaming page is set to.
    static NamingRule chosen(const SessionChoices &choices);
};

/// The track as names show it: below 10 with a "0" in front. Of "3/12", a number and a total, the number alone is
/// taken ("03"). A text that is no number stays as it is, so does the empty one.
QString trackInName(const QString &track);

/// The new bare name of a file with that bare name and tag. A file that lacks a field which `op1` or `op2` need keeps
/// its name. Under `op3` only the first occurrence of a placeholder is filled, one whose field is empty stays, and the
/// pattern's own text is used as it stands: a separator in it leads into another folder. May be empty.
QString BuildNewName(const QString &oldBareName, const TagRecord &record, const NamingRule &rule);

} // namespace ravlin
