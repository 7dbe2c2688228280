// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/operations/clsfilefunc.h"
#include "core/platform/filesystem.h"
#include "core/tags/record/tagrecord.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

/// M3U playlists: plain text, one path a line, each line ended by CR LF, no header.
namespace ravlin {

/// The bytes of a line in the system's code page; nothing when that has no character for something in it.
using LineEncoder = std::function<std::optional<QByteArray>(const QString &line)>;

/// The name of a folder's playlist from artist and album: "Artist - Album.m3u", "Artist.m3u", "Album.m3u" or
/// "lista.m3u". What a file name may not hold is left out.
QString playlistName(const QString &artist, const QString &album);

/// In the system's code page or, when a line can't be expressed in it, all in UTF-8: a wrong path would not be found. A
/// line with a line break in it can't be in a playlist and is left out.
QByteArray playlistContent(const QStringList &lines, const LineEncoder &encode);

/// Where the play list of a selection is kept: one fixed file, of this user's own where the system has no other place.
QString playListPath();

/// Writes the folder's playlist of rows, in their order, and returns its path. folder ends in the separator; record is
/// the tag that was read last. A list of that name is replaced, in one step; without rows an empty one is written.
Result<QString> WritePlaylist(
    platform::FileSystem &fileSystem, const QString &folder, const QStringList &rowTexts, const TagRecord &record);

/// Opens a file with the program that the user has for its kind.
using Opener = std::function<void(const QString &path)>;

/// Writes the rows' full paths into the play list and has it opened, also when it can't be written: an older one may
/// be there. The result tells about the writing.
Result<void> PlaySelection(platform::FileSystem &fileSystem, const QString &folder, const QStringList &rowTexts,
    const QString &listPath, const Opener &open);

/// The playlists of a folder, by name: plain files whose name ends in ".m3u" in any case, none that is hidden.
QStringList playlistsIn(const QString &folder);

/// Deletes all playlists of a folder (its path ends in the separator) in one request; none: nothing happens.
int DeletePlaylists(clsFileFunc &files, const QString &folder);

} // namespace ravlin
