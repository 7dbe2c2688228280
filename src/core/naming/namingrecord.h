// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/error.h"
#include "core/tags/record/tagrecord.h"

#include <QString>

#include <functional>

namespace ravlin {

class TagStore;

/// Fills the record for a rule that works on tag values. As TagStore::ReadTag, but a genre number beyond the genre
/// table is no error, and a track that such a file lacks is empty as in every other file.
Result<void> readTagForNaming(const TagStore &store, const QString &path, TagRecord &record);

/// Is told what a batch has saved, after each file that it wrote and on the thread that the batch runs on.
using RecordSaved = std::function<void(const QString &path, const TagRecord &record)>;

} // namespace ravlin
