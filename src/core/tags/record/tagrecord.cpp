// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/record/tagrecord.h"

#include <algorithm>

namespace ravlin {

namespace {

bool isDigits(const QString &text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) { return c >= u'0' && c <= u'9'; });
}

} // namespace

bool isWritableYear(const QString &text)
{
    return text.size() == 4 && isDigits(text);
}

bool isWritableTrack(const QString &text)
{
    return (text.size() == 1 || text.size() == 2) && isDigits(text);
}

} // namespace ravlin
