// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/storage/safewrite.h"

/// What rewriteFile has to do: the new content in its simplest form, and where it differs from the old.
namespace ravlin::storage {

/// Kernels copy written bytes into a file's pages one by one, and disks write whole blocks of this many bytes or more:
/// a write inside one aligned block happens whole or not at all, even if the program is killed.
inline constexpr qint64 AtomicBlockSize = 4096;

/// A file's new content: valid, without empty segments, and with kept ranges merged that are adjacent in both files.
struct NewContent
{
    std::vector<Segment> segments;
    qint64 size = 0;
    bool keptStayInPlace = true; ///< every kept range is at the same offset in the new content
};

/// InvalidArgument for a segment that is not in the old file or contradicts itself.
Result<NewContent> makeContent(const std::vector<Segment> &segments, qint64 oldSize);

/// Bytes inside one block of a file, and as many others in their place.
struct Patch
{
    qint64 offset = 0;
    QByteArray oldBytes;
    QByteArray newBytes;
};

/// The smallest change that turns the old file into the new content.
struct Change
{
    enum Kind
    {
        None,
        Block,     ///< one patch
        Patches,   ///< one in each of a few blocks
        Elsewhere, ///< anything larger, or of another size: needs a new file
    };
    Kind kind = None;
    std::vector<Patch> patches; ///< from the front; for Block and Patches
};

/// The most blocks that Change::Patches changes. More are no cheaper than a new file, since all of them are recorded.
inline constexpr std::size_t MostPatches = 16;

/// Compares the new content with the file. Reads no more of it than needed.
Result<Change> findChange(platform::File &file, qint64 oldSize, const NewContent &content);

/// Whether the file has the content from base on. Compares all new bytes, but of kept ranges only the first and the
/// last block. original: the file that the kept ranges come from.
Result<bool> holdsContent(platform::File &file, qint64 base, platform::File &original, const NewContent &content);

/// Writes the content into file from base on.
Result<void> writeContent(platform::File &file, qint64 base, platform::File &original, const NewContent &content);

} // namespace ravlin::storage
