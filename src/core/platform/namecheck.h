// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

/// What a new name has to be like, so that the file or folder can be found, copied to other systems and taken away
/// again. The same on every system, but for the length, whose unit is the system's, and for what Windows forbids.
namespace ravlin::platform {

enum class NameKind
{
    File, ///< with its extension
    Folder
};

/// Why a name is refused.
enum class NameProblem
{
    Empty,        ///< nothing, or nothing but blanks, before the extension
    Dots,         ///< nothing but full stops (and blanks): "." and ".." mean other folders
    Forbidden,    ///< has a character that no name may have here: one of < > : " | ? * and of the separators on Windows
    Reserved,     ///< a device's name: CON, PRN, AUX, NUL, COM1 to COM9, LPT1 to LPT9, alone or before a full stop
    TooLong,      ///< more than MaxNameLength
    LeadsOutside, ///< leads out of the folder by a value's text, not by the pattern's own
};

/// In UTF-16 units on Windows, in bytes elsewhere.
inline constexpr int MaxNameLength = 255;
/// In the unit of MaxNameLength.
qsizetype nameLength(const QString &name);

struct CheckedName
{
    QString name; ///< adjusted; as it was given when it is refused
    bool isAdjusted = false;
    std::optional<NameProblem> problem = {};
};

/// One name, without separators. Adjusted are: control characters (taken out), blanks and full stops at the end of a
/// folder's name (taken off: Windows would do it without a word), and a full stop at the beginning (an underscore
/// instead: the file would be hidden and vanish from the list).
CheckedName checkName(const QString &name, NameKind kind);

/// The name with " (2)", " (3)" and so on before its extension, shortened to fit MaxNameLength. number: from 2.
QString numberedName(const QString &name, int number, NameKind kind);

/// The first characters of a text that take at most the length; never half a character.
QString shortened(const QString &text, qsizetype length);

} // namespace ravlin::platform
