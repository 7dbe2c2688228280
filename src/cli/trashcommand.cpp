// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command.h"
#include "cli/recordwriter.h"
#include "core/files/operations/deletion.h"
#include "core/platform/nodes.h"
#include "core/platform/path.h"

#include <QMultiHash>

#include <optional>

using namespace Qt::StringLiterals;

namespace ravlin::cli {

namespace {

constexpr Option DeleteOption{u"--delete", {}, u"delete for good what is on a drive without trash, or too full for it"};
constexpr Option TrashDryRunOption{u"--dry-run", {}, u"show what would be done, and do nothing"};

QString reasonOf(const Error &error)
{
    return error.code == ErrorCode::NoSpace
               ? u"the drive is too full for the trash; with --delete it is deleted for good"_s
               : describe(error);
}

void tellFailures(const DeletionReport &report, Console &console)
{
    for (const FileFailure &failure : report.failures)
        console.fail(failure.error.path.isEmpty() ? failure.path : failure.error.path, reasonOf(failure.error));
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
        const bool isReadOnly = node && platform::isOnReadOnlyDrive(path);
        const QString action = !node || isReadOnly                ? u"failed"_s
                               : !hasNoTrash                      ? u"trash"_s
                               : arguments.has(DeleteOption.name) ? u"delete"_s
                                                                  : u"noTrash"_s;
        std::optional<Error> error;
        if (!node)
            error = node.error();
        else if (isReadOnly)
            error = Error{ErrorCode::ReadOnlyDrive, path, {}};
        writer.write({path, action, Value(), error ? Value(describe(*error)) : Value()});
        if (error)
            console.fail(path, *error);
    }
    writer.finish();
}

/// Writes what became of each path.
void showOutcome(const Arguments &arguments, const DeletionReport &trashing, const DeletionReport &deleting,
    const Extra &entry, Console &console)
{
    struct Outcome
    {
        QString action;
        QString error;
    };
    QMultiHash<QString, Outcome> known; // of what did not go into the trash
    for (const QString &path : deleting.deleted)
        known.insert(path, {u"delete"_s, {}});
    for (const DeletionReport *const report : {&trashing, &deleting}) {
        for (const auto &[path, error] : report->failures) {
            const bool hasNoTrash = error.code == ErrorCode::NoTrash;
            known.insert(path, {hasNoTrash ? u"noTrash"_s : u"failed"_s, reasonOf(error)});
        }
        for (const QString &path : report->notDone)
            known.insert(path, {u"notDone"_s, {}});
    }
    RecordWriter writer = writerFor(arguments, console);
    QHash<QString, qsizetype> left; // a path that is given twice is gone the second time
    for (const QString &given : arguments.paths())
        ++left[platform::withoutEndSeparator(given)];
    auto trashed = trashing.trashed.begin(); // in the order of the paths, but by where they really were
    for (const QString &given : arguments.paths()) {
        const QString path = platform::withoutEndSeparator(given);
        if (known.count(path) < left[path]-- && trashed != trashing.trashed.end()) {
            // Windows may not tell where it is.
            writer.write({given, u"trash"_s, trashed->file.isEmpty() ? Value() : Value(trashed->file), Value()}, entry);
            ++trashed;
        } else {
            const Outcome outcome = known.take(path);
            writer.write(
                {given, outcome.action, Value(), outcome.error.isEmpty() ? Value() : Value(outcome.error)}, entry);
        }
    }
    writer.finish();
}

int runTrash(const Arguments &arguments, Session &session)
{
    Console &console = session.console();
    const bool isDry = arguments.has(TrashDryRunOption.name);
    QStringList forGood = arguments.has(DeleteOption.name) || isDry ? withoutTrash(arguments.paths()) : QStringList();
    if (isDry) {
        showPlan(arguments, forGood, console);
        return console.status();
    }
    QStringList forTrash = arguments.paths();
    forTrash.removeIf([&](const QString &path) { return forGood.contains(path); });
    session.begin(forTrash.isEmpty() ? history::Kind::Delete : history::Kind::Trash);
    DeletionReport trashed = putIntoTrash(forTrash, {}, session.journal());
    if (arguments.has(DeleteOption.name))
        forGood += takeTooFull(trashed);
    const DeletionReport deleted = deleteForGood(platform::FileSystem::native(), forGood, {}, session.journal());
    tellFailures(trashed, console);
    tellFailures(deleted, console);
    const Extra entry = session.finish();
    if (arguments.has(JsonOption.name))
        showOutcome(arguments, trashed, deleted, entry, console);
    return console.status();
}

} // namespace

Command trashCommand()
{
    return {u"trash", u"put files and folders into the trash",
        u"Puts files, links and folders into the desktop's trash, each into that of its own drive. What is on a drive\n"
        "without trash, or too full for it, stays where it is unless --delete is given.",
        u"PATH", true, {DeleteOption, TrashDryRunOption, NoHistoryOption, JsonOption}, runTrash};
}

} // namespace ravlin::cli
