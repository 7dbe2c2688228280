// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command.h"
#include "cli/recordwriter.h"
#include "core/files/operations/transfer.h"
#include "core/storage/safewrite.h"

#include <QDir>
#include <QHash>

#include <algorithm>
#include <array>
#include <tuple>

using namespace Qt::StringLiterals;

namespace ravlin::cli {

namespace {

constexpr Option ToOption{u"--to", u"FOLDER", u"where they go; the folder must exist"};
constexpr Option TransferClashOption{
    u"--clash", u"WORD", u"when a name is taken: skip (so without it), number, or replace; folders are merged then"};
constexpr Option TransferDryRunOption{u"--dry-run", {}, u"show what would be done, and do nothing"};

struct ReplyWord
{
    QStringView word;
    ClashAnswer reply = ClashAnswer::Skip;
};

constexpr std::array ReplyWords{ReplyWord{u"skip", ClashAnswer::Skip}, ReplyWord{u"number", ClashAnswer::KeepBoth},
    ReplyWord{u"replace", ClashAnswer::Replace}};

std::optional<ClashAnswer> replyFor(const Arguments &arguments)
{
    const QString word = arguments.value(TransferClashOption.name).value_or(u"skip"_s);
    const auto *const found = std::ranges::find(ReplyWords, QStringView(word), &ReplyWord::word);
    return found == ReplyWords.end() ? std::nullopt : std::optional(found->reply);
}

QString actionOf(const TransferItem &item, TransferKind kind)
{
    if (item.error)
        return u"failed"_s;
    if (item.isSkipped())
        return u"skipped"_s;
    if (item.replaces())
        return u"replace"_s;
    return kind == TransferKind::Copy ? u"copy"_s : u"move"_s;
}

Record planned(const TransferItem &item, TransferKind kind)
{
    return {item.source, item.target, actionOf(item, kind), item.error ? Value(describe(*item.error)) : Value()};
}

void writePlan(const std::vector<TransferItem> &items, TransferKind kind, RecordWriter &writer, Console &console)
{
    for (const TransferItem &item : items) {
        if (item.isMerged()) {
            writePlan(item.children, kind, writer, console);
            continue;
        }
        writer.write(planned(item, kind));
        if (item.error)
            console.fail(item.source, *item.error);
    }
}

/// No plan could be made, so nothing was begun.
void writeRefused(const QStringList &paths, const Error &error, const Extra &entry, RecordWriter &writer)
{
    for (const QString &path : paths)
        writer.write({path, Value(), u"failed"_s, describe(error)}, entry);
}

/// Writes what a run made of the items of its plan.
class OutcomeWriter
{
public:
    OutcomeWriter(const TransferReport &report, TransferKind kind, Extra entry, RecordWriter &writer)
        : m_kind(kind), m_entry(std::move(entry)), m_writer(writer)
    {
        for (const TransferStep &step : report.done)
            m_done.insert(step.target, step.isMove); // no two of them have the same target
        for (const std::vector<FileFailure> *failures : {&report.failures, &report.inBothPlaces}) {
            for (const FileFailure &failure : *failures)
                m_errors.insert(failure.path, failure.error);
        }
    }

    void write(const std::vector<TransferItem> &items)
    {
        for (const TransferItem &item : items) {
            if (item.isMerged())
                write(item.children);
            else
                write(item);
        }
    }

private:
    void write(const TransferItem &item)
    {
        if (item.error || item.isSkipped()) {
            m_writer.write(planned(item, m_kind), m_entry);
            return;
        }
        const auto done = m_done.constFind(item.target);
        const auto error = m_errors.constFind(item.source);
        const bool isDone = done != m_done.constEnd();
        // A move that could only copy is done and has an error.
        const bool isWhole = isDone && *done == (m_kind == TransferKind::Move);
        const bool hasError = !isWhole && error != m_errors.constEnd();
        const QString action = isDone     ? actionOf(item, *done ? TransferKind::Move : TransferKind::Copy)
                               : hasError ? u"failed"_s
                                          : u"notDone"_s;
        m_writer.write({item.source, item.target, action, hasError ? Value(describe(*error)) : Value()}, m_entry);
    }

