// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/operations/playlist.h"

#include "core/files/operations/replacing.h"
#include "core/naming/texttransforms.h"
#include "core/platform/desktop.h"
#include "core/platform/fileio.h"
#include "core/platform/folder.h"
#include "core/platform/namecheck.h"
#include "core/platform/path.h"
#include "core/platform/textsafety.h"
#include "core/storage/leftovers.h"
#include "core/storage/recorder.h"

#include <algorithm>

namespace ravlin {

namespace {

QString extension()
{
    return QStringLiteral(".m3u");
}

QString unnamedList()
{
    return QStringLiteral("lista.m3u");
}

/// Whether players take the line for a comment or a directive. Some skip blanks and a byte order mark before the "#".
bool isTakenForComment(const QString &line)
{
    const auto isSkipped = [](QChar c) { return c.isSpace() || platform::isControl(c) || platform::isDisguise(c); };
    const auto first = std::ranges::find_if_not(line, isSkipped);
    return first != line.end() && *first == u'#';
}

/// Whether players may take the line for an address, as of "http:/host": RFC 3986 §4.2. On Windows no name has a colon.
bool isTakenForAddress(const QString &line)
{
    return platform::Separator == u'/' && line.left(line.indexOf(platform::Separator)).contains(u':');
}

/// Writes one list. Replaces an older one only once the new one is complete, and keeps its permissions.
class ListWriter
{
public:
    ListWriter(platform::FileSystem &fileSystem, const QString &path, storage::Journal *journal)
        : m_fileSystem(fileSystem), m_path(path), m_recorder(fileSystem, journal)
    {
    }

    Result<void> write(const QByteArray &content)
    {
        const auto place = platform::placeAt(m_fileSystem, m_path);
        if (!place)
            return tl::unexpected(place.error());
        const auto present = place->folder->node(place->name);
        if (present && present->kind == platform::NodeKind::Folder)
            return tl::unexpected(Error{ErrorCode::NotAFile, m_path, QStringLiteral("a folder has that name")});
        const bool isFile = present && present->kind == platform::NodeKind::File;
        const quint32 permissions = isFile ? present->info.permissions : platform::newFilePermissions();
        auto temporary = storage::TemporaryFile::create(place->folder, m_recorder.journal());
        if (!temporary)
            return tl::unexpected(temporary.error());
        const auto written =
            platform::writeAll(temporary->file(), content, 0).and_then([&] { return temporary->file().sync(); });
        if (!written)
            return written;
        // A memory stick may have no permissions.
        static_cast<void>(temporary->file().setPermissions(permissions));
        if (!present)
            return create(*place, *temporary, false);
        const auto old = isFile && m_recorder.isOn() ? oldContent(*place, *present) : std::nullopt;
        if (old && old->inverse.front().bytes == content)
            return {}; // nothing that could be taken back
        if (old)
            return replace(*place, *temporary, *old, content);
        return create(*place, *temporary, m_recorder.isOn());
    }

private:
    /// The list that is there, if it is one: what is much larger than any list goes into the trash instead.
    static std::optional<storage::ChangeRecord> oldContent(const platform::Place &place, const platform::Node &node)
    {
        constexpr qint64 Most = 4 * 1024 * 1024;
        const auto file = place.folder->openFile(place.name, platform::OpenMode::Read);
        if (!file || node.info.size > Most)
            return std::nullopt;
        auto bytes = platform::readExactly(**file, 0, node.info.size);
        if (!bytes)
            return std::nullopt;
        storage::ChangeRecord change;
        change.before = node.info;
        change.identity = (*file)->identity().value_or(platform::FileIdentity());
        change.inverse = {storage::Segment::fresh(*std::move(bytes))};
        return change;
    }

    Result<void> replace(const platform::Place &place, storage::TemporaryFile &temporary, storage::ChangeRecord change,
        const QByteArray &content)
    {
        change.path = storage::recordedPath(m_fileSystem, m_path);
        change.newSize = content.size();
        change.written = content;
        const auto ticket = m_recorder.journal()->begin(change);
        return ended(ticket, temporary.moveTo(place.name).map([] { return Replaced(); }));
    }

