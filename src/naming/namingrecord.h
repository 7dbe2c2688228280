#pragma once

#include "platform/error.h"
#include "tags/tagrecord.h"

#include <QString>

namespace ravlin {

class TagStore;

/// Fills the record for a rule that works on tag values. As TagStore::ReadTag, but a genre number beyond the genre
/// table is no error, and a track that such a file lacks is empty as in every other file.
Result<void> readTagForNaming(const TagStore &store, const QString &path, TagRecord &record);

} // namespace ravlin
