// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command.h"
#include "core/naming/texttransforms.h"

namespace ravlin::cli {

namespace {

int runClean(const Arguments &arguments, Console &console)
{
    for (const QString &text : arguments.operands())
        console.print(CleanFileName(text));
    return console.status();
}

} // namespace

Command cleanCommand()
{
    return {u"clean", u"remove from texts what a file name may not hold",
        u"Prints each text without the characters \\ / : * ? \" < > |, which a file name may not hold everywhere. "
        u"Behind\n"
        "> and | the next character goes too.",
        u"TEXT", true, {}, runClean};
}

} // namespace ravlin::cli
