// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QChar>
#include <QString>

/// Characters that have no place in a foreign text: those that command instead of being read, and those that hide.
/// Names, values and what the command line prints are cleaned of them or show them; see namecheck.h and cli/text.h.
namespace ravlin::platform {

/// Control characters, which command terminals and break lines: U+0000 to U+001F, U+007F to U+009F, and the separators
/// of lines and paragraphs.
constexpr bool isControl(QChar c)
{
    const char16_t unit = c.unicode();
    return unit < 0x20 || (unit >= 0x7F && unit < 0xA0) || unit == 0x2028 || unit == 0x2029;
}

/// Invisible characters that make a name look like another: those that turn the direction of what follows ("gpj.mp3"
/// for "3pm.jpg"), the byte order mark and the zero-width space. Not the joiners and variation selectors, which
/// Persian, Indic scripts and emoji need.
constexpr bool isDisguise(QChar c)
{
    const char16_t unit = c.unicode();
    return unit == 0x061C || unit == 0x200B || unit == 0x200E || unit == 0x200F || (unit >= 0x202A && unit <= 0x202E) ||
           (unit >= 0x2066 && unit <= 0x2069) || unit == 0xFEFF;
}

/// A value from outside, such as a part of a file's name or a server's answer, as it goes into a tag.
inline QString withoutControls(QString value)
{
    return value.removeIf(isControl);
}

} // namespace ravlin::platform
