// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"
#include "support/filesteps.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

/// A temporary folder for a test, with files that are read and written without the code under test.
namespace ravlin::test {

class ScratchFolder
{
public:
    ScratchFolder() = default;
    /// A folder inside a given one, which others can reach, unlike the usual one for temporary files.
    explicit ScratchFolder(const QString &parent) : m_folder(parent + QStringLiteral("/ravlin-test-XXXXXX")) {}

    QString path(const QString &name) const { return QDir::toNativeSeparators(m_folder.filePath(name)); }
    QString path() const { return QDir::toNativeSeparators(m_folder.path()); }

    QString write(const QString &name, const QByteArray &content) const
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write the test's file %s", qPrintable(file.fileName()));
        return path(name); // QFile returns it with slashes
    }
    static QByteArray read(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<cannot be read>");
    }
    /// All names in the folder, including hidden ones, sorted.
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
