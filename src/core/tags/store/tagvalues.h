// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/storage/journal.h"
#include "core/tags/id3/id3v1.h"
#include "core/tags/record/tagrecord.h"

#include <array>
#include <optional>
#include <vector>

/// What people see of a file's tags, and what a change means to them.
namespace ravlin {

class TagObject;

/// Fills the record with the properties of a linked object. Errors: those of TagStore::ReadTag that don't come from
/// opening the file; the record is filled all the same.
Result<void> takeRecord(const TagObject &object, const QString &path, TagRecord &record);

/// A file's values at one moment.
struct TagValues
{
    TagRecord shown;
    std::optional<id3::V1Fields> v1;
    std::array<int, 5> frames{}; ///< of ID3v2: how many pictures, lyrics, ratings, days and times, others
};

TagValues valuesOf(const TagObject &object);

/// What differs, by the names of TagFields: the value that is shown; where that stays, the value of an ID3v1 tag that
/// was there before and is there after. Then the frames that are gone, by their number: "picture", "lyrics", "rating",
/// "date", "other".
std::vector<storage::ValueChange> valueChanges(const TagValues &before, const TagValues &after);

} // namespace ravlin
