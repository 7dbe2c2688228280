// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/batch.h"
#include "core/tags/record/tagrecord.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace ravlin {

class Captions;
class TagStore;

/// What all files of a disc get.
struct DiscFields
{
    QString artist;
    QString album;
    QString year;  ///< empty: the files keep their own
    QString genre; ///< likewise
};

/// What one file gets: the row of the track list that stands beside it; without one both are empty.
struct DiscRow
{
    QString track;
    QString title;
};

/// Puts a disc's data into a file's tag. What a disc does not tell of stays.
void applyDisc(TagRecord &record, const DiscFields &disc, const DiscRow &row);

/// A file and what it gets of its own.
struct DiscFile
{
    QString path;
    DiscRow row;
};

/// Writes a disc's data into the tags of its files, in order. A file that cannot be read or written stays as it is and
/// the next is taken; none is taken after one was refused for want of space.
BatchOutcome saveDisc(const std::vector<DiscFile> &files, const DiscFields &disc, TagStore &tagStore,
    const ProgramState &state, const ProgressReport &progress);

/// A line for each of the files that were not saved: its path and why.
QStringList notSavedLines(const Captions &captions, const BatchOutcome &outcome, const std::vector<DiscFile> &files);

} // namespace ravlin
