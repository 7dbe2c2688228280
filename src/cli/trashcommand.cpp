// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command.h"
#include "cli/recordwriter.h"
#include "core/files/operations/deletion.h"
#include "core/platform/nodes.h"

using namespace Qt::StringLiterals;

namespace ravlin::cli {

namespace {

constexpr Option DeleteOption{u"--delete", {}, u"delete for good what is on a drive without trash"};
constexpr Option TrashDryRunOption{u"--dry-run", {}, u"show what would be done, and do nothing"};

void tellFailures(const DeletionReport &report, Console &console)
{
    for (const FileFailure &failure : report.failures)
        console.fail(failure.error.path.isEmpty() ? failure.path : failure.error.path, failure.error);
}

void showPlan(const Arguments &arguments, const QStringList &forGood, Console &console)
{
    RecordWriter writer(console.out(), chooseFormat(arguments.has(JsonOption.name), console.out(), Format::Table),
        {u"path", u"action"});
    for (const QString &path : arguments.paths()) {
        const auto node = platform::nodeAt(path);
        const bool hasNoTrash = forGood.contains(path);
        const QString action = !node                              ? u"failed"_s
                               : !hasNoTrash                      ? u"trash"_s
                               : arguments.has(DeleteOption.name) ? u"delete"_s
                                                                  : u"noTrash"_s;
        writer.write({path, action});
        if (!node)
            console.fail(path, node.error());
    }
    writer.finish();
}

int runTrash(const Arguments &arguments, Console &console)
{
    const bool isDry = arguments.has(TrashDryRunOption.name);
    if (arguments.has(JsonOption.name) && !isDry)
        return console.refuse(u"trash"_s, u"--json is for --dry-run"_s);
    const QStringList forGood =
        arguments.has(DeleteOption.name) || isDry ? withoutTrash(arguments.paths()) : QStringList();
    if (isDry) {
        showPlan(arguments, forGood, console);
        return console.status();
    }
    QStringList forTrash = arguments.paths();
    forTrash.removeIf([&](const QString &path) { return forGood.contains(path); });
    tellFailures(putIntoTrash(forTrash), console);
    tellFailures(deleteForGood(platform::FileSystem::native(), forGood), console);
    return console.status();
}

} // namespace

Command trashCommand()
{
    return {u"trash", u"put files and folders into the trash",
        u"Puts files, links and folders into the desktop's trash, each into that of its own drive. What is on a drive\n"
        "without trash stays where it is unless --delete is given.",
        u"PATH", true, {DeleteOption, TrashDryRunOption, JsonOption}, runTrash};
}

} // namespace ravlin::cli