    const TransferKind m_kind;
    const Extra m_entry;
    RecordWriter &m_writer;
    QHash<QString, bool> m_done; ///< by target: whether the source is gone
    QHash<QString, Error> m_errors;
};

void tellReport(const TransferReport &report, Console &console)
{
    for (const FileFailure &failure : report.failures)
        console.fail(failure.error.path.isEmpty() ? failure.path : failure.error.path, failure.error);
    bool isDriveNamed = false; // one that is read-only, once for all files on it
    for (const FileFailure &failure : report.inBothPlaces) {
        QString text = u"copied in full, but the original is still there: it is now in both places"_s;
        const bool isReadOnly = failure.error.code == ErrorCode::ReadOnlyDrive;
        if (!isReadOnly || !isDriveNamed)
            text += u" (%1)"_s.arg(describe(failure.error));
        isDriveNamed = isDriveNamed || isReadOnly;
        console.fail(failure.path, text);
    }
    for (const QString &path : report.lost)
        console.warn(path + u": replaced; the trash had no room for the former file, which is lost"_s);
    for (const QString &path : report.skipped)
        console.fail(path, u"skipped: the name is taken"_s);
    for (const QString &path : report.notDone)
        console.fail(path, u"not begun"_s);
}

int runTransferCommand(TransferKind kind, const Arguments &arguments, Session &session)
{
    Console &console = session.console();
    const QString command = kind == TransferKind::Copy ? u"copy"_s : u"move"_s;
    const QString folder = QDir::toNativeSeparators(arguments.value(ToOption.name).value_or(QString()));
    if (folder.isEmpty())
        return console.refuse(command, u"--to FOLDER is missing"_s);
    const std::optional<ClashAnswer> reply = replyFor(arguments);
    if (!reply)
        return console.refuse(command, u"--clash takes skip, number or replace"_s);
    const bool isDry = arguments.has(TransferDryRunOption.name);

    platform::FileSystem &fileSystem = platform::FileSystem::native();
    if (!isDry) {
        session.begin(kind == TransferKind::Copy ? history::Kind::Copy : history::Kind::Move);
        std::ignore = storage::cleanLeftovers(fileSystem, folder); // a failure stays silent: what is left is harmless
    }
    auto plan = makeTransferPlan(fileSystem, {kind, arguments.paths(), folder});
    if (plan) // skip what can't be replaced without loss
        std::ignore = answerClashes(*plan, [&](const Clash &) { return ClashDecision{*reply, false}; });
    else
        console.fail(folder, plan.error());
    TransferReport report;
    if (plan && !isDry)
        report = runTransfer(fileSystem, *plan, {}, session.journal());
    tellReport(report, console);
    const Extra entry = isDry ? Extra() : session.finish();
    if (!isDry && !arguments.has(JsonOption.name))
        return console.status();
    RecordWriter writer(console.out(), chooseFormat(arguments.has(JsonOption.name), console.out(), Format::Table),
        {u"path", u"newPath", u"action", u"error"});
    if (!plan)
        writeRefused(arguments.paths(), plan.error(), entry, writer);
    else if (isDry)
        writePlan(plan->items, kind, writer, console);
    else
        OutcomeWriter(report, kind, entry, writer).write(plan->items);
    writer.finish();
    return console.status();
}

int runCopy(const Arguments &arguments, Session &session)
{
    return runTransferCommand(TransferKind::Copy, arguments, session);
}

int runMove(const Arguments &arguments, Session &session)
{
    return runTransferCommand(TransferKind::Move, arguments, session);
}

} // namespace

Command copyCommand()
{
    return {u"copy", u"copy files and folders into a folder",
        u"Copies files, links and folders, with times and attributes. A copy is complete under its name or absent.\n"
        "Nothing is overwritten without --clash replace.",
        u"PATH", true, {ToOption, TransferClashOption, TransferDryRunOption, NoHistoryOption, JsonOption}, runCopy};
}

Command moveCommand()
{
    return {u"move", u"move files and folders into a folder",
        u"Moves files, links and folders. To another drive they are copied, synced and compared before the sources\n"
        "are deleted. Nothing is overwritten without --clash replace.",
        u"PATH", true, {ToOption, TransferClashOption, TransferDryRunOption, NoHistoryOption, JsonOption}, runMove};
}

} // namespace ravlin::cli
