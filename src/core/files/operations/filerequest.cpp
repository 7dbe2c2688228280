// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/operations/filerequest.h"

namespace ravlin {

QString sourceList(const QString &folder, const QStringList &rowTexts)
{
    QString list;
    for (const QString &text : rowTexts)
        list += folder + text + QChar(u'\0');
    return list;
}

QStringList sourcePaths(const QString &source)
{
    return source.split(QChar(u'\0'), Qt::SkipEmptyParts);
}

} // namespace ravlin
