// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <vector>

namespace ravlin {

/// Where a folder tree starts.
struct FolderRoot
{
    enum class Kind
    {
        Home,
        Music,
        Drive
    };

    QString path; ///< without a separator at its end, but for the root of a file system
    Kind kind = Kind::Drive;
};

/// The places that a user of this computer looks for music in: the home and the music folder where they exist, the
/// file systems' roots and the volumes that are mounted for the user.
std::vector<FolderRoot> standardFolderRoots();

} // namespace ravlin
