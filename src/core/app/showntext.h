// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Makes text from tags, names, servers and settings fit to be shown. It can't pass for the text beside it and can't
/// take long to lay out: a line break becomes its picture (U+21B5), a tab a blank, other control characters and what
/// turns the writing direction of the text around it U+FFFD, as does what is not valid Unicode. A long text is cut.
/// Only for showing: never find a file by such a text, and never save it.
namespace ravlin {

inline constexpr qsizetype MostLetters = 1000; ///< of a text in a list or tooltip
inline constexpr qsizetype MostLines = 30;
inline constexpr qsizetype MostNameLetters = 100; ///< of a name within a sentence

/// The text on one line. A longer one loses its middle.
QString shownLine(const QString &text, qsizetype mostLetters = MostLetters);

/// A text made of several: its line feeds stay. A longer one loses its end.
QString shownLines(const QString &text, qsizetype mostLetters = 2 * MostLetters, qsizetype mostLines = MostLines);

} // namespace ravlin
