// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/batch.h"
#include "core/tags/record/tagrecord.h"
#include "core/tags/store/tagedits.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace ravlin {

class Captions;
class TagStore;

/// Fields that all files of a disc get.
struct DiscFields
{
    QString artist;
    QString album;
    QString year;  ///< if empty, files keep their own
    QString genre; ///< if empty, files keep their own
};

/// Fields that one file gets, from the track beside it; both empty without one.
struct DiscRow
{
    QString track;
    QString title;
};

/// What a disc's data change. onlyChosen: an empty artist, album or title changes nothing either, and without a track
/// neither does the track.
TagEdits discEdits(const DiscFields &disc, const DiscRow &row, bool onlyChosen);
/// Puts a disc's data into a file's tag. Other fields stay.
void applyDisc(TagRecord &record, const DiscFields &disc, const DiscRow &row);

/// A file and its own fields.
struct DiscFile
{
    QString path;
    DiscRow row;
};

/// Writes a disc's data into the tags of its files, in order. A file that cannot be read or written stays as it is.
/// Stops once a file was refused for lack of space.
BatchOutcome saveDisc(const std::vector<DiscFile> &files, const DiscFields &disc, TagStore &tagStore,
    const ProgramState &state, const ProgressReport &progress);

/// A line with path and reason for each file that was not saved.
QStringList notSavedLines(const Captions &captions, const BatchOutcome &outcome, const std::vector<DiscFile> &files);

} // namespace ravlin
