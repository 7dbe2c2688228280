// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/arguments.h"
#include "cli/console.h"
#include "cli/recordwriter.h"
#include "core/files/renaming/renaming.h"
#include "core/tags/record/tagrecord.h"

/// What the commands that rename have in common.
namespace ravlin::cli {

inline constexpr Option ClashOption{
    u"--clash", u"WORD", u"when a name is taken: skip the file (so without it), number it, or stop"};

/// What is done about taken names; skip without the option.
tl::expected<ClashAnswer, UsageError> clashAnswer(const Arguments &arguments);

/// The columns of a preview: path, new path, what becomes of it and why, and the tag.
std::vector<QStringView> renameColumns();
Record renameRecord(const RenameRow &row, const TagRecord &tag);

/// Why a row is not renamed as wished, or that its name was adjusted or numbered; empty when there is nothing to say.
QString reasonOf(const RenameRow &row);
/// Tells of every row that did not get the name that the rule gave it.
void tellOutcome(const RenamingOutcome &outcome, Console &console);

} // namespace ravlin::cli
