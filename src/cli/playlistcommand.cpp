// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command.h"
#include "core/app/programstate.h"
#include "core/app/settings.h"
#include "core/files/list/folderscan.h"
#include "core/files/operations/playlist.h"
#include "core/platform/desktop.h"
#include "core/platform/path.h"
#include "core/tags/store/tagstore.h"

#include <algorithm>
#include <tuple>

using namespace Qt::StringLiterals;

namespace ravlin::cli {

namespace {

constexpr Option RecursiveOption{u"--recursive", {}, u"also the files of the folders below it"};
constexpr Option PlaylistDryRunOption{u"--dry-run", {}, u"print what the list would hold, and write nothing"};

/// By folder, its own files first, then by name without regard to case.
QStringList sortedTexts(const Listing &listing)
{
    std::vector<std::tuple<QString, QString, QString>> keys;
    for (const ListRow &row : listing.rows) {
        const QString text = row.text();
        keys.emplace_back(platform::folderPrefix(text).toCaseFolded(), platform::nameOf(text).toCaseFolded(), text);
    }
    std::sort(keys.begin(), keys.end());
    QStringList texts;
    for (const auto &key : keys)
        texts.append(std::get<2>(key));
    return texts;
}

/// The sorted texts of the rows that can stand in a list. Warns of the others.
QStringList fittingTexts(const Listing &listing, const QString &folder, Console &console)
{
    QStringList fitting;
    for (const QString &text : sortedTexts(listing)) {
        if (fitsPlaylist(text))
            fitting.append(text);
        else
            console.warn(folder + text + u": left out, because a line of the list can't hold a line break"_s);
    }
    return fitting;
}

/// Elsewhere than on a terminal these are the bytes of the file.
void showContent(const QStringList &texts, Console &console)
{
    if (!console.out().isTerminal()) {
        console.out().write(playlistContent(texts, platform::toCodePage));
        return;
    }
    for (const QString &text : texts)
        console.print(playlistLine(text));
}

int runPlaylist(const Arguments &arguments, Session &session)
{
    Console &console = session.console();
    const QString &given = arguments.paths().front();
    if (given.isEmpty()) {
        console.fail(given, Error{ErrorCode::NotFound, given, {}});
        return console.status();
    }
    const QString folder = platform::withEndSeparator(given);
    const Result<Listing> listing =
        arguments.has(RecursiveOption.name)
            ? ListFolderTree(folder, {.skipTrashFolders = FurtherOptions::restored(Settings()).skipTrashFolders})
            : ListFolder(folder, {});
    if (!listing) {
        if (listing.error().code == ErrorCode::NotAFile)
            console.fail(given, u"this is not a folder"_s);
        else
            console.fail(given, listing.error());
        return console.status();
    }
    for (const ListFailure &failure : listing->failures)
        console.fail(failure.path, failure.error);
    const QStringList texts = fittingTexts(*listing, folder, console);
    if (arguments.has(PlaylistDryRunOption.name)) {
        showContent(texts, console);
        return console.status();
    }
    platform::FileSystem &fileSystem = platform::FileSystem::native();
    ProgramState state;
    TagRecord record;
    if (!texts.isEmpty()) // an unreadable tag counts as an empty one
        std::ignore = TagStore(state, fileSystem).ReadTag(folder + texts.front(), record);
    session.begin(history::Kind::Playlist);
    const Result<QString> written = WritePlaylist(fileSystem, folder, texts, record, session.journal());
    if (!written)
        console.fail(given, written.error());
    else if (!arguments.has(OutcomeJsonOption.name))
        console.print(*written);
    return session.end();
}

} // namespace

Command playlistCommand()
{
    return {u"playlist", u"write a playlist of a folder's MP3 files",
        u"Writes an M3U playlist into the folder and prints its path. It is named after the artist and album of the\n"
        "first file, or lista.m3u; an older list of that name is replaced. The files are ordered by name, without\n"
        "regard to case.",
        u"FOLDER", false, {RecursiveOption, PlaylistDryRunOption, NoHistoryOption, OutcomeJsonOption}, runPlaylist};
}

} // namespace ravlin::cli
