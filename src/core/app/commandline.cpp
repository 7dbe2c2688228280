// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/app/commandline.h"

#include "core/platform/path.h"

#include <algorithm>

namespace ravlin {

QString folderOfCommandLine(const QString &commandLine)
{
    QString path = commandLine;
    if (path.endsWith(u'"'))
        path = path.mid(1, path.size() - 2);
    if (!path.endsWith(QStringLiteral(".mp3"), Qt::CaseInsensitive))
        return path;
    return path.left(std::max<qsizetype>(platform::nameStart(path), 1));
}

} // namespace ravlin
