// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/operations/clsfilefunc.h"
#include "core/platform/filesystem.h"
#include "core/storage/journal.h"
#include "core/tags/record/tagrecord.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

/// M3U playlists: plain text, one path a line, each line ended by CR LF, no header, no comments.
namespace ravlin {

/// Encodes a line in the system's code page. Returns nothing if that lacks a character.
using LineEncoder = std::function<std::optional<QByteArray>(const QString &line)>;

/// The name of a folder's playlist from artist and album: "Artist - Album.m3u", "Artist.m3u", "Album.m3u" or
/// "lista.m3u". Leaves out what a file name may not hold.
QString playlistName(const QString &artist, const QString &album);

/// Whether a row can stand in a playlist: one with a line break would be two lines.
bool fitsPlaylist(const QString &rowText);

/// The line for a row: its text, with "./" in front of what players would take for a comment, a directive or an
/// address.
QString playlistLine(const QString &rowText);

/// The lines of the rows that fit, in the system's code page or, if that can't express some line, all in UTF-8: a
/// player must find the paths.
QByteArray playlistContent(const QStringList &rowTexts, const LineEncoder &encode);

/// The fixed path of the list that plays a selection (see platform::fixedFilePath).
QString playListPath();

/// Writes the folder's playlist of rows, in their order, and returns its path. folder ends in the separator; record is
/// the tag read last. Replaces a list of that name in one step, a link of that name by way of the trash; without rows
/// writes an empty one.
Result<QString> WritePlaylist(platform::FileSystem &fileSystem, const QString &folder, const QStringList &rowTexts,
    const TagRecord &record, storage::Journal *journal = nullptr);

/// Opens a file with the user's program for its type.
using Opener = std::function<void(const QString &path)>;

/// Writes the rows' full paths into the list at listPath and opens it, even if writing fails: an older one may be
/// there. Returns the result of writing.
Result<void> PlaySelection(platform::FileSystem &fileSystem, const QString &folder, const QStringList &rowTexts,
    const QString &listPath, const Opener &open);

/// The playlists of a folder, by name: plain files that are not hidden and whose names end in ".m3u" in any case.
QStringList playlistsIn(const QString &folder);

/// Deletes all playlists of a folder, whose path ends in the separator, in one request.
int DeletePlaylists(clsFileFunc &files, const QString &folder);

} // namespace ravlin
