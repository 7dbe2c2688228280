// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/batch.h"
#include "core/platform/error.h"
#include "core/tags/record/tagrecord.h"

#include <QString>
#include <QStringList>

#include <vector>

/// Tags from file names: takes a file's bare name apart by a pattern such as "%1 - %3".
namespace ravlin {

class TagStore;

/// Puts what stands in a name at the pattern's placeholders into the record (see extractionPlaceholders()). True when
/// the match ran to the end of the pattern.
///
/// Literal text must stand in the name exactly, upper and lower case told apart. A value ends at the first occurrence
/// of the text up to the next placeholder, so it never contains it; between two placeholders without text the value is
/// empty. Behind the last placeholder only the first character of the pattern counts, and only to end the value; a last
/// placeholder without text behind it takes the rest. A pattern without placeholders fits every name. When the match
/// fails, the fields before the place where it failed have been filled.
bool MatchNameToPattern(const QString &name, const QString &pattern, TagRecord &record);

/// One file's extraction before it is written.
struct Extraction
{
    TagRecord record;       ///< the file's own tag with what the pattern took from the name
    bool isMatched = false; ///< whether it would be written
};

/// Reads the file's tag and takes its name apart; writes nothing. Fails when the tag cannot be read; a genre number
/// beyond the table is no failure.
Result<Extraction> prepareExtraction(const QString &path, const QString &pattern, const TagStore &store);

struct ExtractionOutcome
{
    BatchOutcome rows;
    /// Of each row that was taken: the file was written. False for one that failed and for one whose name does not fit
    /// the pattern, which counts as done.
    std::vector<bool> isWritten;
};

/// Extracts and saves file after file. One that fails is passed over, but no further one is taken once the cancelled
/// flag is set. On the thread that calls; see runBatch.
ExtractionOutcome runExtraction(const QStringList &paths, const QString &pattern, TagStore &store,
    const ProgramState &state, const ProgressReport &progress, const RecordSaved &saved = {});

} // namespace ravlin
