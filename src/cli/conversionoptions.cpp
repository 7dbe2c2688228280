// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/conversionoptions.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace ravlin::cli {

namespace {

/// In the order of the program's lists of conversions.
constexpr std::array<QStringView, 3> CaseWords{u"upper", u"lower", u"capitalize"};
constexpr std::array<QStringView, 2> ReplaceWords{u"underscores", u"blanks"};

tl::expected<ConversionChoice, UsageError> choiceOf(
    const Arguments &arguments, QStringView option, std::span<const QStringView> words)
{
    const std::optional<QString> word = arguments.value(option);
    if (!word)
        return ConversionChoice{};
    const auto found = std::ranges::find(words, QStringView(*word));
    if (found == words.end()) {
        QStringList known;
        for (const QStringView each : words)
            known << each.toString();
        return tl::unexpected(UsageError{u"%1 is %2, not '%3'"_s.arg(option, known.join(u" or "_s), *word)});
    }
    return ConversionChoice{true, static_cast<int>(found - words.begin())};
}

} // namespace

tl::expected<ConversionChoice, UsageError> caseChoice(const Arguments &arguments)
{
    return choiceOf(arguments, CaseOption.name, CaseWords);
}

tl::expected<ConversionChoice, UsageError> replaceChoice(const Arguments &arguments)
{
    return choiceOf(arguments, ReplaceOption.name, ReplaceWords);
}

} // namespace ravlin::cli
