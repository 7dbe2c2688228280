// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

#include <QString>

namespace ravlin {

/// What the file list shows of a file's tags; the values are those that TagStore::ReadTag gives.
struct ListFields
{
    QString title;
    QString artist;
    QString album;
    QString year;
    QString track; ///< empty: none
    bool hasV1 = false;
    bool hasV2 = false;
};

/// Reads them with as little input as possible: the tag's frame headers up to the last field that the list shows, those
/// fields' bytes, and the last 128 bytes of the file. Pictures are never read. Errors are those of reading.
Result<ListFields> readListFields(platform::File &file);

} // namespace ravlin
