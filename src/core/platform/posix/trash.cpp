// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/trash.h"

#include "core/platform/fileio.h"
#include "core/platform/filesystem.h"
#include "core/platform/namecheck.h"
#include "core/platform/nodes.h"
#include "core/platform/path.h"
#include "core/platform/posix/trashsizes.h"

#include <QDateTime>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <utility>
#include <vector>

namespace ravlin::platform {
namespace {

constexpr quint32 StickyBit = 01000;

using FolderPointer = std::shared_ptr<HeldFolder>;

/// Where a trash is or could be made.
struct TrashPlace
{
    QString folder;
    QString base;          ///< paths in its info files are relative to this, or absolute if it is empty
    bool isShared = false; ///< in the folder that an administrator has created for all
};

/// The folders that were made for a trash. They go again unless something came into the trash: an empty one would only
/// be litter on somebody's stick.
class NewFolders
{
public:
    NewFolders() = default;
    ~NewFolders()
    {
        for (; !m_places.empty(); m_places.pop_back()) // fails where another program has put something in
            static_cast<void>(m_places.back().folder->removeFolder(m_places.back().name));
    }
    NewFolders(NewFolders &&other) noexcept : m_places(std::exchange(other.m_places, {})) {}
    NewFolders &operator=(NewFolders &&) = delete;

