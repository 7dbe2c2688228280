// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/renaming/renaming.h"
#include "core/naming/foldername.h"
#include "core/naming/newname.h"
#include "core/naming/previewrows.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

/// From the names that the rules make of tags to the rows of a RenamingPlan.
namespace ravlin {

class TagStore;

/// Gives a file a new name, extension included, in its own folder. Separators in newName are the pattern's own and lead
/// into folders below, which need not exist yet; "." and empty names between them are ignored. stepsUp: how many ".."
/// the pattern's own text has between separators; one more comes from a value and is refused (LeadsOutside). The file's
/// present name is never refused or adjusted.
RenameRow fileRename(const QString &path, const QString &newName, int stepsUp = 0);
/// How many ".." a pattern's own text has between separators.
int stepsUpIn(const QString &pattern);

/// A row for each file, in their order. A file that can't be read keeps its name.
std::vector<RenameRow> fileRenames(const std::vector<PreviewRow> &files, const NamingRule &rule);

/// Renames a folder after the tag of its first file. folder: with or without separators at its end. Returns nothing if
/// the rule makes no name. Values of `Check1` are used as they are, but one that leads into another folder is refused
/// (LeadsOutside).
std::optional<RenameRow> folderRename(const QString &folder, const TagRecord &record, const FolderRule &rule);

/// The renaming of files after their tags, planned and not yet run.
struct FileRenaming
{
    std::vector<PreviewRow> rows; ///< for each file its tag and the name that the rule gives
    RenamingPlan plan;            ///< the same files
};

/// Reads the files' tags, makes their names by the rule and plans the renames; touches nothing. A file whose tag can't
/// be read keeps its name. May run on any thread that has the store to itself.
FileRenaming planFileRenaming(const QStringList &paths, const NamingRule &rule, const TagStore &store,
    platform::FileSystem &fileSystem, const ProgressReport &progress = {});

/// The new name as shown beside the present one: the new path below the file's folder, or the whole path if it lies
/// elsewhere. For a row that can't get its name, the name that it wanted.
QString newNameOf(const RenameRow &row);

} // namespace ravlin
