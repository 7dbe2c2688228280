// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

#include <QSet>
#include <QString>

namespace ravlin::cli {

/// Clears away what interrupted writes have left in the folders that are about to be written to, each folder once.
class FolderCleaner
{
public:
    explicit FolderCleaner(platform::FileSystem &fileSystem) : m_fileSystem(fileSystem) {}

    /// The folder that holds the file itself, where symbolic links lead to it.
    void cleanFolderOf(const QString &path);

private:
    platform::FileSystem &m_fileSystem;
    QSet<QString> m_done;
};

} // namespace ravlin::cli
