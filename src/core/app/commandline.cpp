// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/app/commandline.h"

#include "core/platform/filesystem.h"

namespace ravlin {

QString folderOfCommandLine(const QString &commandLine)
{
    QString path = commandLine;
    if (path.endsWith(u'"'))
        path = path.mid(1, path.size() - 2);
    if (!path.endsWith(QStringLiteral(".mp3"), Qt::CaseInsensitive))
        return path;
    const qsizetype separator = path.lastIndexOf(platform::Separator);
    return separator < 1 ? path.left(1) : path.left(separator + 1);
}

} // namespace ravlin