    void add(Place place) { m_places.push_back(std::move(place)); }
    void keep() { m_places.clear(); }

private:
    std::vector<Place> m_places; ///< inner ones after outer ones
};

/// A trash that is held open.
struct Trash
{
    FolderPointer folder;
    FolderPointer files;
    FolderPointer info;
    QString base;
    NewFolders made;
};

QString environmentPath(const char *name)
{
    const char *const value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): nobody sets variables
    return value != nullptr && value[0] == '/' ? decodePath(QByteArray(value)) : QString();
}

/// $XDG_DATA_HOME/Trash; empty without a home folder.
QString homeTrash()
{
    const QString data = environmentPath("XDG_DATA_HOME");
    if (!data.isEmpty())
        return inFolder(data, QStringLiteral("Trash"));
    const QString home = environmentPath("HOME");
    return home.isEmpty() ? QString() : inFolder(home, QStringLiteral(".local/share/Trash"));
}

/// The nearest existing folder at or above a path: a home trash may not exist yet.
QString existingFolder(QString path)
{
    while (path.size() > 1 && !nodeAt(path))
        path = folderOf(path);
    return path;
}

quint64 deviceOf(const QString &path)
{
    struct stat status = {};
    return ::stat(encodePath(path).constData(), &status) == 0 ? status.st_dev : 0;
}

/// The top folder of the drive that holds a folder (a canonical path).
QString topOf(QString folder)
{
    const quint64 device = deviceOf(folder);
    while (folder.size() > 1 && deviceOf(folderOf(folder)) == device)
        folder = folderOf(folder);
    return folder;
}

/// Whether this is the user's own folder and not a link: others may have planted one to get at what is deleted.
bool isOwnFolder(const QString &path)
{
    const auto node = nodeAt(path);
    return node && node->kind == NodeKind::Folder && node->info.owner == ::geteuid();
}

tl::unexpected<Error> notOurs(const QString &path)
{
    return tl::unexpected(Error{ErrorCode::AccessDenied, path, QStringLiteral("not a folder of the user's own")});
}

/// Opens a folder of the user's own, and never a link; creates it if there is none.
Result<FolderPointer> ownFolder(const FolderPointer &parent, const QString &name, NewFolders &made)
{
    auto opened = parent->openFolder(name);
    if (!opened && opened.error().code == ErrorCode::NotFound) {
        opened = parent->createFolder(name);
        if (opened)
            made.add({parent, name});
        else if (opened.error().code == ErrorCode::AlreadyExists)
            opened = parent->openFolder(name);
    }
    if (!opened)
        return opened;
    const auto info = (*opened)->info();
    return info && info->owner == ::geteuid() ? opened : notOurs((*opened)->path());
}

/// The same by a path; creates missing folders above it, too.
Result<FolderPointer> ownFolderAt(const QString &path, NewFolders &made)
{
    const QString above = folderOf(path);
    auto parent = FileSystem::native().openFolder(above);
    if (!parent && parent.error().code == ErrorCode::NotFound && above.size() > 1)
        parent = ownFolderAt(above, made);
    if (!parent)
        return parent;
    return ownFolder(*parent, nameOf(path), made);
}

bool isSafeForAll(const Result<FileInfo> &info)
{
    return info && info->isFolder && (info->permissions & StickyBit) != 0;
}

Result<FolderPointer> hold(const TrashPlace &place, NewFolders &made)
{
    if (!place.isShared)
        return ownFolderAt(place.folder, made);
    const auto top = FileSystem::native().openFolder(place.base);
    if (!top)
        return top;
    const auto shared = (*top)->openFolder(nameOf(folderOf(place.folder)));
    if (!shared)
        return shared;
    return isSafeForAll((*shared)->info()) ? ownFolder(*shared, nameOf(place.folder), made)
                                           : notOurs((*shared)->path());
}

/// Whether a trash exists or could be created. Creates nothing.
bool couldBeUsable(const QString &trash)
{
    if (isTaken(trash))
        return isOwnFolder(trash) && ::access(encodePath(trash).constData(), W_OK | X_OK) == 0;
    return ::access(encodePath(existingFolder(folderOf(trash))).constData(), W_OK | X_OK) == 0;
}

/// The places of the trash for what is in a folder (a canonical path), the best one first.
std::vector<TrashPlace> trashPlaces(const QString &folder)
{
    const QString home = homeTrash();
    if (!home.isEmpty() && deviceOf(existingFolder(home)) == deviceOf(folder))
        return {{home, {}}};
    const QString top = topOf(folder);
    const QString shared = inFolder(top, QStringLiteral(".Trash"));
    std::vector<TrashPlace> places;
    const auto node = nodeAt(shared);
    if (node && node->kind == NodeKind::Folder && isSafeForAll(node->info))
        places.push_back({inFolder(shared, QString::number(::geteuid())), top, true});
    places.push_back({inFolder(top, QStringLiteral(".Trash-%1").arg(::geteuid())), top});
    return places;
}

Result<Trash> openTrashAt(const TrashPlace &place)
{
    NewFolders made;
    const auto held = hold(place, made);
    if (!held)
        return tl::unexpected(held.error());
    const auto files = ownFolder(*held, QStringLiteral("files"), made);
    if (!files)
        return tl::unexpected(files.error());
    const auto info = ownFolder(*held, QStringLiteral("info"), made);
    if (!info)
        return tl::unexpected(info.error());
    return Trash{*held, *files, *info, place.base, std::move(made)};
}

/// Whether another program that makes the same trash, or takes away an empty one that it has made, may be the reason.
bool isPassing(ErrorCode code)
{
    return code == ErrorCode::NotFound || code == ErrorCode::ChangedMeanwhile;
}

/// Opens the trash for what is in a folder (a canonical path), or creates it.
Result<Trash> openTrash(const QString &folder)
{
    Error error{ErrorCode::NoTrash, folder, QStringLiteral("no trash on this drive")};
    for (const TrashPlace &place : trashPlaces(folder)) {
        auto trash = openTrashAt(place);
        if (trash)
            return trash;
        const ErrorCode code = trash.error().code;
        if (code == ErrorCode::NoSpace || code == ErrorCode::ReadOnlyDrive || isPassing(code))
            error = trash.error();
    }
    return tl::unexpected(error);
}

/// Percent-encoding of the name's bytes by RFC 2396 §2.4.1, as the trash specification requires.
QByteArray encodedForInfo(const QString &path)
{
    return encodePath(path).toPercentEncoding("/!$&'()*+,:=@");
}

/// The name with a number before its extension, from 2 on, short enough for ".trashinfo" to fit as well.
QString nameInTrash(const QString &name, int number, NodeKind kind)
{
    constexpr int InfoSuffix = 10;
    constexpr int LongestExtension = 32; ///< longer ones are not extensions
    const qsizetype dot = kind == NodeKind::Folder ? -1 : name.lastIndexOf(u'.');
    const bool hasExtension = dot > 0 && nameLength(name.sliced(dot)) <= LongestExtension;
    const qsizetype stem = hasExtension ? dot : name.size();
    const QString end = (number == 1 ? QString() : QStringLiteral(" (%1)").arg(number)) + name.sliced(stem);
    return shortened(name.first(stem), MaxNameLength - InfoSuffix - nameLength(end)) + end;
}

QString infoName(const QString &nameInTrash)
{
    return nameInTrash + QStringLiteral(".trashinfo");
}

/// Claims a name by creating its info file: whoever creates that owns the name.
Result<QString> claimName(const Trash &trash, const QString &original, const QString &name, NodeKind kind)
{
    const qsizetype skipped = trash.base.isEmpty() ? 0 : withEndSeparator(trash.base).size();
    const QByteArray content = "[Trash Info]\nPath=" + encodedForInfo(original.mid(skipped)) +
                               "\nDeletionDate=" + QDateTime::currentDateTime().toString(Qt::ISODate).toLatin1() + '\n';
    constexpr int MostNumbers = 100'000;
    for (int number = 1; number < MostNumbers; ++number) {
        const QString tried = nameInTrash(name, number, kind);
        const QString info = infoName(tried);
        auto file = trash.info->createNew(info);
        if (!file && file.error().code == ErrorCode::AlreadyExists)
            continue;
        if (!file)
            return tl::unexpected(file.error());
        auto written = (*file)->writeAt({content.constData(), static_cast<size_t>(content.size())}, 0);
        if (written && *written == content.size())
            return tried;
        static_cast<void>(trash.info->remove(info));
        return tl::unexpected(
            written ? Error{ErrorCode::NoSpace, inFolder(trash.info->path(), info), {}} : written.error());
    }
    return tl::unexpected(Error{ErrorCode::AlreadyExists, original, QStringLiteral("no name left in the trash")});
}

/// The same place by the native file system and the folder's canonical path.
Result<Place> sourceOf(const Place &place)
{
    const auto canonical = FileSystem::native().canonicalPath(place.folder->path());
    const auto folder = canonical.and_then([](const QString &real) { return FileSystem::native().openFolder(real); });
    if (!folder)
        return tl::unexpected(folder.error());
    const auto held = place.folder->info();
    const auto found = (*folder)->info();
    if (!held || !found)
        return tl::unexpected(held ? found.error() : held.error());
    if (held->inode != found->inode || held->device != found->device)
        return tl::unexpected(Error{
            ErrorCode::ChangedMeanwhile, place.path(), QStringLiteral("another folder has taken its folder's place")});
    return Place{*folder, place.name};
}

Result<TrashedItem> moveInto(const Trash &trash, const Place &source, NodeKind kind)
{
    QString wanted = source.name;
    while (true) {
        const auto claimed = claimName(trash, source.path(), wanted, kind);
        if (!claimed)
            return tl::unexpected(claimed.error());
        const auto moved = source.folder->renameNew(source.name, *trash.files, *claimed);
        if (moved)
            return TrashedItem{source.path(), inFolder(trash.files->path(), *claimed),
                inFolder(trash.info->path(), infoName(*claimed))};
        static_cast<void>(trash.info->remove(infoName(*claimed)));
        if (moved.error().code == ErrorCode::Unsupported) // one drive mounted twice: renaming does not reach it
            return tl::unexpected(Error{ErrorCode::NoTrash, source.path(), moved.error().detail});
        if (moved.error().code != ErrorCode::AlreadyExists || !trash.files->node(*claimed))
            return tl::unexpected(moved.error());
        wanted = QStringLiteral("%1 %2").arg(source.name, QString::number(QDateTime::currentMSecsSinceEpoch(), 36));
    }
}

Result<TrashedItem> openAndMoveInto(const Place &source, NodeKind kind)
{
    auto trash = openTrash(source.folder->path());
    if (!trash)
        return tl::unexpected(trash.error());
    auto moved = moveInto(*trash, source, kind);
    if (!moved)
        return moved;
    trash->made.keep();
    if (kind == NodeKind::Folder)
        noteFolderSize(*trash->folder, nameOf(moved->file));
    return moved;
}

} // namespace

