// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

/// Reading, writing, copying and comparing whole ranges of files, on top of the single steps that
/// File offers. Errors that concern no single system call carry no path; the caller knows which
/// file it is about.
namespace ravlin::platform {

/// Writes all bytes, however many steps the system takes.
Result<void> writeAll(File &file, QByteArrayView bytes, qint64 offset);

/// The length bytes from offset; ChangedMeanwhile when the file ends before. length must fit into
/// memory.
Result<QByteArray> readExactly(File &file, qint64 offset, qint64 length);

/// Copies length bytes; ChangedMeanwhile when the source ends before.
Result<void> copyAll(File &source, qint64 sourceOffset, File &target, qint64 offset, qint64 length);

/// True when both ranges exist and hold the same bytes.
Result<bool> sameBytes(File &one, qint64 oneOffset, File &other, qint64 otherOffset, qint64 length);
Result<bool> sameBytes(File &file, qint64 offset, QByteArrayView bytes);

} // namespace ravlin::platform
