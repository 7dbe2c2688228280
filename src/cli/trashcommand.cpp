// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command.h"
#include "cli/recordwriter.h"
#include "core/files/operations/deletion.h"
#include "core/platform/nodes.h"

using namespace Qt::StringLiterals;

namespace ravlin::cli {

namespace {

constexpr Option DeleteOption{u"--delete", {}, u"delete for good what is on a drive without trash, or too full for it"};
constexpr Option TrashDryRunOption{u"--dry-run", {}, u"show what would be done, and do nothing"};

void tellFailures(const DeletionReport &report, Console &console)
{
    for (const FileFailure &failure : report.failures) {
        const QString path = failure.error.path.isEmpty() ? failure.path : failure.error.path;
        if (failure.error.code == ErrorCode::NoSpace)
            console.fail(path, u"the drive is too full for the trash; with --delete it is deleted for good"_s);
        else
            console.fail(path, failure.error);
    }
    for (const QString &path : report.notDone)
        console.fail(path, u"not begun"_s);
}

/// Takes out what found no room in the trash of a full drive.
QStringList takeTooFull(DeletionReport &report)
{
    QStringList paths;
    std::erase_if(report.failures, [&](const FileFailure &failure) {
        const bool isTooFull = failure.error.code == ErrorCode::NoSpace;
        if (isTooFull)
            paths.append(failure.path);
        return isTooFull;
    });
    return paths;
}

void showPlan(const Arguments &arguments, const QStringList &forGood, Console &console)
{
    RecordWriter writer(console.out(), chooseFormat(arguments.has(JsonOption.name), console.out(), Format::Table),
        {u"path", u"action"});
    for (const QString &path : arguments.paths()) {
        const auto node = platform::nodeAt(path);
        const bool hasNoTrash = forGood.contains(path);
        const bool isReadOnly = node && platform::isOnReadOnlyDrive(path);
        const QString action = !node || isReadOnly                ? u"failed"_s
                               : !hasNoTrash                      ? u"trash"_s
                               : arguments.has(DeleteOption.name) ? u"delete"_s
                                                                  : u"noTrash"_s;
        writer.write({path, action});
        if (!node)
            console.fail(path, node.error());
        else if (isReadOnly)
            console.fail(path, Error{ErrorCode::ReadOnlyDrive, path, {}});
    }
    writer.finish();
}

int runTrash(const Arguments &arguments, Console &console)
{
    const bool isDry = arguments.has(TrashDryRunOption.name);
    if (arguments.has(JsonOption.name) && !isDry)
        return console.refuse(u"trash"_s, u"--json is for --dry-run"_s);
    QStringList forGood = arguments.has(DeleteOption.name) || isDry ? withoutTrash(arguments.paths()) : QStringList();
    if (isDry) {
        showPlan(arguments, forGood, console);
        return console.status();
    }
    QStringList forTrash = arguments.paths();
    forTrash.removeIf([&](const QString &path) { return forGood.contains(path); });
    DeletionReport trashed = putIntoTrash(forTrash);
    if (arguments.has(DeleteOption.name))
        forGood += takeTooFull(trashed);
    tellFailures(trashed, console);
    tellFailures(deleteForGood(platform::FileSystem::native(), forGood), console);
    return console.status();
}

} // namespace

Command trashCommand()
{
    return {u"trash", u"put files and folders into the trash",
        u"Puts files, links and folders into the desktop's trash, each into that of its own drive. What is on a drive\n"
        "without trash, or too full for it, stays where it is unless --delete is given.",
        u"PATH", true, {DeleteOption, TrashDryRunOption, JsonOption}, runTrash};
}

} // namespace ravlin::cli
