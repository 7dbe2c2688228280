// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command.h"
#include "cli/renaming.h"
#include "cli/tagsaving.h"
#include "core/files/list/folderscan.h"
#include "core/files/renaming/renamefromtags.h"
#include "core/platform/path.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace ravlin::cli {

namespace {

constexpr Option PatternOption{
    u"--pattern", u"PATTERN", u"how the name is to be, such as '%3 - %2'; without it artist and album"};

/// The path of a folder that ends in its name, not in ".", and has a folder above it.
Result<QString> namedPath(platform::FileSystem &fileSystem, const QString &folder)
{
    const QString path = platform::withoutEndSeparator(folder);
    const Result<platform::FileInfo> info = fileSystem.info(path);
    if (!info)
        return tl::unexpected(info.error());
    const QString name = platform::nameOf(path);
    if (name.isEmpty() || name == u"." || name == u"..")
        return fileSystem.canonicalPath(path);
    return path.contains(platform::Separator) ? path : platform::inFolder(u"."_s, path);
}

/// The path of the first file by name, ignoring case, as in the list. Empty if there is none.
Result<QString> firstFile(const QString &folder)
{
    const Result<Listing> listing = ListFolder(folder, {});
    if (!listing)
        return tl::unexpected(listing.error());
    const auto key = [](const ListRow &row) {
        const QString text = row.text();
        return std::pair(text.toCaseFolded(), text);
    };
    const auto first = std::ranges::min_element(listing->rows, {}, key);
    return first == listing->rows.end() ? QString() : platform::inFolder(folder, first->text());
}

/// The plan for the folder and the tag that its name is made of.
struct FolderRename
{
    RenamingPlan plan;
    TagRecord tag;
};

/// Returns nothing after a message to the console.
std::optional<FolderRename> planned(const QString &folder, const FolderRule &rule, Console &console)
{
    platform::FileSystem &fileSystem = platform::FileSystem::native();
    const Result<QString> path = namedPath(fileSystem, folder);
    const Result<QString> file = path.and_then(firstFile);
    if (!file) {
        if (file.error().code == ErrorCode::NotAFile)
            console.fail(folder, u"this is not a folder"_s);
        else
            console.fail(folder, file.error());
        return std::nullopt;
    }
    if (file->isEmpty()) {
        console.fail(folder, u"there is no MP3 file in it"_s);
        return std::nullopt;
    }
    ProgramState state;
    const Result<TagRecord> tag = TagStore(state, fileSystem).readRecordLeniently(*file);
    if (!tag) {
        console.fail(*file, tag.error());
        return std::nullopt;
    }
    const std::optional<RenameRow> row = folderRename(*path, *tag, rule);
    if (!row) {
        console.fail(folder, u"the tag of its first file makes no name"_s);
        return std::nullopt;
    }
    return FolderRename{RenamingPlan(fileSystem, {*row}), *tag};
}

int runRenameDir(const Arguments &arguments, Session &session)
{
    Console &console = session.console();
    const std::optional<QString> pattern = arguments.value(PatternOption.name);
    if (pattern && !pattern->isValidUtf16())
        return console.refuse(u"renamedir"_s, u"the pattern is not UTF-8"_s);
    const auto answer = clashAnswer(arguments);
    if (!answer)
        return console.refuse(u"renamedir"_s, answer.error().text);
    const bool isDry = arguments.has(DryRunOption.name);

    const FolderRule rule{!pattern.has_value(), pattern.has_value(), pattern.value_or(QString())};
    std::optional<FolderRename> rename = planned(arguments.paths().front(), rule, console);
    if (rename)
        rename->plan.answerAll(*answer);
    if (isDry) {
        RecordWriter writer(
            console.out(), chooseFormat(arguments.has(JsonOption.name), console.out(), Format::Table), renameColumns());
        if (rename) {
            const RenameRow &row = rename->plan.rows().front();
            writer.write(renameRecord(row, rename->tag), renameExtra(row));
        }
        writer.finish();
        return console.status();
    }
    session.begin(history::Kind::RenameFolder);
    if (rename)
        tellOutcome(runRenaming(platform::FileSystem::native(), rename->plan, {}, session.journal()), console);
    return session.end();
}

} // namespace

Command renamedirCommand()
{
    return {u"renamedir", u"rename a folder after the tag of its first file",
        u"Gives the folder a new name made of the tag of its first file, by name without regard to case: artist and\n"
        "album, or a pattern with %1 artist, %2 album, %3 year, %4 genre. Nothing is overwritten.",
        u"FOLDER", false, {PatternOption, ClashOption, DryRunOption, NoHistoryOption, JsonOption}, runRenameDir};
}

} // namespace ravlin::cli
