// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command.h"
#include "cli/recordwriter.h"
#include "core/files/operations/deletion.h"
#include "core/platform/nodes.h"

#include <optional>

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

RecordWriter writerFor(const Arguments &arguments, Console &console)
{
    return {console.out(), chooseFormat(arguments.has(JsonOption.name), console.out(), Format::Table),
        {u"path", u"action", u"newPath", u"error"}};
}

void showPlan(const Arguments &arguments, const QStringList &forGood, Console &console)
{
    RecordWriter writer = writerFor(arguments, console);
    for (const QString &path : arguments.paths()) {
        const auto node = platform::nodeAt(path);
        const bool hasNoTrash = forGood.contains(path);
        const QString action = !node                              ? u"failed"_s
                               : !hasNoTrash                      ? u"trash"_s
                               : arguments.has(DeleteOption.name) ? u"delete"_s
                                                                  : u"noTrash"_s;
        writer.write({path, action, Value(), node ? Value() : Value(describe(node.error()))});
        if (!node)
            console.fail(path, node.error());
    }
    writer.finish();
}

/// What became of a path, from the report on it alone.
Record outcomeOf(const QString &path, const DeletionReport &report)
{
    if (!report.failures.empty()) {
        const Error &error = report.failures.front().error;
        return {path, error.code == ErrorCode::NoTrash ? u"noTrash"_s : u"failed"_s, Value(), describe(error)};
    }
    if (report.trashed.empty())
        return {path, u"delete"_s, Value(), Value()};
    const QString &file = report.trashed.front().file; // Windows may not tell it
    return {path, u"trash"_s, file.isEmpty() ? Value() : Value(file), Value()};
}

int runTrash(const Arguments &arguments, Console &console)
{
    const bool isDry = arguments.has(TrashDryRunOption.name);
    const QStringList forGood =
        arguments.has(DeleteOption.name) || isDry ? withoutTrash(arguments.paths()) : QStringList();
    if (isDry) {
        showPlan(arguments, forGood, console);
        return console.status();
    }
    std::optional<RecordWriter> writer;
    if (arguments.has(JsonOption.name))
        writer.emplace(writerFor(arguments, console));
    for (const QString &path : arguments.paths()) {
        const DeletionReport report =
            forGood.contains(path) ? deleteForGood(platform::FileSystem::native(), {path}) : putIntoTrash({path});
        tellFailures(report, console);
        if (writer)
            writer->write(outcomeOf(path, report));
    }
    if (writer)
        writer->finish();
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
