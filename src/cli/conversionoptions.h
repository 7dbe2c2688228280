// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/arguments.h"
#include "core/naming/conversion.h"

/// Options of the commands that convert case and blanks.
namespace ravlin::cli {

inline constexpr Option CaseOption{u"--case", u"WORD", u"convert the case: upper, lower or capitalize"};
inline constexpr Option ReplaceOption{
    u"--replace", u"WORD", u"underscores: put them for blanks; blanks: put them for underscores"};

/// The conversion that the option selects; off without it.
tl::expected<ConversionChoice, UsageError> caseChoice(const Arguments &arguments);
tl::expected<ConversionChoice, UsageError> replaceChoice(const Arguments &arguments);

} // namespace ravlin::cli
