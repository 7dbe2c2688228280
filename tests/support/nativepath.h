// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDir>
#include <QStringList>

/// Tests write paths with slashes; the program writes them with the platform's separator.
namespace ravlin::test {

inline QString native(const QString &path)
{
    return QDir::toNativeSeparators(path);
}

inline QStringList native(QStringList paths)
{
    for (QString &path : paths)
        path = native(path);
    return paths;
}

} // namespace ravlin::test
