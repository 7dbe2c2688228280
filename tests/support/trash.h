// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/path.h"
#include "core/platform/trash.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

/// The trash as tests look into it from outside: by the rules of freedesktop.org, which Wine's recycle bin keeps too.
namespace ravlin::test {

/// RAVLIN_TRASH tells of Wine's, which a Windows program knows nothing of.
inline QString trashFolder()
{
    const QString told = qEnvironmentVariable("RAVLIN_TRASH");
    return told.isEmpty() ? qEnvironmentVariable("XDG_DATA_HOME") + QStringLiteral("/Trash") : told;
}

/// Where a file or folder is that was put into the trash.
inline QString inTrash(const QString &name)
{
    return trashFolder() + QStringLiteral("/files/") + name;
}

/// The folders themselves stay: Wine's shell makes them but once.
inline void emptyTrash()
{
    for (const QString &part : {QStringLiteral("/files"), QStringLiteral("/info")}) {
        for (const QFileInfo &entry :
            QDir(trashFolder() + part).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)) {
            if (entry.isDir() && !entry.isSymLink())
                QDir(entry.filePath()).removeRecursively();
            else
                QFile::remove(entry.filePath());
        }
    }
}

/// Removes a file or link that a test has put into the trash of a drive that is not its own.
inline void discard(const platform::TrashedItem &item)
{
    QFile::remove(item.file);
    QFile::remove(item.info);
}

/// Whether it is told where in the trash a file has come to lie, without which it can't come back. Wine's shell does
/// not tell.
inline bool givesBackFromTrash()
{
    if (platform::Separator == u'/')
        return true;
    const QTemporaryDir folder;
    const QString path = QDir::toNativeSeparators(folder.filePath(QStringLiteral("probe.mp3")));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.close();
    const auto item = platform::moveToTrash(path);
    return item && !item->file.isEmpty();
}

} // namespace ravlin::test
