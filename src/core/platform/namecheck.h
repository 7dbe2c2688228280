// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringView>

#include <optional>

/// Checks new names, so that the file or folder can be found, copied to other systems and deleted again. The rules are
/// the same on every system, except for the unit of the length and for what Windows forbids.
namespace ravlin::platform {

enum class NameKind
{
    File, ///< with its extension
    Folder
};

/// Why a name is refused.
enum class NameProblem
{
    Empty,        ///< nothing visible but blanks, if anything, before the extension
    Dots,         ///< nothing but full stops and blanks: "." and ".." mean other folders
    Forbidden,    ///< has a character that no name may have: on Windows < > : " | ? * and the separators
    Reserved,     ///< names a device: CON, PRN, AUX, NUL, COM1 to COM9, LPT1 to LPT9, alone or before a full stop
    TooLong,      ///< more than MaxNameLength
    LeadsOutside, ///< a value's text, not the pattern's own, leads out of the folder
};

/// Whether a file's name, or a path's, says that it is music: it ends in ".mp3" in any case.
bool isMp3Name(QStringView name);

/// In UTF-16 units on Windows, in bytes elsewhere.
inline constexpr int MaxNameLength = 255;
/// In the unit of MaxNameLength.
qsizetype nameLength(const QString &name);

struct CheckedName
{
    QString name; ///< adjusted; if refused, as it was given
    bool isAdjusted = false;
    std::optional<NameProblem> problem = {};
};

/// The name without control characters and without those that disguise it (see textsafety.h). May become empty.
QString visibleName(QString name);

/// Checks one name, without separators. Makes it visible (see visibleName), and removes blanks and full stops at the
/// end of a folder's name, which Windows would remove silently. Replaces a full stop at the beginning by an underscore,
/// since a hidden file would vanish from the list.
CheckedName checkName(const QString &name, NameKind kind);

/// The visible name with " (2)", " (3)" and so on before its extension, shortened to fit MaxNameLength. number: from 2.
QString numberedName(const QString &name, int number, NameKind kind);

/// The longest start of a text that fits into length, in the unit of MaxNameLength; never ends in half a character.
QString shortened(const QString &text, qsizetype length);

} // namespace ravlin::platform
