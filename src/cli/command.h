// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/arguments.h"
#include "cli/console.h"
#include "cli/session.h"

#include <vector>

namespace ravlin::cli {

enum class Operands
{
    Needed,
    Optional, ///< none or one
    None,
};

/// A command: its name, what it takes and what it does.
struct Command
{
    QStringView name;
    QStringView summary;     ///< one line, for the list of commands
    QStringView description; ///< for the command's help, in lines that fit a terminal
    QStringView operand;     ///< name of its operands: "FOLDER", "FILE", "TEXT"
    bool takesSeveral = true;
    std::vector<Option> options; ///< without help and version, which every command has
    /// Gets at least one operand, exactly one unless takesSeveral, if they are needed. Returns the exit status.
    int (*run)(const Arguments &arguments, Session &session);
    Operands operands = Operands::Needed;
};

Command listCommand();
Command showCommand();
Command tagCommand();
Command extractCommand();
Command multiCommand();
Command renameCommand();
Command renamedirCommand();
Command copyCommand();
Command moveCommand();
Command trashCommand();
Command playlistCommand();
Command stripCommand();
Command infoCommand();
Command tocCommand();
Command lookupCommand();
Command caseCommand();
Command cleanCommand();
Command historyCommand();
Command undoCommand();
Command redoCommand();

/// In the order of the help.
std::vector<Command> allCommands();

/// Runs the command that the first word names. Returns the exit status.
int run(const QStringList &words, Console &console);

} // namespace ravlin::cli
