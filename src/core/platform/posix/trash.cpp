// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/trash.h"

#include "core/platform/filesystem.h"
#include "core/platform/namecheck.h"
#include "core/platform/nodes.h"
#include "core/platform/path.h"
#include "core/platform/posix/systemerror.h"

#include <QDateTime>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

namespace ravlin::platform {
namespace {

constexpr quint32 StickyBit = 01000;
constexpr quint32 OwnerOnly = 0700;

/// A trash folder. Paths in its info files are relative to base, or absolute if that is empty.
struct Trash
{
    QString folder;
    QString base;
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

/// Creates a folder and the missing ones above it, for the owner alone.
bool makeOwnFolder(const QString &path)
{
    if (isOwnFolder(path))
        return true;
    const QString parent = folderOf(path);
    if (!isTaken(parent) && (parent.size() <= 1 || !makeOwnFolder(parent)))
        return false;
    return ::mkdir(encodePath(path).constData(), OwnerOnly) == 0 || (errno == EEXIST && isOwnFolder(path));
}

/// This user's folder in the trash that an administrator has created for all, if that is safe.
QString sharedTrash(const QString &top)
{
    const QString shared = inFolder(top, QStringLiteral(".Trash"));
    const auto node = nodeAt(shared);
    const bool isSafe = node && node->kind == NodeKind::Folder && (node->info.permissions & StickyBit) != 0;
    return isSafe ? inFolder(shared, QString::number(::geteuid())) : QString();
}

bool isUsable(const QString &trash)
{
    return makeOwnFolder(trash) && makeOwnFolder(inFolder(trash, QStringLiteral("files"))) &&
           makeOwnFolder(inFolder(trash, QStringLiteral("info")));
}

/// Whether a trash exists or could be created. Creates nothing.
bool couldBeUsable(const QString &trash)
{
    if (isTaken(trash))
        return isOwnFolder(trash) && ::access(encodePath(trash).constData(), W_OK | X_OK) == 0;
    return ::access(encodePath(existingFolder(folderOf(trash))).constData(), W_OK | X_OK) == 0;
}

/// The first trash for what is in a folder (a canonical path) that accept returns true for.
template <typename Accept>
Result<Trash> findTrash(const QString &folder, Accept accept)
{
    const QString home = homeTrash();
    if (!home.isEmpty() && deviceOf(existingFolder(home)) == deviceOf(folder)) {
        if (accept(home))
            return Trash{home, {}};
    } else {
        const QString top = topOf(folder);
        const QString shared = sharedTrash(top);
        if (!shared.isEmpty() && accept(shared))
            return Trash{shared, top};
        const QString own = inFolder(top, QStringLiteral(".Trash-%1").arg(::geteuid()));
        if (accept(own))
            return Trash{own, top};
    }
    return tl::unexpected(Error{ErrorCode::NoTrash, folder, QStringLiteral("no trash on this drive")});
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

/// Claims a name by creating its info file: whoever creates that owns the name.
Result<QString> claimName(const Trash &trash, const QString &original, const QString &name, NodeKind kind)
{
    const qsizetype skipped = trash.base.isEmpty() ? 0 : withEndSeparator(trash.base).size();
    const QByteArray content = "[Trash Info]\nPath=" + encodedForInfo(original.mid(skipped)) +
                               "\nDeletionDate=" + QDateTime::currentDateTime().toString(Qt::ISODate).toLatin1() + '\n';
    constexpr int MostNumbers = 100'000;
    for (int number = 1; number < MostNumbers; ++number) {
        const QString tried = nameInTrash(name, number, kind);
        const QString info = inFolder(trash.folder, QStringLiteral("info/%1.trashinfo").arg(tried));
        auto file = FileSystem::native().createNew(info);
        if (!file && file.error().code == ErrorCode::AlreadyExists)
            continue;
        if (!file)
            return tl::unexpected(file.error());
        auto written = (*file)->writeAt({content.constData(), static_cast<size_t>(content.size())}, 0);
        if (written && *written == content.size())
            return tried;
        static_cast<void>(FileSystem::native().remove(info));
        return tl::unexpected(written ? Error{ErrorCode::NoSpace, info, {}} : written.error());
    }
    return tl::unexpected(Error{ErrorCode::AlreadyExists, original, QStringLiteral("no name left in the trash")});
}

} // namespace

bool hasTrash(const QString &path)
{
    const auto folder = FileSystem::native().canonicalPath(folderOf(path));
    return folder && findTrash(*folder, couldBeUsable).has_value();
}

Result<TrashedItem> moveToTrash(const QString &path)
{
    const QString name = nameOf(path);
    const auto node = nodeAt(path);
    if (!node)
        return tl::unexpected(node.error());
    const auto folder = FileSystem::native().canonicalPath(folderOf(path));
    if (!folder)
        return tl::unexpected(folder.error());
    if (!isPlainName(name))
        return tl::unexpected(Error{ErrorCode::InvalidArgument, path, QStringLiteral("this has no name of its own")});
    const auto trash = findTrash(*folder, isUsable);
    if (!trash)
        return tl::unexpected(Error{ErrorCode::NoTrash, path, trash.error().detail});

    const QString original = inFolder(*folder, name);
    QString wanted = name;
    while (true) {
        const auto claimed = claimName(*trash, original, wanted, node->kind);
        if (!claimed)
            return tl::unexpected(claimed.error());
        const TrashedItem item{original, inFolder(trash->folder, QStringLiteral("files/") + *claimed),
            inFolder(trash->folder, QStringLiteral("info/%1.trashinfo").arg(*claimed))};
        const auto moved = FileSystem::native().renameNew(original, item.file);
        if (moved)
            return item;
        static_cast<void>(FileSystem::native().remove(item.info));
        if (moved.error().code == ErrorCode::Unsupported) // one drive mounted twice: renaming does not reach it
            return tl::unexpected(Error{ErrorCode::NoTrash, path, moved.error().detail});
        if (moved.error().code != ErrorCode::AlreadyExists || !isTaken(item.file))
            return tl::unexpected(moved.error());
        wanted = QStringLiteral("%1 %2").arg(name, QString::number(QDateTime::currentMSecsSinceEpoch(), 36));
    }
}

Result<void> restoreFromTrash(const TrashedItem &item)
{
    auto restored = FileSystem::native().renameNew(item.file, item.original);
    if (restored)
        static_cast<void>(FileSystem::native().remove(item.info)); // any desktop removes one that stays
    return restored;
}

} // namespace ravlin::platform
