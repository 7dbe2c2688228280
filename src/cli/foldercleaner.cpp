// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/foldercleaner.h"

#include "core/platform/path.h"
#include "core/storage/safewrite.h"

#include <tuple>

namespace ravlin::cli {

void FolderCleaner::cleanFolderOf(const QString &path)
{
    const Result<QString> canonical = m_fileSystem.canonicalPath(path);
    if (!canonical)
        return; // the operation on the file tells
    const QString folder = platform::folderOf(*canonical);
    if (m_done.contains(folder))
        return;
    m_done.insert(folder);
    // Nobody asked for it, so nobody is told when it can't be done; what is left is harmless and never listed.
    std::ignore = storage::cleanLeftovers(m_fileSystem, folder);
}

} // namespace ravlin::cli
