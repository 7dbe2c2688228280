// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

/// Whole operations made of the single steps that File and FileSystem offer. Errors that do not come from a single
/// system call carry no path; the caller knows which file it is about.
namespace ravlin::platform {

/// Writes all bytes, in as many steps as the system takes.
Result<void> writeAll(File &file, QByteArrayView bytes, qint64 offset);

/// The length bytes from offset; ChangedMeanwhile if the file ends before. length must fit into memory.
Result<QByteArray> readExactly(File &file, qint64 offset, qint64 length);

/// Copies length bytes; ChangedMeanwhile if the source ends before.
Result<void> copyAll(File &source, qint64 sourceOffset, File &target, qint64 offset, qint64 length);

/// Whether both ranges exist and hold the same bytes.
Result<bool> sameBytes(File &one, qint64 oneOffset, File &other, qint64 otherOffset, qint64 length);
Result<bool> sameBytes(File &file, qint64 offset, QByteArrayView bytes);

/// Deletes a file, a link, or a folder with everything in it, for good. Links are deleted, never followed, and so is
/// what is exchanged for a link meanwhile. Stops at the first error, which carries its path.
Result<void> removeTree(HeldFolder &folder, const QString &name);

/// The place of a path's last name itself, be it free or a link: only the folder's path is resolved.
Result<Place> placeAt(FileSystem &fileSystem, const QString &path);

} // namespace ravlin::platform
