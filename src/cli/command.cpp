// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace ravlin::cli {

namespace {

QString versionText()
{
    return u"ravlin-cli "_s + QString::fromLatin1(RAVLIN_VERSION);
}

/// Two columns, the first as wide as its longest entry.
QString helpTable(const std::vector<std::pair<QString, QString>> &lines)
{
    qsizetype width = 0;
    for (const auto &[entry, help] : lines)
        width = std::max(width, entry.size());
    QString text;
    for (const auto &[entry, help] : lines)
        text += u"  "_s + entry.leftJustified(width + 2) + help + u'\n';
    return text;
}

QString programHelp()
{
    std::vector<std::pair<QString, QString>> commands;
    for (const Command &command : allCommands())
        commands.emplace_back(command.name.toString(), command.summary.toString());
    return u"Usage: ravlin-cli COMMAND [OPTION]... [OPERAND]...\n"
           "Lists, changes, analyses and looks up MP3 files and their ID3 tags.\n\nCommands:\n"_s +
           helpTable(commands) + u"\nOptions:\n"_s +
           helpTable({{HelpOption.name.toString(), HelpOption.help.toString()},
               {VersionOption.name.toString(), VersionOption.help.toString()}}) +
           u"\n'ravlin-cli COMMAND --help' tells more. The exit status is 0 when all went well, 1 when something\n"
           "failed, 2 when the command line makes no sense.\n"_s;
}

std::vector<Option> optionsOf(const Command &command)
{
    std::vector<Option> options = command.options;
    options.push_back(HelpOption);
    options.push_back(VersionOption);
    return options;
}

/// What follows the options in a usage line.
QString operandsText(const Command &command)
{
    switch (command.operands) {
    case Operands::Needed:
        return u' ' + command.operand.toString() + (command.takesSeveral ? u"..."_s : QString());
    case Operands::Optional:
        return u" [%1]"_s.arg(command.operand);
    case Operands::None:
        break;
    }
    return {};
}

/// Why these operands are not what the command takes; empty if they are.
QString operandsProblem(const Command &command, const QStringList &operands)
{
    if (command.operands == Operands::None)
        return operands.isEmpty() ? QString() : u"it takes no operand such as '%1'"_s.arg(operands.front());
    if (operands.isEmpty() && command.operands == Operands::Needed)
        return u"a %1 is missing"_s.arg(command.operand);
    if (operands.size() > 1 && !command.takesSeveral)
        return u"one %1 only; a name with blanks needs quotes"_s.arg(command.operand);
    return {};
}

QString commandHelp(const Command &command)
{
    std::vector<std::pair<QString, QString>> lines;
    for (const Option &option : optionsOf(command)) {
        QString entry = option.name.toString();
        if (!option.valueName.isEmpty())
            entry += u' ' + option.valueName.toString();
        lines.emplace_back(entry, option.help.toString());
    }
    if (command.operands != Operands::None)
        lines.emplace_back(u"--"_s, u"end of the options: what follows is a %1"_s.arg(command.operand));
    return u"Usage: ravlin-cli %1 [OPTION]...%2\n%3\n\nOptions:\n"_s.arg(
               command.name, operandsText(command), command.description) +
           helpTable(lines);
}

int runCommand(const Command &command, const QStringList &words, Console &console)
{
    const QString name = command.name.toString();
    const auto arguments = Arguments::parse(words, optionsOf(command));
    if (!arguments)
        return console.refuse(name, arguments.error().text);
    if (arguments->has(HelpOption.name)) {
        console.out().write(commandHelp(command).toUtf8());
        return Success;
    }
    if (arguments->has(VersionOption.name)) {
        console.print(versionText());
        return Success;
    }
    if (const QString problem = operandsProblem(command, arguments->operands()); !problem.isEmpty())
        return console.refuse(name, problem);
    Session session(*arguments, console);
    return command.run(*arguments, session);
}

} // namespace

std::vector<Command> allCommands()
{
    return {listCommand(), showCommand(), tagCommand(), extractCommand(), multiCommand(), renameCommand(),
        renamedirCommand(), copyCommand(), moveCommand(), trashCommand(), playlistCommand(), stripCommand(),
        infoCommand(), tocCommand(), lookupCommand(), historyCommand(), undoCommand(), redoCommand(), caseCommand(),
        cleanCommand()};
}

int run(const QStringList &words, Console &console)
{
    if (words.isEmpty())
        return console.refuse({}, u"a command is missing"_s);
    const QString &name = words.front();
    if (name == HelpOption.name || name == u"-h") {
        console.out().write(programHelp().toUtf8());
        return Success;
    }
    if (name == VersionOption.name) {
        console.print(versionText());
        return Success;
    }
    const std::vector<Command> commands = allCommands();
    const auto found = std::ranges::find(commands, name, &Command::name);
    if (found == commands.end()) {
        const QString what = name.startsWith(u'-') ? u"option"_s : u"command"_s;
        return console.refuse({}, u"unknown %1 '%2'"_s.arg(what, name));
    }
    return runCommand(*found, words.sliced(1), console);
}

} // namespace ravlin::cli
