// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/renaming/renaming.h"
#include "core/naming/foldername.h"
#include "core/naming/newname.h"
#include "core/naming/previewrows.h"

#include <QString>

#include <optional>
#include <vector>

/// From the names that the rules make of tags to the batches that give them.
namespace ravlin {

/// One wish a row, in their order; a row without a name of its own (its file cannot be read) wishes to stay.
std::vector<RenameWish> renameWishes(const std::vector<PreviewRow> &rows, const NamingRule &rule);

/// The wish for a folder after the tag of its first file. folder: with or without separators at its end. Nothing where
/// the rule makes no name. Values of `Check1` are used as they stand, but one that would lead into another folder is
/// refused (LeadsOutside). The batch for it is a RenamingPlan with this one wish.
std::optional<RenameWish> folderRenameWish(const QString &folder, const TagRecord &record, const FolderRule &rule);

} // namespace ravlin
