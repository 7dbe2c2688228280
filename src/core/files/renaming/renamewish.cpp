// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/renaming/renamewish.h"

#include "core/platform/path.h"

#include <QDir>
#include <QStringList>

namespace ravlin {

namespace {

using platform::NameKind;
using platform::NameProblem;

/// The folder above, for a path that ends in a separator (empty: the current one); none when the text can't tell.
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

/// Builds the wish's path component by component.
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

RenameWish wishFor(const QString &path, const QString &newName, int stepsUp, NameKind kind)
{
    const QString folder = platform::folderPrefix(path);
    const QString wanted = folder + newName;
    if (wanted == path)
        return {path, path, kind};
    QStringList names = newName.split(platform::Separator);
    const QString last = names.takeLast();
    PathBuilder builder(folder, stepsUp);
    for (const QString &name : names) {
        if (const auto problem = builder.enter(name))
            return {path, wanted, kind, false, problem};
    }
    if (const auto problem = builder.add(last, kind, {}))
        return {path, wanted, kind, false, problem};
    return {path, builder.path(), kind, builder.isAdjusted()};
}

} // namespace

RenameWish wishForFile(const QString &path, const QString &newName, int stepsUp)
{
    return wishFor(path, newName, stepsUp, NameKind::File);
}

RenameWish wishForFolder(const QString &path, const QString &newName, int stepsUp)
{
    return wishFor(path, newName, stepsUp, NameKind::Folder);
}

int stepsUpIn(const QString &pattern)
{
    const QStringList names = QDir::toNativeSeparators(pattern).split(platform::Separator);
    return static_cast<int>(names.count(QStringLiteral("..")));
}

} // namespace ravlin
