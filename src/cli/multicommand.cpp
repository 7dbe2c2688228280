// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command.h"
#include "cli/conversionoptions.h"
#include "cli/tagsaving.h"
#include "core/naming/filename.h"
#include "core/naming/multiedit.h"
#include "core/platform/path.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace ravlin::cli {

namespace {

struct Field
{
    Option option;
    QString TagRecord::*box = nullptr;
    bool MultiEditPage::*tick = nullptr;
};

constexpr Option TrackOption{u"--track", u"FIRST", u"number the files in their order, from FIRST on"};

constexpr std::array Fields{
    Field{{u"--artist", u"TEXT", u"set the artist"}, &TagRecord::Artist, &MultiEditPage::setsArtist},
    Field{{u"--album", u"TEXT", u"set the album"}, &TagRecord::Album, &MultiEditPage::setsAlbum},
    Field{{u"--year", u"TEXT", u"set the year: four digits"}, &TagRecord::Year, &MultiEditPage::setsYear},
    Field{{u"--genre", u"TEXT", u"set the genre: a name of the genre table"}, &TagRecord::Genre,
        &MultiEditPage::setsGenre},
    Field{{u"--comment", u"TEXT", u"set the comment"}, &TagRecord::Comment, &MultiEditPage::setsComment},
    Field{TrackOption, &TagRecord::Track, &MultiEditPage::setsTrack},
};

bool isNumber(const QString &text)
{
    return !text.isEmpty() && std::ranges::all_of(text, [](QChar c) { return c >= u'0' && c <= u'9'; });
}

/// The page that the options describe, or why they are wrong.
tl::expected<MultiEditPage, UsageError> pageGiven(const Arguments &arguments)
{
    MultiEditPage page;
    for (const Field &field : Fields) {
        const std::optional<QString> text = arguments.value(field.option.name);
        if (!text)
            continue;
        if (!text->isValidUtf16())
            return tl::unexpected(UsageError{u"the text of %1 is not UTF-8"_s.arg(field.option.name)});
        if (field.option.name == TrackOption.name && !isNumber(*text))
            return tl::unexpected(UsageError{u"--track is a number, not '%1'"_s.arg(*text)});
        page.boxes.*(field.box) = *text;
        page.*(field.tick) = true;
    }
    const auto letterCase = caseChoice(arguments);
    if (!letterCase)
        return tl::unexpected(letterCase.error());
    const auto replacement = replaceChoice(arguments);
    if (!replacement)
        return tl::unexpected(replacement.error());
    page.letterCase = *letterCase;
    page.replacement = *replacement;
    if (!page.changesAnything())
        return tl::unexpected(UsageError{u"nothing to change is given"_s});
    return page;
}

int previewRun(const Arguments &arguments, MultiEdit &edit, const SavingRules &rules, Console &console)
{
    RecordWriter writer(
        console.out(), chooseFormat(arguments.has(JsonOption.name), console.out(), Format::Table), previewColumns());
    SavingRun run(rules, arguments);
    for (const QString &path : arguments.paths()) {
        const Result<TagRecord> record = edit.prepare(path, run.store());
        if (!record) {
            console.fail(path, record.error());
            if (isRefusal(record.error().code))
                continue;
            break; // as the real run does
        }
        writer.write(previewRecord(path, *record, isLongName(platform::nameOf(path)), true));
        if (!rules.onlyEdited)
            warnOfTextsNotSaved(path, *record, console);
        warnOfOutlook(path, *record, rules.mode, arguments, console);
    }
    writer.finish();
    return console.status();
}

int saveRun(const Arguments &arguments, MultiEdit &edit, const SavingRules &rules, Session &session)
{
    Console &console = session.console();
    const QStringList &paths = arguments.paths();
    session.begin(history::Kind::Multi);
    SavingRun run(rules, arguments, session.journal());
    const auto warn = [&](const QString &path, const TagRecord &record) {
        if (!rules.onlyEdited)
            warnOfTextsNotSaved(path, record, console);
        warnOfOutlook(path, record, rules.mode, arguments, console);
    };
    const BatchOutcome outcome = runMultiEdit(paths, edit, run.store(), run.state(), run.preparing(), warn);
    tellFailures(paths, outcome, console);
    return session.end();
}

int runMulti(const Arguments &arguments, Session &session)
{
    Console &console = session.console();
    const auto page = pageGiven(arguments);
    if (!page)
        return console.refuse(u"multi"_s, page.error().text);
    const bool isDry = arguments.has(DryRunOption.name);
    const RulesOrStatus rules = rulesFor(u"multi"_s, arguments, console);
    if (!rules)
        return rules.error();
    for (const Field &field : Fields) {
        const QString text = page->boxes.*field.box;
        const QString reason = reasonNotToStore(field.box, text);
        if (rules->onlyEdited && field.option.name != TrackOption.name && !reason.isEmpty())
            return console.refuse(u"multi"_s, u"%1 '%2': %3"_s.arg(field.option.name, text, reason));
    }
    MultiEdit edit(*page);
    return isDry ? previewRun(arguments, edit, *rules, console) : saveRun(arguments, edit, *rules, session);
}

} // namespace

Command multiCommand()
{
    std::vector<Option> options;
    std::ranges::transform(Fields, std::back_inserter(options), &Field::option);
    for (const Option &option : {CaseOption, ReplaceOption, ModeOption, OnlyEditedOption, AllFieldsOption, ForceOption,
             DryRunOption, NoHistoryOption, JsonOption})
        options.push_back(option);
    return {u"multi", u"set fields of many files at once and number them",
        u"Sets the fields given in every file's tag and keeps all others. A conversion works on title, artist, album "
        u"and\n"
        "comment of every file, and on the texts given; the case is converted first. The first file that cannot be\n"
        "read or written ends the run: those behind it stay as they are. One that is no MP3 file is passed over and "
        u"gets no\n"
        "number.",
        u"FILE", true, std::move(options), runMulti};
}

} // namespace ravlin::cli
