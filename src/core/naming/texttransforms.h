// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLocale>
#include <QString>

/// The text transforms of names and tags: pure functions from text to text. None of them fails, and valid UTF-16 stays
/// valid: a character in a rule is a whole code point, never half of a surrogate pair.
namespace ravlin {

/// Modes of ConvertCase. Any other mode leaves the text as it is.
inline constexpr int CaseUpper = 10;
inline constexpr int CaseLower = 11;
inline constexpr int CaseCapitalize = 12; ///< a capital at the start and after every separator, the rest lower case

/// Modes of ExchangeSpaces. Any other mode leaves the text as it is.
inline constexpr int SpacesToUnderscores = 10;
inline constexpr int UnderscoresToSpaces = 11;

/// Converts the case by the rules of the user's locale.
///
/// CaseCapitalize puts a capital after each of the separators  ( ) ? ¿ = ¡ ! / \ _ - + & % $ # @ , .  and the space,
/// but not after the apostrophe. A letter without a single upper-case form ("ß") stays in CaseCapitalize and becomes
/// "SS" in CaseUpper. Combining marks stay unchanged behind their letter.
QString ConvertCase(const QString &text, int mode);
/// The same by the rules of the given locale.
QString ConvertCase(const QString &text, int mode, const QLocale &locale);

/// Replaces every space by an underscore or every underscore by a space. Runs are not collapsed.
QString ExchangeSpaces(const QString &text, int mode);

/// Replaces the first occurrence of a placeholder by a value; a second one stays. Removes two characters whatever the
/// token's length, because every placeholder has two ("%1").
QString SubstitutePlaceholder(const QString &text, const QString &token, const QString &value);

/// ">" and "|" also remove the character that follows (a letter together with its combining marks). The removal runs in
/// passes, each of which removes the first of every kind in the order above, and that order decides which character
/// follows which. Linear in the length of the text.
QString CleanFileName(const QString &text);

} // namespace ravlin
