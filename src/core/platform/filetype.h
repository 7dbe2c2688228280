// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/error.h"

#include <QString>

namespace ravlin::platform {

/// A kind of file and the program that opens it.
struct FileType
{
    QString className;   ///< what it is registered under: letters, digits, "-", "_" and "."
    QString description; ///< for people
    QString programPath;
    QString extension; ///< with a full stop in front or without
};

/// Makes a program the one that opens files of an extension, for this user: by a desktop entry of the class's name in
/// the user's data folder, which is replaced if it is there, and by the user's choice of default programs, of which all
/// else stays as it is.
///
/// Errors: InvalidArgument (no class, program or extension, or one that can't be told in these files), Unsupported (the
/// system knows no kind of file by that extension: a program can be chosen for known ones only), and those of writing.
Result<void> makeFileDefault(const FileType &type);

} // namespace ravlin::platform
