// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command.h"
#include "cli/conversionoptions.h"
#include "cli/renaming.h"
#include "cli/tagsaving.h"
#include "core/files/renaming/renamefromtags.h"
#include "core/platform/path.h"
#include "core/storage/saferename.h"

#include <QHash>

#include <algorithm>
#include <array>
#include <set>

using namespace Qt::StringLiterals;

namespace ravlin::cli {

namespace {

constexpr Option RuleOption{u"--rule", u"WORD", u"artist-title or track-title; without it --pattern must be given"};
constexpr Option PatternOption{u"--pattern", u"PATTERN", u"how the names are to be, such as '%4 - %3'"};

/// The rule that the options choose, or what is wrong with them.
tl::expected<NamingRule, UsageError> ruleGiven(const Arguments &arguments)
{
    NamingRule rule;
    const std::optional<QString> word = arguments.value(RuleOption.name);
    const std::optional<QString> pattern = arguments.value(PatternOption.name);
    if (word.has_value() == pattern.has_value())
        return tl::unexpected(UsageError{u"either --rule or --pattern must be given"_s});
    if (pattern && !pattern->isValidUtf16())
        return tl::unexpected(UsageError{u"the pattern is not UTF-8"_s});
    rule.pattern = pattern.value_or(QString());
    if (pattern)
        rule.mode = NamingRule::Pattern;
    else if (*word == u"artist-title")
        rule.mode = NamingRule::ArtistTitle;
    else if (*word == u"track-title")
        rule.mode = NamingRule::TrackTitle;
    else
        return tl::unexpected(UsageError{u"--rule is artist-title or track-title, not '%1'"_s.arg(*word)});
    const auto letterCase = caseChoice(arguments);
    if (!letterCase)
        return tl::unexpected(letterCase.error());
    const auto replacement = replaceChoice(arguments);
    if (!replacement)
        return tl::unexpected(replacement.error());
    rule.letterCase = *letterCase;
    rule.replacement = *replacement;
    return rule;
}

/// Gives files that interrupted renames left in these folders their names back. Returns the paths after that.
QStringList broughtBack(platform::FileSystem &fileSystem, const QStringList &paths)
{
    std::set<QString> folders;
    QHash<QString, QString> newPaths;
    for (const QString &path : paths) {
        const QString folder = platform::folderPrefix(path);
        if (!folders.insert(folder).second)
            continue;
        const auto done = storage::bringBackAside(fileSystem, folder.isEmpty() ? u"."_s : folder);
        if (!done)
            continue; // the rename will report it
        for (const auto &[aside, former] : *done)
            newPaths.insert(folder + platform::nameOf(aside), folder + platform::nameOf(former));
    }
    QStringList present;
    for (const QString &path : paths)
        present += newPaths.value(path, path);
    return present;
}

int runRename(const Arguments &arguments, Session &session)
{
    Console &console = session.console();
    const auto rule = ruleGiven(arguments);
    if (!rule)
        return console.refuse(u"rename"_s, rule.error().text);
    const auto answer = clashAnswer(arguments);
    if (!answer)
        return console.refuse(u"rename"_s, answer.error().text);
    const bool isDry = arguments.has(DryRunOption.name);

    platform::FileSystem &fileSystem = platform::FileSystem::native();
    const QStringList paths = isDry ? arguments.paths() : broughtBack(fileSystem, arguments.paths());
    ProgramState state;
    const std::vector<PreviewRow> rows = previewRenaming(paths, *rule, TagStore(state, fileSystem));
    for (const PreviewRow &row : rows) {
        if (row.problem)
            console.fail(row.path, *row.problem);
    }
    RenamingPlan plan(fileSystem, fileRenames(rows, *rule));
    plan.answerAll(*answer);
    if (!isDry) {
        session.begin(history::Kind::Rename);
        tellOutcome(runRenaming(fileSystem, plan, {}, session.journal()), console);
        return session.end();
    }
    RecordWriter writer(
        console.out(), chooseFormat(arguments.has(JsonOption.name), console.out(), Format::Table), renameColumns());
    for (std::size_t row = 0; row < rows.size(); ++row) {
        if (!rows[row].problem)
            writer.write(renameRecord(plan.rows()[row], rows[row].record), renameExtra(plan.rows()[row]));
    }
    writer.finish();
    return console.status();
}

} // namespace

Command renameCommand()
{
    return {u"rename", u"rename files after their tags",
        u"Gives each file a new name made of its tag: artist and title, track and title, or a pattern with %1 artist,\n"
        "%2 album, %3 title, %4 track, %5 year, %6 present name, %7 genre, %8 comment. Characters that a name may not\n"
        "hold are left out of values; a separator in the pattern leads into a folder, which is made where it is "
        "missing.\nThe names are given as if all at once, so that files may swap theirs. Nothing is overwritten.",
        u"FILE", true,
        {RuleOption, PatternOption, CaseOption, ReplaceOption, ClashOption, DryRunOption, NoHistoryOption, JsonOption},
        runRename};
}

} // namespace ravlin::cli
