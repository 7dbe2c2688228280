// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/renaming/renamefromtags.h"
#include "core/platform/scratchfolder.h"

#include <QDir>
#include <QDirIterator>
#include <QMap>

#include <cstring>
#include <utility>

/// What the tests of renaming share: folders whose files contain their first names, and short ways to write batches.
namespace ravlin::test {

/// A folder whose files contain their first names.
class RenamingCase
{
public:
    explicit RenamingCase(const QStringList &names = {})
    {
        for (const QString &name : names)
            add(name);
    }

    void add(const QString &name) const
    {
        const QFileInfo file(path(name));
        QDir().mkpath(file.path());
        m_folder.write(name, "audio of " + name.toUtf8());
    }
    QString path(const QString &name) const { return m_folder.path(name); }
    QString path() const { return QDir::toNativeSeparators(m_folder.path()); }

    /// The present names, each with the first name of its file. Paths start at this folder.
    QMap<QString, QString> files() const
    {
        QMap<QString, QString> found;
        QDirIterator iterator(m_folder.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (iterator.hasNext()) {
            const QString file = iterator.next();
            const QByteArray content = ScratchFolder::read(file);
            found.insert(
                file.mid(m_folder.path().size() + 1), QString::fromUtf8(content.mid(int(std::strlen("audio of ")))));
        }
        return found;
    }

    using Pairs = QList<std::pair<QString, QString>>;
    std::vector<RenameRow> rows(const Pairs &pairs) const
    {
        std::vector<RenameRow> made;
        for (const auto &[from, to] : pairs)
            made.push_back(fileRename(path(from), QDir::toNativeSeparators(to)));
        return made;
    }

private:
    ScratchFolder m_folder;
};

} // namespace ravlin::test
