// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/fixedfiles.h"

#include "core/platform/path.h"
#include "core/platform/windows/native.h"

#include <QDir>
#include <QStandardPaths>

namespace ravlin::platform {
namespace {

const QString Root = QStringLiteral("c:\\");

/// Most users may make folders there, but no files. Only trying tells.
bool canWriteToRoot()
{
    return TemporaryFile::create(FileSystem::native(), Root).has_value();
}

} // namespace

QString fixedFilePath(const QString &name)
{
    if (canWriteToRoot())
        return Root + name;
    const QString cache = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    const QString folder = inFolder(QDir::toNativeSeparators(cache), QStringLiteral("ravlin"));
    QDir().mkpath(folder); // that it can't be made shows when a file is to be written there
    return inFolder(folder, name);
}

quint32 newFilePermissions()
{
    return 0666;
}

} // namespace ravlin::platform
