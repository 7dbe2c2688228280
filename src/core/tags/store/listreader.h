// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

#include <QString>

#include <stop_token>

namespace ravlin {

/// What the file list shows of a file's tags. The values are those of TagStore::ReadTag.
struct ListFields
{
    QString title;
    QString artist;
    QString album;
    QString year;
    QString track; ///< empty: none
    bool hasV1 = false;
    bool hasV2 = false;
    bool isCut = false; ///< the tag is too large, and fields may be missing (see id3::Tag::isCut)
};

/// Reads the fields of the list with as little input as possible: the tag's frame headers up to the last field of the
/// list, the bytes of those fields, and the last 128 bytes of the file. Never reads pictures. A text of more than 4,096
/// characters is cut and ends in an ellipsis. Fails only if reading does, or with Cancelled after a stop.
Result<ListFields> readListFields(platform::File &file, const std::stop_token &stop = {});

} // namespace ravlin
