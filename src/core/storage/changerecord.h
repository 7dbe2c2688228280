// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/storage/writeplan.h"

/// What the journal keeps of a change of a file's content: how to make the old one from the new.
namespace ravlin::storage {

struct Inverse
{
    std::vector<Segment> segments; ///< the old content: lost bytes, and ranges of the new content
    QByteArray written;            ///< the bytes of the new content that no such range covers, from the front
};

/// Of any change. Reads from the file, which has the old content, what the new content does not keep.
Result<Inverse> inverseOf(platform::File &file, qint64 oldSize, const NewContent &content);

/// Of a change in place, of a file of that size: no larger than what it changes.
Inverse inverseOf(const std::vector<Patch> &patches, qint64 size);

} // namespace ravlin::storage
