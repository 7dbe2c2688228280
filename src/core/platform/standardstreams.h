// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/error.h"

#include <QByteArrayView>
#include <QStringList>

/// What a program has of the system that starts it: its arguments and its standard streams. Used by one thread.
namespace ravlin::platform {

enum class StandardStream
{
    Output,
    Error
};

/// The arguments behind the program's name. A file's name survives in them whatever its bytes (see decodePath).
QStringList programArguments(int argc, char **argv);

/// What stands behind the program's name, as one text. Windows: the command line as it was given, without quotes around
/// it, since programs that open a file for the user don't all put its name into quotes; elsewhere the first argument.
QString commandLineText(int argc, char **argv);

/// To be called before anything else opens a file. Keeps a standard stream that the caller has closed from becoming the
/// number of the next opened file, into which messages would go then; and makes a reader that has gone away an outcome
/// of writing instead of the end of the program.
void prepareStandardStreams();

/// Whether a person is looking at it.
bool isTerminal(StandardStream stream);

/// Columns that a character takes on a terminal: 0 for marks that sit on another one, 2 for wide ones such as Chinese,
/// Japanese and Korean letters and emoji; -1 for control characters.
int displayWidth(char32_t character);

/// Writes all bytes. False: nobody reads the stream any more.
Result<bool> writeTo(StandardStream stream, QByteArrayView bytes);

} // namespace ravlin::platform
