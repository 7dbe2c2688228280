// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/windows/native.h"

#include <winternl.h>

#include <vector>

/// Names relative to what is already open. The usual calls take paths only, which somebody may lead elsewhere between
/// two of them; these go one step below, to calls that take a handle. All set GetLastError like the usual ones.
namespace ravlin::platform {

struct Opening
{
    ACCESS_MASK access = FILE_READ_ATTRIBUTES;
    ULONG options = 0;             ///< FILE_... of NtCreateFile; FILE_OPEN_REPARSE_POINT opens a link itself
    ULONG disposition = FILE_OPEN; ///< or FILE_CREATE, FILE_OVERWRITE_IF
};

/// Opens or creates what has a name in an open folder. An empty name opens the folder or file itself anew; a name that
/// begins with a colon is that of a file's stream.
Handle openIn(HANDLE root, const QString &name, const Opening &opening);

enum class Existing
{
    Keep, ///< then it fails
    Replace
};

/// Gives what is open (for DELETE) a new name in an open folder.
bool renameTo(HANDLE opened, HANDLE folder, const QString &newName, Existing existing);
/// Removes what is open (for DELETE), be it read-only.
bool removeOpened(HANDLE opened);

/// Sets or clears the read-only attribute of what is open (for FILE_READ_ATTRIBUTES and FILE_WRITE_ATTRIBUTES).
bool setReadOnly(HANDLE opened, bool isReadOnly);

/// The names in a folder that is open for listing, without "." and "..".
Result<std::vector<QString>> namesIn(HANDLE folder, const QString &path);

/// Its path at present, without links.
QString finalPath(HANDLE opened);

} // namespace ravlin::platform
