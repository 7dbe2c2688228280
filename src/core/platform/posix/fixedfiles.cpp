// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/fixedfiles.h"

#include "core/platform/filesystem.h"
#include "core/platform/path.h"

#include <QFile>
#include <QStandardPaths>

#include <sys/stat.h>

namespace ravlin::platform {
namespace {

constexpr mode_t OwnerOnly = 0700;

/// Like mkdir -p, for the owner alone; that one can't be made shows when a file is to be written there.
void makeFolders(const QString &path)
{
    if (path.size() <= 1 || FileSystem::native().info(path))
        return;
    makeFolders(folderOf(path));
    static_cast<void>(::mkdir(encodePath(path).constData(), OwnerOnly));
}

} // namespace

QString fixedFilePath(const QString &name)
{
    const QString cache = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    const QString folder = inFolder(cache, QStringLiteral("ravlin"));
    makeFolders(folder);
    return inFolder(folder, name);
}

quint32 newFilePermissions()
{
    constexpr quint32 ForAll = 0666;
    constexpr quint32 UsualMask = 022;
    // umask(2) can only be asked by changing it, for all threads at once.
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return ForAll & ~UsualMask;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("Umask:"))
            return ForAll & ~line.sliced(6).trimmed().toUInt(nullptr, 8);
    }
    return ForAll & ~UsualMask;
}

} // namespace ravlin::platform
