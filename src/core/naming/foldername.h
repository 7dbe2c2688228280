// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/tags/record/tagrecord.h"

#include <QString>

#include <optional>

/// The new name of a folder, from the tag of its first file.
namespace ravlin {

class Settings;

/// The state of the folder dialog.
struct FolderRule
{
    bool artistAlbum = false; ///< `Check1`: artist and album, or whichever there is
    bool pattern = false;     ///< `Check2`: the pattern. If both are on, `Check1` wins where it makes a name
    QString patternText;      ///< of `avanzado`, with the placeholders of folderPlaceholders()

    friend bool operator==(const FolderRule &, const FolderRule &) = default;

    static FolderRule restored(const Settings &settings);
    /// Settings::save() writes it to the file.
    void store(Settings &settings) const;
};

/// The folder's new path. folder: its present one, with or without separators at its end. The pattern's values are
/// cleaned for names; those of `Check1` are not, so a separator in them leads into a subfolder. Returns nothing if no
/// rule is on, the chosen ones make no name, or the folder has no parent.
std::optional<QString> newFolderPath(const QString &folder, const TagRecord &record, const FolderRule &rule);

} // namespace ravlin
