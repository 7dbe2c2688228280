// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/bytewindow.h"

#include <QString>

/// The one rule about the files that tags are written into. TagObject asks it before every write, previews beforehand.
///
/// A folder from a stranger may hold links named like songs, and people mix up names. So a file is written only if its
/// own name ends in ".mp3", and only if its content is not plainly of another format. See
/// docs/decisions/0016-only-mp3-files.md.
namespace ravlin {

/// canonical: the file's path with every link resolved. NotMp3Name: its name does not end in ".mp3".
Result<void> checkMp3Name(const QString &canonical);

/// NotMp3Content: what lies between the file's tags begins like a file of another format or like a text, and no two
/// MPEG frames follow each other in the first MiB. Everything else passes: junk before the audio, damaged streams, MP3
/// in a RIFF file, an empty file, tags alone. Usually one read of 4 KiB for each tag at the start and one behind them,
/// never more than the first MiB and a few blocks, however long the file. Other errors: reading fails.
Result<void> checkMp3Content(platform::ByteSource &source);

} // namespace ravlin
