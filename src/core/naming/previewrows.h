// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/progress.h"
#include "core/naming/lostfields.h"
#include "core/naming/newname.h"
#include "core/platform/error.h"
#include "core/tags/record/tagrecord.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

/// What an extraction or a renaming would do, row by row, for a window or the command line to show. It runs the code of
/// the real thing up to where that would write, and touches no file.
namespace ravlin {

class Captions;
class TagStore;

struct PreviewRow
{
    QString path; ///< the file
    /// Extraction: the file's name. Renaming: its new name with the extension, in its own folder unless separators lead
    /// elsewhere; the present name of a file with a problem. Not for finding a file: show it by shownName().
    QString name;
    /// Extraction: the file's tag with what was taken from its name, also where the match failed half way. Renaming:
    /// the file's tag. Of a file with a problem all texts are empty.
    TagRecord record;
    std::vector<LostField> lost = {}; ///< extraction: what the save would not keep; nothing if the name does not fit
    bool isLongName = false;          ///< name has 65 characters or more
    bool isUntouched = false;         ///< the run would leave the file as it is: nothing fits, or the name stays
    std::optional<Error> problem;     ///< the file cannot be read or is refused, and why

    bool isUnreadable() const { return problem.has_value(); }
};

PreviewRow previewExtraction(const QString &path, const QString &pattern, const TagStore &store);
/// Refuses a file whose own name does not end in ".mp3" (NotMp3Name); of a link the link's name counts.
PreviewRow previewRenaming(const QString &path, const NamingRule &rule, const TagStore &store);

/// One row a file, in their order. May run on any thread that has the store to itself.
std::vector<PreviewRow> previewExtraction(
    const QStringList &paths, const QString &pattern, const TagStore &store, const ProgressReport &progress = {});
std::vector<PreviewRow> previewRenaming(
    const QStringList &paths, const NamingRule &rule, const TagStore &store, const ProgressReport &progress = {});

/// What is to be said about a row of an extraction, as whole sentences in the user's language.
QStringList extractionRemarks(const PreviewRow &row, const Captions &captions);

/// The tag as a read gives it after a save: without a year, track or genre that no save writes, the track as a number,
/// the genre as the table spells it.
TagRecord asSaved(const TagRecord &record);

} // namespace ravlin
