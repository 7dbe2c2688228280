// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/renaming/renamefromtags.h"

#include "core/platform/path.h"
#include "core/tags/store/tagstore.h"

#include <QDir>

namespace ravlin {

namespace {

using platform::NameKind;
using platform::NameProblem;

/// The folder above one whose path ends in a separator or is empty (the current folder). Returns nothing if the text
/// doesn't show it.
std::optional<QString> folderAbove(const QString &folder)
{
    const qsizetype end = folder.size() - 1;
    if (end < 1)
        return std::nullopt;
    const qsizetype start = platform::nameStart(QStringView(folder).first(end));
    const QStringView name = QStringView(folder).sliced(start, end - start);
    if (name.isEmpty() || name == u"." || name == u"..")
        return std::nullopt;
    return folder.first(start);
}

/// Builds the new path component by component.
class PathBuilder
{
public:
    PathBuilder(QString folder, int stepsUp) : m_folder(std::move(folder)), m_stepsUp(stepsUp) {}

    /// A name before the last separator.
    std::optional<NameProblem> enter(const QString &name)
    {
        if (name.isEmpty() || name == u".")
            return {};
        if (name == u"..")
            return leave();
        return add(name, NameKind::Folder, QString(platform::Separator));
    }

    std::optional<NameProblem> add(const QString &name, NameKind kind, const QString &end)
    {
        const platform::CheckedName checked = platform::checkName(name, kind);
        m_isAdjusted = m_isAdjusted || checked.isAdjusted;
        m_folder += checked.name + end;
        return checked.problem;
    }

    const QString &path() const { return m_folder; }
    bool isAdjusted() const { return m_isAdjusted; }

private:
    std::optional<NameProblem> leave()
    {
        if (m_stepsUp-- <= 0)
            return NameProblem::LeadsOutside;
        const std::optional<QString> above = folderAbove(m_folder);
        m_folder = above.value_or(m_folder + QStringLiteral("..") + platform::Separator);
        return {};
    }

    QString m_folder; ///< with the separator at its end, or empty
    int m_stepsUp;
    bool m_isAdjusted = false;
};

RenameRow renameOf(const QString &path, const QString &newName, int stepsUp, NameKind kind)
{
    const QString folder = platform::folderPrefix(path);
    RenameRow row{.from = path, .wanted = folder + newName, .kind = kind};
    if (row.wanted == path)
        return row;
    QStringList names = newName.split(platform::Separator);
    const QString last = names.takeLast();
    PathBuilder builder(folder, stepsUp);
    for (const QString &name : names) {
        row.problem = builder.enter(name);
        if (row.problem)
            return row;
    }
    row.problem = builder.add(last, kind, {});
    if (!row.problem) {
        row.wanted = builder.path();
        row.isAdjusted = builder.isAdjusted();
    }
    return row;
}

} // namespace

RenameRow fileRename(const QString &path, const QString &newName, int stepsUp)
{
    return renameOf(path, newName, stepsUp, NameKind::File);
}

int stepsUpIn(const QString &pattern)
{
    const QStringList names = QDir::toNativeSeparators(pattern).split(platform::Separator);
    return static_cast<int>(names.count(QStringLiteral("..")));
}

std::vector<RenameRow> fileRenames(const std::vector<PreviewRow> &files, const NamingRule &rule)
{
    const int stepsUp = rule.mode == NamingRule::Pattern ? stepsUpIn(rule.pattern) : 0;
    std::vector<RenameRow> rows;
    rows.reserve(files.size());
    for (const PreviewRow &file : files)
        rows.push_back(file.problem ? RenameRow{.from = file.path, .wanted = file.path}
                                    : fileRename(file.path, file.name, stepsUp));
    return rows;
}

std::optional<RenameRow> folderRename(const QString &folder, const TagRecord &record, const FolderRule &rule)
{
    const std::optional<QString> wanted = newFolderPath(folder, record, rule);
    if (!wanted)
        return std::nullopt;
    const QString path = platform::withoutEndSeparator(folder);
    const QString name = wanted->sliced(platform::nameStart(path));
    const bool isMadeOfValues = rule.artistAlbum && !(record.Artist.isEmpty() && record.Album.isEmpty());
    if (isMadeOfValues && QDir::toNativeSeparators(name).contains(platform::Separator))
        return RenameRow{
            .from = path, .wanted = *wanted, .kind = NameKind::Folder, .problem = NameProblem::LeadsOutside};
    return renameOf(path, name, stepsUpIn(rule.patternText), NameKind::Folder);
}

FileRenaming planFileRenaming(const QStringList &paths, const NamingRule &rule, const TagStore &store,
    platform::FileSystem &fileSystem, const ProgressReport &progress)
{
    std::vector<PreviewRow> rows = previewRenaming(paths, rule, store, progress);
    RenamingPlan plan(fileSystem, fileRenames(rows, rule));
    return {std::move(rows), std::move(plan)};
}

QString newNameOf(const RenameRow &row)
{
    const QString folder = platform::folderPrefix(row.from);
    const QString &path = row.renames() ? row.path : row.wanted;
    return path.startsWith(folder) ? path.mid(folder.size()) : path;
}

} // namespace ravlin
