// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/storage/safewrite.h"

/// What rewriteFile has to do: the new content in its simplest form, and where it differs from the
/// old.
namespace ravlin::storage {

/// Kernels copy written bytes into a file's pages one by one and disks write whole blocks of this
/// many bytes (or more): a write inside one aligned block happens whole or not at all, also when
/// the program is killed.
inline constexpr qint64 AtomicBlockSize = 4096;

/// A file's new content: valid, no empty pieces, kept ranges that follow each other in both files
/// merged.
struct NewContent
{
    std::vector<Segment> segments;
    qint64 size = 0;
    bool keptStayInPlace = true; ///< every kept range is at the same offset in the new content
};

/// InvalidArgument for pieces outside the old file and the like.
Result<NewContent> makeContent(const std::vector<Segment> &segments, qint64 oldSize);

/// The smallest change that turns the old file into the new content.
struct Change
{
    enum Kind
    {
        None,
        Cut,       ///< nothing but the end goes away
        Block,     ///< newBytes in the place of oldBytes; or oldBytes is empty and newBytes follow the
                   ///< old end
        Elsewhere, ///< anything larger: needs a new file
    };
    Kind kind = None;
    qint64 offset = 0; ///< of the bytes, for Block
    QByteArray oldBytes;
    QByteArray newBytes;
};

/// Compares the new content with the file, reading no more of it than needed.
Result<Change> findChange(platform::File &file, qint64 oldSize, const NewContent &content);

/// True when the file has the content at base and after: new bytes are compared all, kept ranges by
/// their first and last block. original is the file that the kept ranges come from.
Result<bool> holdsContent(platform::File &file, qint64 base, platform::File &original, const NewContent &content);

/// Writes the content into file from base on.
Result<void> writeContent(platform::File &file, qint64 base, platform::File &original, const NewContent &content);

} // namespace ravlin::storage
