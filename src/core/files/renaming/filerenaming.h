// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/renaming/renaming.h"
#include "core/naming/newname.h"
#include "core/naming/previewrows.h"

#include <QStringList>

#include <vector>

namespace ravlin {

class TagStore;

/// The renaming of files after their tags, made ready and not yet run: the preview shows it and the run carries it out.
struct FileRenaming
{
    std::vector<PreviewRow> rows; ///< one a file: its tag and the name that the rule gives
    RenamingPlan plan;            ///< row by row the same files
};

/// Reads the files' tags, makes their names by the rule and plans the renames; touches nothing. A file whose tag can't
/// be read keeps its name. May run on any thread that has the store to itself.
FileRenaming planFileRenaming(const QStringList &paths, const NamingRule &rule, const TagStore &store,
    platform::FileSystem &fileSystem, const ProgressReport &progress = {});

/// The name that a row comes to as one reads it beside the file's present one: the new path below the file's folder,
/// or the whole path when it lies elsewhere. Of a row that keeps its file where it is against the rule's will, the name
/// that the rule gave.
QString newNameOf(const PreviewRow &preview, const RenameRow &row);

} // namespace ravlin
