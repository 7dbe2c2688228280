// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command.h"
#include "cli/recordwriter.h"
#include "core/files/operations/undo.h"
#include "core/platform/path.h"

#include <QDateTime>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace ravlin::cli {

namespace {

constexpr Option LimitOption{u"--limit", u"N", u"only the newest N"};
constexpr Option FolderOption{u"--folder", u"FOLDER", u"only those in this folder and the folders below it"};
constexpr Option SinceOption{
    u"--since", u"DATE", u"only those from this day on, such as 2026-11-22, or 2026-11-22T18:30"};
constexpr Option WithLaterOption{u"--with-later", {}, u"also take back what was done later to the same files"};
constexpr Option UndoDryRunOption{u"--dry-run", {}, u"show what could be taken back, and change nothing"};

/// A number from 1 on.
std::optional<qint64> positive(const QString &text)
{
    const bool isNumber = std::ranges::all_of(text, [](QChar c) { return c >= u'0' && c <= u'9'; });
    const qint64 number = isNumber ? text.toLongLong() : 0;
    return number > 0 ? std::optional(number) : std::nullopt;
}

std::optional<QDateTime> moment(const QString &text)
{
    if (const QDate day = QDate::fromString(text, Qt::ISODate); day.isValid())
        return day.startOfDay();
    const QDateTime time = QDateTime::fromString(text, Qt::ISODate);
    return time.isValid() ? std::optional(time) : std::nullopt;
}

/// The entries that are asked for, or what is wrong with the options.
tl::expected<history::Query, UsageError> queryGiven(const Arguments &arguments)
{
    history::Query query;
    if (const auto limit = arguments.value(LimitOption.name)) {
        const auto number = positive(*limit);
        if (!number)
            return tl::unexpected(UsageError{u"--limit is a number from 1 on, not '%1'"_s.arg(*limit)});
        query.limit = *number;
    }
    if (const auto since = arguments.value(SinceOption.name)) {
        const auto time = moment(*since);
        if (!time)
            return tl::unexpected(UsageError{u"--since is a date such as 2026-11-22, not '%1'"_s.arg(*since)});
        query.since = time->toMSecsSinceEpoch();
    }
    if (const auto folder = arguments.value(FolderOption.name)) {
        if (folder->isEmpty())
            return tl::unexpected(UsageError{u"--folder needs a folder"_s});
        // One that is gone can only be meant as it was written.
        query.folder = platform::FileSystem::native().canonicalPath(*folder).value_or(*folder);
    }
    return query;
}

/// Local time for people, UTC for programs.
QString timeText(qint64 time, Format format)
{
    const QDateTime moment = QDateTime::fromMSecsSinceEpoch(time, Qt::UTC);
    return format == Format::Table ? moment.toLocalTime().toString(u"yyyy-MM-dd HH:mm:ss"_s)
                                   : moment.toString(Qt::ISODate);
}

int runHistory(const Arguments &arguments, Session &session)
{
    Console &console = session.console();
    const auto query = queryGiven(arguments);
    if (!query)
        return console.refuse(u"history"_s, query.error().text);
    const Format format = chooseFormat(arguments.has(JsonOption.name), console.out(), Format::Table);
    RecordWriter writer(console.out(), format, {u"id", u"time", u"kind", u"folder", u"files"});
    const auto entries = session.history().entries(*query);
    if (!entries)
        console.fail(history::History::defaultPath(), entries.error());
    for (const history::Entry &entry : entries.value_or(std::vector<history::Entry>())) {
        const Record record{entry.id, timeText(entry.time, format), history::kindName(entry.kind), entry.folder,
            qint64(entry.fileCount)};
        writer.write(record, {{u"undone", qint64(entry.undoneCount)}});
    }
    writer.finish();
    return console.status();
}

/// Why a change was not taken back, in the words of an undo.
QString reasonOf(const Error &error)
{
    switch (error.code) {
    case ErrorCode::ChangedMeanwhile:
        return u"it has changed since"_s;
    case ErrorCode::AlreadyExists:
        return u"the former name is taken"_s;
    case ErrorCode::Unsupported:
        return error.detail;
    default:
        return describe(error);
    }
}

void tellLater(const UndoReport &report, Console &console)
{
    QStringList later;
    for (const history::Entry &entry : report.later)
        later << u"%1: %2, %3"_s.arg(QString::number(entry.id), history::kindName(entry.kind), entry.folder);
    console.fail(u"%1"_s.arg(report.entry.id),
        u"later entries have changed the same files; --with-later takes them back, too:"_s, later);
}

/// A record for each file, and a message for each that stays as it is.
void tellReport(const UndoReport &report, const QString &done, const Arguments &arguments, Console &console)
{
    RecordWriter writer(console.out(), chooseFormat(arguments.has(JsonOption.name), console.out(), Format::Table),
        {u"path", u"action", u"error"});
    // What is repeated has no number of its own.
    const Extra extra = done == u"redone" ? Extra() : Extra{{u"history", report.entry.id}};
    for (const QString &path : report.undone)
        writer.write({path, done, Value()}, extra);
    for (const auto &[path, error] : report.failures) {
        writer.write({path, u"failed"_s, reasonOf(error)}, extra);
        console.fail(path, reasonOf(error));
    }
    for (const QString &path : report.lost)
        console.warn(path + u": the file that it had replaced is lost"_s);
    writer.finish();
}

int tell(const Result<UndoReport> &report, const QString &command, const QString &done, const Arguments &arguments,
    Session &session)
{
    Console &console = session.console();
    if (!report) {
        console.fail(command,
            report.error().code == ErrorCode::NotFound ? u"there is no such entry"_s : describe(report.error()));
        tellReport({}, done, arguments, console);
        return console.status();
    }
    const bool isNothing = report->undone.isEmpty() && report->failures.empty() && report->later.empty();
    if (!report->later.empty())
        tellLater(*report, console);
    else if (isNothing)
        console.fail(command, u"there is nothing to %1"_s.arg(command));
    tellReport(*report, done, arguments, console);
    return console.status();
}

int runUndo(const Arguments &arguments, Session &session)
{
    UndoRequest request;
    if (!arguments.operands().isEmpty()) {
        request.entry = positive(arguments.operands().front());
        if (!request.entry)
            return session.console().refuse(u"undo"_s,
                u"ID is a number that the command history tells, not '%1'"_s.arg(arguments.operands().front()));
    }
    request.isDryRun = arguments.has(UndoDryRunOption.name);
    request.withLater = arguments.has(WithLaterOption.name);
    const auto report = undo(session.history(), platform::FileSystem::native(), request);
    return tell(report, u"undo"_s, request.isDryRun ? u"undo"_s : u"undone"_s, arguments, session);
}

int runRedo(const Arguments &arguments, Session &session)
{
    const auto report = redo(session.history(), platform::FileSystem::native());
    return tell(report, u"redo"_s, u"redone"_s, arguments, session);
}

} // namespace

Command historyCommand()
{
    Command command{u"history", u"list what was changed",
        u"Lists the recorded operations of the window and of these commands, the newest first: number, time, kind,\n"
        "folder, and how many files were changed.",
        {}, true, {LimitOption, FolderOption, SinceOption, JsonOption}, runHistory};
    command.operands = Operands::None;
    return command;
}

Command undoCommand()
{
    Command command{u"undo", u"take back what was changed",
        u"Takes back the newest operation that was not taken back yet, or the one of that number: every file gets its\n"
        "former bytes, time, name and place. A file that has changed since is left alone and named. Nothing is\n"
        "overwritten; copies go into the trash.",
        u"ID", false, {WithLaterOption, UndoDryRunOption, JsonOption}, runUndo};
    command.operands = Operands::Optional;
    return command;
}

Command redoCommand()
{
    Command command{u"redo", u"repeat what was taken back",
        u"Repeats what was taken back last, unless one of its files has been changed since.", {}, false, {JsonOption},
        runRedo};
    command.operands = Operands::None;
    return command;
}

} // namespace ravlin::cli