bool hasTrash(const QString &path)
{
    const auto folder = FileSystem::native().canonicalPath(folderOf(path));
    return folder && std::ranges::any_of(
                         trashPlaces(*folder), [](const TrashPlace &place) { return couldBeUsable(place.folder); });
}

Result<TrashedItem> moveToTrash(const QString &path)
{
    if (const auto named = nodeAt(path); !named)
        return tl::unexpected(named.error());
    if (!isPlainName(nameOf(path)))
        return tl::unexpected(Error{ErrorCode::NoOwnName, path, {}});
    const auto place = placeAt(FileSystem::native(), path);
    return place ? moveToTrash(*place) : tl::unexpected(place.error());
}

Result<TrashedItem> moveToTrash(const Place &place)
{
    const auto source = sourceOf(place);
    if (!source)
        return tl::unexpected(source.error());
    const auto node = source->folder->node(place.name);
    if (!node)
        return tl::unexpected(node.error());
    constexpr int Attempts = 200; // few are enough unless that program does nothing else
    auto moved = openAndMoveInto(*source, node->kind);
    const auto mayWorkAgain = [&] {
        return !moved && isPassing(moved.error().code) && source->folder->node(place.name).has_value();
    };
    for (int attempt = 1; attempt < Attempts && mayWorkAgain(); ++attempt)
        moved = openAndMoveInto(*source, node->kind);
    if (moved)
        return moved;
    // Errors name what was to be deleted: nobody knows the trash's own files.
    return tl::unexpected(
        Error{mayWorkAgain() ? ErrorCode::NoTrash : moved.error().code, place.path(), moved.error().detail});
}

Result<void> restoreFromTrash(const TrashedItem &item)
{
    FileSystem &system = FileSystem::native();
    const auto from = placeAt(system, item.file);
    const auto to = placeAt(system, item.original);
    if (!from || !to)
        return tl::unexpected(from ? to.error() : from.error());
    const auto node = from->folder->node(from->name);
    auto restored = from->folder->renameNew(from->name, *to->folder, to->name);
    if (!restored)
        return restored;
    if (node && node->kind == NodeKind::Folder) {
        const auto trash = system.openFolder(folderOf(from->folder->path()));
        if (trash)
            forgetFolderSize(**trash, from->name);
    }
    if (const auto info = placeAt(system, item.info))
        static_cast<void>(info->folder->remove(info->name)); // any desktop removes one that stays
    return restored;
}

} // namespace ravlin::platform
