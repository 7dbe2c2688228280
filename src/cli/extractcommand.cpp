// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command.h"
#include "cli/tagsaving.h"
#include "core/app/idiomas.h"
#include "core/naming/extraction.h"
#include "core/naming/previewrows.h"

using namespace Qt::StringLiterals;

namespace ravlin::cli {

namespace {

constexpr Option PatternOption{u"--pattern", u"PATTERN", u"how the names are made, such as '%1 - %3'; must be given"};

int previewRun(const Arguments &arguments, const QString &pattern, const SavingRules &rules, Console &console)
{
    Captions english;
    english.fill();
    std::vector<QStringView> columns = previewColumns();
    columns.emplace_back(u"remarks");
    RecordWriter writer(
        console.out(), chooseFormat(arguments.has(JsonOption.name), console.out(), Format::Table), columns);
    SavingRun run(rules, arguments);
    for (const QString &path : arguments.paths()) {
        const PreviewRow row = previewExtraction(path, pattern, run.store());
        if (row.problem) {
            console.fail(path, *row.problem);
            continue;
        }
        Record record = previewRecord(path, row.record, row.isLongName, !row.isUntouched);
        record.emplace_back(extractionRemarks(row, english).join(u"; "_s));
        writer.write(record);
        if (!row.isUntouched) {
            if (!rules.onlyEdited)
                warnOfTextsNotSaved(path, row.record, console);
            warnOfOutlook(path, row.record, rules.mode, arguments, console);
        }
    }
    writer.finish();
    return console.status();
}

int saveRun(const Arguments &arguments, const QString &pattern, const SavingRules &rules, Session &session)
{
    Console &console = session.console();
    const QStringList &paths = arguments.paths();
    session.begin(history::Kind::Extract);
    SavingRun run(rules, arguments, session.journal());
    const auto warn = [&](const QString &path, const TagRecord &record) {
        if (!rules.onlyEdited)
            warnOfTextsNotSaved(path, record, console);
        warnOfOutlook(path, record, rules.mode, arguments, console);
    };
    const ExtractionOutcome outcome = runExtraction(paths, pattern, run.store(), run.state(), run.preparing(), warn);
    for (qsizetype row = 0; row < outcome.rows.takenCount(); ++row) {
        if (outcome.rows.outcome(row) == RowOutcome::Done && !outcome.isWritten[static_cast<std::size_t>(row)])
            console.warn(paths[row] + u": the name does not fit the pattern, the file stays as it is"_s);
    }
    tellFailures(paths, outcome.rows, console);
    return session.end();
}

int runExtract(const Arguments &arguments, Session &session)
{
    Console &console = session.console();
    const std::optional<QString> pattern = arguments.value(PatternOption.name);
    if (!pattern)
        return console.refuse(u"extract"_s, u"--pattern must be given"_s);
    if (!pattern->isValidUtf16())
        return console.refuse(u"extract"_s, u"the pattern is not UTF-8"_s);
    const bool isDry = arguments.has(DryRunOption.name);
    const RulesOrStatus rules = rulesFor(u"extract"_s, arguments, console);
    if (!rules)
        return rules.error();
    return isDry ? previewRun(arguments, *pattern, *rules, console) : saveRun(arguments, *pattern, *rules, session);
}

} // namespace

Command extractCommand()
{
    return {u"extract", u"fill tags from the names of files",
        u"Takes each file's name apart by the pattern and saves what stands at its placeholders in the file's tag; "
        u"all\n"
        "other fields stay. %1 artist, %2 album, %3 title, %4 track, %5 year, %6 genre, %7 comment; %0 skips text. A\n"
        "value ends where the pattern's next text first occurs; of the text at the pattern's end only the first\n"
        "character counts. A file whose name does not fit is left as it is, with a warning.",
        u"FILE", true,
        {PatternOption, ModeOption, OnlyEditedOption, AllFieldsOption, ForceOption, DryRunOption, NoHistoryOption,
            JsonOption},
        runExtract};
}

} // namespace ravlin::cli
