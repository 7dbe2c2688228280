// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command.h"
#include "cli/tagsaving.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace ravlin::cli {

namespace {

struct Field
{
    Option option;
    QString TagRecord::*member = nullptr;
};

constexpr std::array Fields{
    Field{{u"--title", u"TEXT", u"set the title"}, &TagRecord::Title},
    Field{{u"--artist", u"TEXT", u"set the artist"}, &TagRecord::Artist},
    Field{{u"--album", u"TEXT", u"set the album"}, &TagRecord::Album},
    Field{{u"--year", u"TEXT", u"set the year: four digits"}, &TagRecord::Year},
    Field{{u"--comment", u"TEXT", u"set the comment"}, &TagRecord::Comment},
    Field{{u"--track", u"TEXT", u"set the track: one or two digits"}, &TagRecord::Track},
    Field{{u"--genre", u"TEXT", u"set the genre: a name of the genre table"}, &TagRecord::Genre},
};

using FieldTexts = std::vector<std::pair<const Field *, QString>>;

/// The given fields, or what is wrong with one.
tl::expected<FieldTexts, UsageError> givenFields(const Arguments &arguments)
{
    FieldTexts given;
    for (const Field &field : Fields) {
        const std::optional<QString> text = arguments.value(field.option.name);
        if (!text)
            continue;
        if (!text->isValidUtf16())
            return tl::unexpected(UsageError{u"the text of %1 is not UTF-8"_s.arg(field.option.name)});
        given.emplace_back(&field, *text);
    }
    return given;
}

/// Reads, changes and saves files, one at a time.
class Tagger
{
public:
    Tagger(Session &session, FieldTexts fields, const SavingRules &rules, const Arguments &arguments)
        : m_console(session.console()), m_fields(std::move(fields)), m_arguments(arguments),
          m_store(m_state, m_fileSystem, session.journal())
    {
        for (const auto &[field, text] : m_fields)
            m_edits.set(field->member, text);
        m_state.tagSaveMode = rules.mode;
        m_state.options.onlyEditedFields = rules.onlyEdited;
        m_state.writesAnyContent = arguments.has(ForceOption.name);
    }

    void warnOfGivenTexts()
    {
        for (const auto &[field, text] : m_fields) {
            if (const QString warning = warningNotSaved(field->member, text); !warning.isEmpty())
                m_console.warn(warning);
        }
    }

    void tag(const QString &path)
    {
        m_cleaner.cleanFolderOf(path);
        if (const Result<void> done = change(path); !done)
            m_console.fail(path, done.error());
    }

private:
    Result<void> change(const QString &path)
    {
        const auto make = [&](const TagRecord &) -> Result<TagEdits> {
            const Result<qint64> freeBytes = m_fileSystem.freeBytes(path);
            if (!freeBytes)
                return tl::unexpected(freeBytes.error());
            constexpr qint64 Megabyte = 1024 * 1024;
            m_state.freeMegabytes = *freeBytes / Megabyte;
            return m_edits;
        };
        const Result<TagRecord> record = m_store.save(path, make);
        if (!record)
            return tl::unexpected(record.error());
        if (!m_store.savesOnlyEdited())
            warnOfLostTexts(path, *record);
        warnOfOutlook(path, *record, m_state.tagSaveMode, m_arguments, m_console);
        return {};
    }

    /// Warns of texts of the file that cannot be written back.
    void warnOfLostTexts(const QString &path, const TagRecord &record)
    {
        for (const Field &field : Fields) {
            const bool isGiven =
                std::ranges::any_of(m_fields, [&field](const auto &given) { return given.first == &field; });
            const QString warning = warningNotSaved(field.member, record.*(field.member));
            if (!isGiven && !warning.isEmpty())
                m_console.warn(path + u": "_s + warning);
        }
    }

    Console &m_console;
    const FieldTexts m_fields;
    TagEdits m_edits;
    const Arguments &m_arguments;
    platform::FileSystem &m_fileSystem = platform::FileSystem::native();
    ProgramState m_state;
    TagStore m_store;
    FolderCleaner m_cleaner{m_fileSystem};
};

int runTag(const Arguments &arguments, Session &session)
{
    Console &console = session.console();
    auto fields = givenFields(arguments);
    if (!fields)
        return console.refuse(u"tag"_s, fields.error().text);
    const RulesOrStatus rules = rulesFor(u"tag"_s, arguments, console);
    if (!rules)
        return rules.error();
    for (const auto &[field, text] : *fields) {
        const QString reason = reasonNotToStore(field->member, text);
        if (rules->onlyEdited && !reason.isEmpty())
            return console.refuse(u"tag"_s, u"%1 '%2': %3"_s.arg(field->option.name, text, reason));
    }
    session.begin(arguments.paths().size() == 1 ? history::Kind::Single : history::Kind::Multi);
    Tagger tagger(session, std::move(*fields), *rules, arguments);
    if (!rules->onlyEdited)
        tagger.warnOfGivenTexts();
    for (const QString &path : arguments.paths())
        tagger.tag(path);
    return session.end();
}

constexpr Option V1Option{u"--v1", {}, u"remove the ID3v1 tag"};
constexpr Option V2Option{u"--v2", {}, u"remove the ID3v2 tag"};

int runStrip(const Arguments &arguments, Session &session)
{
    Console &console = session.console();
    const bool stripsV1 = arguments.has(V1Option.name);
    const bool stripsV2 = arguments.has(V2Option.name);
    if (!stripsV1 && !stripsV2)
        return console.refuse(u"strip"_s, u"--v1, --v2 or both must be given"_s);
    ProgramState state;
    state.writesAnyContent = arguments.has(ForceOption.name);
    platform::FileSystem &fileSystem = platform::FileSystem::native();
    session.begin(history::Kind::RemoveTags);
    TagStore store(state, fileSystem, session.journal());
    FolderCleaner cleaner(fileSystem);
    for (const QString &path : arguments.paths()) {
        cleaner.cleanFolderOf(path);
        Result<void> stripped;
        if (stripsV1)
            stripped = store.RemoveV1(path);
        if (stripped && stripsV2)
            stripped = store.RemoveV2(path);
        if (!stripped)
            console.fail(path, stripped.error());
    }
    return session.end();
}

} // namespace

Command tagCommand()
{
    std::vector<Option> options{
        ModeOption, OnlyEditedOption, AllFieldsOption, ForceOption, NoHistoryOption, OutcomeJsonOption};
    std::ranges::transform(Fields, std::back_inserter(options), &Field::option);
    return {u"tag", u"change the tags of files",
        u"Reads each file's tag, sets the fields given and saves it. An empty text removes a field; so does a year, "
        u"track\n"
        "or genre that cannot be written, with a warning: the file's own, too. With --only-edited it is refused, and "
        "the\n"
        "file's own stay. The modes: 1 ID3v1, 2 ID3v2, 3 both, 4 ID3v1 and remove ID3v2, 5 ID3v2 and remove ID3v1.\n"
        "Nothing is written unless 5 MB more than the file's size are free.",
        u"FILE", true, std::move(options), runTag};
}

Command stripCommand()
{
    return {u"strip", u"remove the ID3v1 or the ID3v2 tags of files",
        u"Removes tags from each file. A read-only file is left alone; a file without such a tag is no error.", u"FILE",
        true, {V1Option, V2Option, ForceOption, NoHistoryOption, OutcomeJsonOption}, runStrip};
}

} // namespace ravlin::cli
