// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/namecheck.h"

#include <QString>

#include <optional>

namespace ravlin {

/// What a row of a batch wants: a file's path and the one it is to have.
struct RenameWish
{
    QString from;
    QString to;
    platform::NameKind kind = platform::NameKind::File;
    bool isAdjusted = false;                           ///< to differs from what the rule gave, see checkName
    std::optional<platform::NameProblem> problem = {}; ///< the name can't be given; to tells what was wanted
};

/// The wish for a file to get a new name in its own folder, as a rule gave it, extension included. Separators in it are
/// the pattern's own and lead into folders below, which need not exist yet; "." and empty names between them count for
/// nothing. stepsUp: how many ".." the pattern's own text has between separators; with more, some value was such a name
/// (LeadsOutside). The file's present name is never refused or adjusted.
RenameWish wishForFile(const QString &path, const QString &newName, int stepsUp = 0);

/// The same for a folder (a path without a separator at its end), whose new name is put beside it.
RenameWish wishForFolder(const QString &path, const QString &newName, int stepsUp = 0);

/// How many ".." a pattern's own text has between separators.
int stepsUpIn(const QString &pattern);

} // namespace ravlin
