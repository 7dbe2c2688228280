// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/posix/trashsizes.h"

#include "core/platform/fileio.h"

#include <QList>
#include <QRandomGenerator>

#include <unistd.h>

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

namespace ravlin::platform {
namespace {

constexpr qint64 MostBytes = 1024 * 1024; ///< of the file; about 20,000 folders
constexpr int MostLevels = 200;           ///< each holds a folder open

QString fileName()
{
    return QStringLiteral("directorysizes");
}

/// Adds up the blocks of a folder and of all that is in it, as du does: what has several names counts once.
class Measuring
{
public:
    /// False if it can't be measured in full.
    bool add(HeldFolder &folder, const QString &name, int level)
    {
        const auto node = folder.node(name);
        if (!node)
            return false;
        const bool isNew = node->kind == NodeKind::Folder || node->info.linkCount < 2 ||
                           m_seen.emplace(node->info.device, node->info.inode).second;
        m_bytes += isNew ? node->info.onDisk : 0;
        if (node->kind != NodeKind::Folder)
            return true;
        const auto inner = level < MostLevels ? folder.openFolder(name) : notMeasured(folder);
        const auto names = inner ? (*inner)->names() : tl::unexpected(inner.error());
        return names &&
               std::ranges::all_of(*names, [&](const QString &child) { return add(**inner, child, level + 1); });
    }
    qint64 bytes() const { return m_bytes; }

private:
    static Result<std::shared_ptr<HeldFolder>> notMeasured(HeldFolder &folder)
    {
        return tl::unexpected(Error{ErrorCode::TooLarge, folder.path(), QStringLiteral("too many folders in folders")});
    }

    std::set<std::pair<quint64, quint64>> m_seen; ///< device and inode of what has several names
    qint64 m_bytes = 0;
};

QByteArray encoded(const QString &name)
{
    return encodePath(name).toPercentEncoding();
}

/// "SIZE TIME NAME" with the name percent-encoded.
bool isEntry(const QByteArray &line)
{
    const QList<QByteArray> parts = line.split(' ');
    if (parts.size() != 3 || parts[2].isEmpty())
        return false;
    const auto isNumber = [](const QByteArray &part) {
        bool isOne = false;
        part.toULongLong(&isOne);
        return isOne;
    };
    return isNumber(parts[0]) && isNumber(parts[1]);
}

/// The entries of all other folders; none if the file is not one that a desktop would write.
QList<QByteArray> otherEntries(HeldFolder &trash, const QByteArray &encodedName)
{
    const auto file = trash.openFile(fileName(), OpenMode::Read);
    const auto info = file ? (*file)->info() : tl::unexpected(file.error());
    if (!info || info->size > MostBytes)
        return {};
    QList<QByteArray> entries = readExactly(**file, 0, info->size).value_or(QByteArray()).split('\n');
    entries.removeIf([&](const QByteArray &line) { return !isEntry(line) || line.endsWith(' ' + encodedName); });
    return entries;
}

/// Under a name of its own first, and in one step: other programs read and write the file, too.
void write(HeldFolder &trash, const QList<QByteArray> &entries)
{
    if (entries.isEmpty()) {
        static_cast<void>(trash.remove(fileName()));
        return;
    }
    const QString temporary =
        QStringLiteral("%1.%2").arg(fileName(), QString::number(QRandomGenerator::system()->generate64(), 16));
    const auto file = trash.createNew(temporary);
    if (!file)
        return;
    const auto written = writeAll(**file, entries.join('\n') + '\n', 0).and_then([&] {
        return trash.replace(temporary, trash, fileName());
    });
    if (!written)
        static_cast<void>(trash.remove(temporary));
}

bool isOwn(HeldFolder &trash)
{
    const auto info = trash.info();
    return info && info->owner == ::geteuid();
}

/// Whole seconds since 1970 of the last change to the folder's info file.
std::optional<qint64> timeOfInfo(HeldFolder &trash, const QString &name)
{
    constexpr qint64 NanosecondsInSecond = 1'000'000'000;
    const auto infos = trash.openFolder(QStringLiteral("info"));
    const auto node = infos ? (*infos)->node(name + QStringLiteral(".trashinfo")) : tl::unexpected(infos.error());
    return node ? std::optional(node->info.modified / NanosecondsInSecond) : std::nullopt;
}

} // namespace

void noteFolderSize(HeldFolder &trash, const QString &name)
{
    const auto files = trash.openFolder(QStringLiteral("files"));
    const auto time = timeOfInfo(trash, name);
    Measuring measuring;
    if (!isOwn(trash) || !files || !time || !measuring.add(**files, name, 0)) {
        forgetFolderSize(trash, name);
        return;
    }
    const QByteArray encodedName = encoded(name);
    QList<QByteArray> entries = otherEntries(trash, encodedName);
    entries.append(QByteArray::number(measuring.bytes()) + ' ' + QByteArray::number(*time) + ' ' + encodedName);
    write(trash, entries);
}

void forgetFolderSize(HeldFolder &trash, const QString &name)
{
    if (isOwn(trash) && trash.node(fileName()))
        write(trash, otherEntries(trash, encoded(name)));
}

} // namespace ravlin::platform
