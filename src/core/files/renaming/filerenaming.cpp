// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/renaming/filerenaming.h"

#include "core/files/renaming/renamefromtags.h"
#include "core/platform/path.h"
#include "core/tags/store/tagstore.h"

namespace ravlin {

FileRenaming planFileRenaming(const QStringList &paths, const NamingRule &rule, const TagStore &store,
    platform::FileSystem &fileSystem, const ProgressReport &progress)
{
    std::vector<PreviewRow> rows = previewRenaming(paths, rule, store, progress);
    std::vector<RenameWish> wishes = renameWishes(rows, rule);
    return {std::move(rows), RenamingPlan(fileSystem, std::move(wishes))};
}

QString newNameOf(const PreviewRow &preview, const RenameRow &row)
{
    if (!row.renames())
        return preview.name;
    const QString folder = platform::folderPrefix(row.from);
    return row.path.startsWith(folder) ? row.path.mid(folder.size()) : row.path;
}

} // namespace ravlin
