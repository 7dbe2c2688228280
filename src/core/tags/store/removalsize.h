// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

#include <QStringList>

namespace ravlin {

/// About how many bytes the history takes to record that these files lose their ID3v2 tags. Exact up to worthwhile;
/// beyond it, large frames that look alike, such as one cover in all of them, count once, as they are stored once.
/// Reads headers and samples only. A file that can't be read counts nothing.
qint64 removalSize(platform::FileSystem &fileSystem, const QStringList &paths, qint64 worthwhile);

} // namespace ravlin
