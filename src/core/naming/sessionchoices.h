// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/naming/conversion.h"

#include <QString>

#include <array>

namespace ravlin {

class Settings;

/// What the working modes remember from run to run: the renaming rule, its pattern, and the conversions. Read once at
/// the start and saved at the end.
struct SessionChoices
{
    static constexpr int DefaultRenameMode = 2;

    int renameMode = DefaultRenameMode;          ///< 1 to 3: which of op1 to op3 is chosen; 0: none
    QString renamePattern;                       ///< the text of tavanzado; empty: as designed
    std::array<ConversionChoice, 5> conversions; ///< at the index of each pair's number

    /// An empty rename mode means the default; one that is none of the three chooses none.
    static SessionChoices restored(const Settings &settings);
    /// Settings::save() writes it to the file.
    void store(Settings &settings) const;
};

} // namespace ravlin
