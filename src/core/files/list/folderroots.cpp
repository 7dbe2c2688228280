// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/list/folderroots.h"

#include <QDir>
#include <QStandardPaths>
#include <QStorageInfo>

#include <algorithm>

namespace ravlin {

namespace {

void add(std::vector<FolderRoot> &roots, const QString &path, FolderRoot::Kind kind)
{
    const QString native = QDir::toNativeSeparators(QDir::cleanPath(path));
    const auto isSame = [&](const FolderRoot &root) { return root.path == native; };
    if (!path.isEmpty() && QDir(path).exists() && std::none_of(roots.begin(), roots.end(), isSame))
        roots.push_back({native, kind});
}

bool isMountedForUsers(const QString &path)
{
    return path.startsWith(QStringLiteral("/media/")) || path.startsWith(QStringLiteral("/run/media/")) ||
           path.startsWith(QStringLiteral("/mnt/"));
}

} // namespace

std::vector<FolderRoot> standardFolderRoots()
{
    std::vector<FolderRoot> roots;
    add(roots, QStandardPaths::writableLocation(QStandardPaths::HomeLocation), FolderRoot::Kind::Home);
    add(roots, QStandardPaths::writableLocation(QStandardPaths::MusicLocation), FolderRoot::Kind::Music);
    for (const QStorageInfo &volume : QStorageInfo::mountedVolumes()) {
        if (volume.isReady() && isMountedForUsers(volume.rootPath()))
            add(roots, volume.rootPath(), FolderRoot::Kind::Drive);
    }
    for (const QFileInfo &drive : QDir::drives())
        add(roots, drive.filePath(), FolderRoot::Kind::Drive);
    return roots;
}

} // namespace ravlin
