#pragma once

#include "tags/tagrecord.h"

#include <QString>

namespace ravlin {

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

} // namespace ravlin
