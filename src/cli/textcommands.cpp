// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command.h"
#include "core/naming/texttransforms.h"
#include "core/platform/namecheck.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace ravlin::cli {

namespace {

constexpr Option ModeOption{u"--mode", u"MODE", u"upper (10), lower (11) or capitalize (12); must be given"};

struct CaseMode
{
    QStringView name;
    QStringView number;
    int mode = 0;
};

constexpr std::array Modes{CaseMode{u"upper", u"10", CaseUpper}, CaseMode{u"lower", u"11", CaseLower},
    CaseMode{u"capitalize", u"12", CaseCapitalize}};

int runCase(const Arguments &arguments, Session &session)
{
    Console &console = session.console();
    const std::optional<QString> given = arguments.value(ModeOption.name);
    if (!given)
        return console.refuse(u"case"_s, u"--mode must be given"_s);
    const auto found = std::ranges::find_if(
        Modes, [&given](const CaseMode &mode) { return *given == mode.name || *given == mode.number; });
    if (found == Modes.end())
        return console.refuse(u"case"_s, u"--mode is upper, lower, capitalize, 10, 11 or 12, not '%1'"_s.arg(*given));
    for (const QString &text : arguments.operands())
        console.print(ConvertCase(text, found->mode));
    return console.status();
}

int runClean(const Arguments &arguments, Session &session)
{
    Console &console = session.console();
    for (const QString &text : arguments.operands())
        console.print(platform::visibleName(CleanFileName(text)));
    return console.status();
}

} // namespace

Command caseCommand()
{
    return {u"case", u"convert the case of texts",
        u"Prints each text with its case converted by the rules of your language. capitalize puts a capital at the "
        u"start\n"
        "and behind each of  ( ) ? ¿ = ¡ ! / \\ _ - + & % $ # @ , .  and the blank, and makes all else lower case.",
        u"TEXT", true, {ModeOption}, runCase};
}

Command cleanCommand()
{
    return {u"clean", u"remove from texts what a file name may not hold",
        u"Prints each text without the characters \\ / : * ? \" < > |, which a file name may not hold everywhere, and\n"
        "without control and hidden characters. Behind > and | the next character goes too.",
        u"TEXT", true, {}, runClean};
}

} // namespace ravlin::cli
