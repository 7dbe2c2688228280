// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/arguments.h"
#include "cli/console.h"
#include "cli/recordwriter.h"
#include "core/files/renaming/renaming.h"
#include "core/tags/record/tagrecord.h"

/// What the renaming commands share.
namespace ravlin::cli {

inline constexpr Option ClashOption{
    u"--clash", u"WORD", u"when a name is taken: skip the file (so without it), number it, or stop"};

/// The answer for taken names; Skip without the option.
tl::expected<ClashAnswer, UsageError> clashAnswer(const Arguments &arguments);

/// The columns of a preview: path, new path, outcome and reason, and the tag.
std::vector<QStringView> renameColumns();
Record renameRecord(const RenameRow &row, const TagRecord &tag);
/// The wanted path of a row that does not get it.
Extra renameExtra(const RenameRow &row);

/// Why a row does not get its wanted name, or that the name was adjusted or numbered; else empty.
QString reasonOf(const RenameRow &row);
/// Prints every row that did not get the name that the rule gave.
void tellOutcome(const RenamingOutcome &outcome, Console &console);

} // namespace ravlin::cli
