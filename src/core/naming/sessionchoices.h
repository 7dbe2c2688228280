// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/naming/conversion.h"

#include <QString>

#include <array>

namespace ravlin {

class Settings;

/// What the working modes remember from run to run: the way of renaming, its pattern, and the conversions. Read once at
/// the start and saved at the end.
struct SessionChoices
{
    static constexpr int DefaultRenameMode = 2;

    int renameMode = DefaultRenameMode;          ///< 1 to 3: which of op1 to op3 is chosen; 0: none
    QString renamePattern;                       ///< the text of tavanzado; empty: as designed
    std::array<ConversionChoice, 5> conversions; ///< at the index of each pair's number

    /// A stored rename mode that is none of the three chooses none; an empty one the default.
    static SessionChoices restored(const Settings &settings);
    /// Takes effect for the file with Settings::save().
    void store(Settings &settings) const;
};

} // namespace ravlin
