// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/renaming/renamefromtags.h"

#include "core/platform/path.h"

#include <QDir>

namespace ravlin {

std::vector<RenameWish> renameWishes(const std::vector<PreviewRow> &rows, const NamingRule &rule)
{
    const int stepsUp = rule.mode == NamingRule::Pattern ? stepsUpIn(rule.pattern) : 0;
    std::vector<RenameWish> wishes;
    wishes.reserve(rows.size());
    for (const PreviewRow &row : rows) {
        if (row.problem)
            wishes.push_back({row.path, row.path});
        else
            wishes.push_back(wishForFile(row.path, row.name, stepsUp));
    }
    return wishes;
}

std::optional<RenameWish> folderRenameWish(const QString &folder, const TagRecord &record, const FolderRule &rule)
{
    const std::optional<QString> wanted = newFolderPath(folder, record, rule);
    if (!wanted)
        return std::nullopt;
    const QString path = platform::withoutEndSeparator(folder);
    const QString name = wanted->sliced(platform::nameStart(path));
    const bool isMadeOfValues = rule.artistAlbum && !(record.Artist.isEmpty() && record.Album.isEmpty());
    if (isMadeOfValues && QDir::toNativeSeparators(name).contains(platform::Separator))
        return RenameWish{path, *wanted, platform::NameKind::Folder, false, platform::NameProblem::LeadsOutside};
    return wishForFolder(path, name, stepsUpIn(rule.patternText));
}

} // namespace ravlin
