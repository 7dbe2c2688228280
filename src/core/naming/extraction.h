// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/batch.h"
#include "core/platform/error.h"
#include "core/tags/record/tagrecord.h"
#include "core/tags/store/tagedits.h"

#include <QString>
#include <QStringList>

#include <vector>

/// Tags from file names: parses a file's bare name by a pattern such as "%1 - %3".
namespace ravlin {

class TagStore;

/// Fills the record with what a name has at the pattern's placeholders (see extractionPlaceholders()). Returns true if
/// the match reached the end of the pattern.
///
/// Literal text must occur in the name exactly, including case. A value ends at the first occurrence of the text up to
/// the next placeholder, so it never contains that text. Between two placeholders without text the value is empty.
/// Behind the last placeholder only the first character of the pattern counts, and only to end the value; without any
/// text there the last placeholder takes the rest. A pattern without placeholders fits every name. If the match fails,
/// the fields before that place are filled all the same. Values lose control characters.
bool MatchNameToPattern(const QString &name, const QString &pattern, TagRecord &record);
/// The same as edits; false leaves those before the place where the match failed.
bool MatchNameToPattern(const QString &name, const QString &pattern, TagEdits &edits);

/// One file's extraction before it is written.
struct Extraction
{
    TagRecord present;      ///< the file's own tag
    TagRecord record;       ///< the same with the values from the name
    TagEdits edits;         ///< these values
    bool isMatched = false; ///< whether it would be written
};

/// Reads the file's tag and parses its name; writes nothing. Fails if the tag cannot be read or may not be written. A
/// genre number above 125 is not a failure.
Result<Extraction> prepareExtraction(const QString &path, const QString &pattern, const TagStore &store);

struct ExtractionOutcome
{
    BatchOutcome rows;
    /// For each row that was processed: whether the file was written. False for one that failed, unless only a value
    /// was left out (NotStorable), and for one whose name does not fit the pattern, which counts as done.
    std::vector<bool> isWritten;
};

/// Extracts and saves file after file. Skips files that fail, and stops once the cancelled flag is set. Runs on the
/// calling thread; see runBatch.
ExtractionOutcome runExtraction(const QStringList &paths, const QString &pattern, TagStore &store,
    const ProgramState &state, const ProgressReport &progress, const RecordSaved &saved = {});

} // namespace ravlin
