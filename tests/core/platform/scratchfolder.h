// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

/// A folder of a test's own, and files in it read and written without the code under test.
namespace ravlin::test {

class ScratchFolder
{
public:
    ScratchFolder() = default;
    /// A folder inside one that others can reach too, unlike the usual one for temporary files.
    explicit ScratchFolder(const QString &parent) : m_folder(parent + QStringLiteral("/ravlin-test-XXXXXX")) {}

    QString path(const QString &name) const { return QDir::toNativeSeparators(m_folder.filePath(name)); }
    QString path() const { return QDir::toNativeSeparators(m_folder.path()); }

    QString write(const QString &name, const QByteArray &content) const
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write the test's file %s", qPrintable(file.fileName()));
        return path(name); // QFile tells it with slashes
    }
    static QByteArray read(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<cannot be read>");
    }
    /// Every name in the folder, hidden ones too, sorted.
    QStringList names() const
    {
        return QDir(path()).entryList(
            QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    }

private:
    QTemporaryDir m_folder;
};

inline platform::FileInfo infoOf(const QString &path)
{
    return platform::FileSystem::native().info(path).value_or(platform::FileInfo());
}

} // namespace ravlin::test
