// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLocale>
#include <QString>

/// The text transforms of names and tags: pure functions that take a text and return a new one. None of them fails, and
/// valid UTF-16 stays valid UTF-16: where a rule speaks of a character, a whole code point is meant, never half of a
/// surrogate pair.
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
/// CaseCapitalize puts a capital after each of the separators  ( ) ? ¿ = ¡ ! / \ _ - + & % $ # @ , .  and the blank;
/// the apostrophe is none. A letter without a single upper-case form ("ß") stays in CaseCapitalize and grows in
/// CaseUpper
/// ("SS"). Combining marks stay as they are behind their letter.
QString ConvertCase(const QString &text, int mode);
/// The same by the rules of the given locale.
QString ConvertCase(const QString &text, int mode, const QLocale &locale);

/// Replaces every blank by an underscore or every underscore by a blank. Runs are not collapsed.
QString ExchangeSpaces(const QString &text, int mode);

/// Replaces the first occurrence of a placeholder by a value. Two characters are taken out whatever the token's length,
/// for every placeholder has two ("%1"). A second occurrence stays.
QString SubstitutePlaceholder(const QString &text, const QString &token, const QString &value);

/// Removes the characters that a file or folder name may not hold: \ / : * ? " < > |
///
/// ">" and "|" take the character that follows them along (a letter together with its combining marks). The removal
/// runs in passes, each of which removes the first of every kind in the order above, so that which character follows
/// which is settled by that order. Linear in the length of the text.
QString CleanFileName(const QString &text);

} // namespace ravlin
