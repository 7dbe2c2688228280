// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

#include <optional>

/// The layout of a redo file (see redofile.h), apart from what is done with it.
namespace ravlin::storage {

struct RedoHeader
{
    quint64 inode = 0;         ///< of the file that it belongs to
    qint64 newSize = 0;        ///< bytes
    qint64 oldSize = 0;        ///< bytes
    qint64 oldModified = 0;    ///< nanoseconds since 1970, UTC
    bool keepModified = false; ///< the new content bears the old modification time
    QString name;              ///< the file's name in the redo file's folder

    qint64 newOffset() const;
    qint64 oldOffset() const;
    qint64 trailerOffset() const;
};

Result<void> writeRedoHeader(platform::File &redo, const RedoHeader &header);
/// Makes the redo file valid: to be called when all else is in it.
Result<void> writeRedoTrailer(platform::File &redo, const RedoHeader &header);
/// The header of a complete and undamaged redo file, otherwise nothing. An error when it cannot be
/// read.
Result<std::optional<RedoHeader>> readRedo(platform::File &redo);

} // namespace ravlin::storage
