// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command.h"
#include "core/platform/standardstreams.h"

namespace {

using ravlin::platform::StandardStream;

ravlin::cli::Output standardOutput(StandardStream stream)
{
    return {[stream](QByteArrayView bytes) { return ravlin::platform::writeTo(stream, bytes); },
        ravlin::platform::isTerminal(stream)};
}

} // namespace

// No QCoreApplication: in the C locale, which many scripts use, it would complain on standard error. The command that
// needs the network makes its own (CddbDialogue in cli/disccommands.cpp).
int main(int argc, char **argv)
{
    ravlin::platform::restrictLibrarySearch();
    ravlin::platform::prepareStandardStreams();
    ravlin::platform::outliveFileSizeLimit();
    ravlin::cli::Console console(standardOutput(StandardStream::Output), standardOutput(StandardStream::Error));
    return console.finish(ravlin::cli::run(ravlin::platform::programArguments(argc, argv), console));
}