    /// keepsOld: what has the name goes into the trash.
    Result<void> create(const platform::Place &place, storage::TemporaryFile &temporary, bool keepsOld)
    {
        const auto ticket = m_recorder.beginCreate(m_path, false);
        return ended(ticket, putInPlace(place, keepsOld, [&](storage::Placing placing) {
            return placing == storage::Placing::New && keepsOld ? temporary.moveToNew(place.name)
                                                                : temporary.moveTo(place.name);
        }));
    }

    Result<void> ended(const storage::Recorder::Ticket &ticket, const Result<Replaced> &moved)
    {
        if (!moved) {
            m_recorder.failed(ticket, moved.error());
            return tl::unexpected(moved.error());
        }
        m_recorder.done(ticket, m_path, moved->trashed || moved->isLost, moved->trashed);
        return {};
    }

    platform::FileSystem &m_fileSystem;
    const QString m_path;
    storage::Recorder m_recorder;
};

} // namespace

QString playlistName(const QString &artist, const QString &album)
{
    if (artist.isEmpty() && album.isEmpty())
        return unnamedList();
    const QString joined = artist.isEmpty() ? album : album.isEmpty() ? artist : artist + QStringLiteral(" - ") + album;
    QString name = CleanFileName(joined + extension());
    // Cleaning a ">" or "|" at the end removes the full stop, too.
    if (!name.endsWith(extension()))
        name = CleanFileName(joined) + extension();
    const qsizetype room = platform::MaxNameLength - extension().size();
    name = platform::shortened(platform::visibleName(name.chopped(extension().size())), room) + extension();
    const platform::CheckedName checked = platform::checkName(name, platform::NameKind::File);
    return checked.problem ? unnamedList() : checked.name;
}

bool fitsPlaylist(const QString &rowText)
{
    return !rowText.contains(u'\n') && !rowText.contains(u'\r');
}

QString playlistLine(const QString &rowText)
{
    const bool isMistakable = isTakenForComment(rowText) || isTakenForAddress(rowText);
    return isMistakable ? platform::inFolder(QStringLiteral("."), rowText) : rowText;
}

QByteArray playlistContent(const QStringList &rowTexts, const LineEncoder &encode)
{
    QByteArray inCodePage;
    QByteArray inUtf8;
    bool isExpressible = true;
    for (const QString &rowText : rowTexts) {
        if (!fitsPlaylist(rowText))
            continue;
        const QString line = playlistLine(rowText);
        inUtf8 += line.toUtf8() + "\r\n";
        const std::optional<QByteArray> encoded = isExpressible ? encode(line) : std::nullopt;
        isExpressible = encoded.has_value();
        if (encoded)
            inCodePage += *encoded + "\r\n";
    }
    return isExpressible ? inCodePage : inUtf8;
}

QString playListPath()
{
    return platform::fixedFilePath(unnamedList());
}

Result<QString> WritePlaylist(platform::FileSystem &fileSystem, const QString &folder, const QStringList &rowTexts,
    const TagRecord &record, storage::Journal *journal)
{
    const QString path = folder + playlistName(record.Artist, record.Album);
    return ListWriter(fileSystem, path, journal).write(playlistContent(rowTexts, platform::toCodePage)).map([&] {
        return path;
    });
}

Result<void> PlaySelection(platform::FileSystem &fileSystem, const QString &folder, const QStringList &rowTexts,
    const QString &listPath, const Opener &open)
{
    QStringList lines;
    std::ranges::transform(rowTexts, std::back_inserter(lines), [&](const QString &text) { return folder + text; });
    // No song and no list of the user's own: nothing to take back.
    auto written = ListWriter(fileSystem, listPath, nullptr).write(playlistContent(lines, platform::toCodePage));
    open(listPath);
    return written;
}

QStringList playlistsIn(const QString &folder)
{
    const auto opened = platform::Folder::open(folder);
    if (!opened)
        return {};
    QStringList names;
    const auto entries = opened->entries();
    for (const platform::FolderEntry &entry : entries.value_or(std::vector<platform::FolderEntry>())) {
        if (entry.kind == platform::EntryKind::File && !entry.isHidden &&
            entry.name.endsWith(extension(), Qt::CaseInsensitive))
            names.append(entry.name);
    }
    names.sort();
    return names;
}

int DeletePlaylists(clsFileFunc &files, const QString &folder)
{
    return files.DeleteFile(sourceList(folder, playlistsIn(folder)));
}

} // namespace ravlin
