// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/textorder.h"

namespace ravlin::platform {

TextOrder::TextOrder(const QLocale &locale) : m_collator(locale)
{
    m_collator.setCaseSensitivity(Qt::CaseInsensitive);
}

TextKey TextOrder::keyOf(const QString &text) const
{
    if (text.isEmpty())
        return std::nullopt;
    // Folded because the locale "C" has no rules to ignore case.
    return m_collator.sortKey(text.toCaseFolded());
}

} // namespace ravlin::platform
