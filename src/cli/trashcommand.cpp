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

/// What became of each path.
class OutcomeWriter
{
public:
    /// A path that is given twice is in the trash the first time and fails the second time.
    void add(const DeletionReport &report)
    {
        for (const QString &path : report.notDone)
            m_rows.insert(path, {path, u"notDone"_s, Value(), Value()});
        for (const auto &[path, error] : report.failures) {
            const QString action = error.code == ErrorCode::NoTrash ? u"noTrash"_s : u"failed"_s;
            m_rows.insert(path, {path, action, Value(), describe(error)});
        }
        for (const QString &path : report.deleted)
            m_rows.insert(path, {path, u"delete"_s, Value(), Value()});
        for (const platform::TrashedItem &item : report.trashed) // Windows may not tell the place
            m_rows.insert(
                item.original, {item.original, u"trash"_s, item.file.isEmpty() ? Value() : Value(item.file), Value()});
    }

    void write(const QStringList &paths, RecordWriter &writer)
    {
        for (const QString &path : paths)
            writer.write(m_rows.take(platform::withoutEndSeparator(path))); // the last one added
    }

private:
    QMultiHash<QString, Record> m_rows;
};

int runTrash(const Arguments &arguments, Console &console)
{
    const bool isDry = arguments.has(TrashDryRunOption.name);
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
    const DeletionReport deleted = deleteForGood(platform::FileSystem::native(), forGood);
    tellFailures(trashed, console);
    tellFailures(deleted, console);
    if (!arguments.has(JsonOption.name))
        return console.status();
    OutcomeWriter outcomes;
    outcomes.add(trashed);
    outcomes.add(deleted);
    RecordWriter writer = writerFor(arguments, console);
    outcomes.write(arguments.paths(), writer);
    writer.finish();
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
