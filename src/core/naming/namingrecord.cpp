// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/naming/namingrecord.h"

#include "core/tags/store/tagstore.h"

using namespace Qt::StringLiterals;

namespace ravlin {

Result<void> readTagForNaming(const TagStore &store, const QString &path, TagRecord &record)
{
    Result<void> read = store.ReadTag(path, record);
    if (read || read.error().code != ErrorCode::GenreOutOfRange)
        return read;
    if (record.Track == u"0"_s)
        record.Track.clear();
    return {};
}

} // namespace ravlin
