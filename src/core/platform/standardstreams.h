// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/error.h"

#include <QByteArrayView>
#include <QStringList>

#include <optional>

/// What a program gets from whoever starts it: its arguments and its standard streams. For one thread.
namespace ravlin::platform {

/// To be called before anything else. Takes libraries that are loaded from now on from the system and the program's own
/// folder only, never from the current folder, where a stranger's file may lie. Only Windows looks there.
void restrictLibrarySearch();

enum class StandardStream
{
    Output,
    Error
};

/// The arguments after the program's name. A file name of any bytes survives in them (see decodePath).
QStringList programArguments(int argc, char **argv);

/// What follows the program's name, as one text. On Windows that is the command line as given, without quotes around
/// it, since not every program that opens a file for the user quotes its name; elsewhere it is the only argument, and
/// there is no such text if there are several.
std::optional<QString> commandLineText(int argc, char **argv);

/// To be called before anything else opens a file. Keeps the number of a standard stream that the caller closed from
/// being given to the next opened file, which messages would then go into. Also makes a reader that has gone away an
/// outcome of writing instead of the end of the program.
void prepareStandardStreams();

/// To be called before anything is written. Makes the user's limit on file sizes an error of the file that would exceed
/// it (ErrorCode::FileSizeLimit) instead of the end of the program.
void outliveFileSizeLimit();

/// Whether somebody may read the stream. On Windows a program with windows has none unless it was given one.
bool hasStream(StandardStream stream);

/// Whether the stream goes to a terminal, where a person reads it.
bool isTerminal(StandardStream stream);

/// Columns that a character takes on a terminal: 0 for combining marks, 2 for wide characters such as Chinese,
/// Japanese and Korean letters and emoji; -1 for control characters.
int displayWidth(char32_t character);

/// Writes all bytes. False if nobody reads the stream any more.
Result<bool> writeTo(StandardStream stream, QByteArrayView bytes);

} // namespace ravlin::platform
