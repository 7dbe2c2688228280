// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/cddb/xmcdrecord.h"

#include <QString>

/// A disc's tracks as people see them.
namespace ravlin {

/// The title or, on discs of several artists, "artist / title", as the database writes it.
QString shownTitle(const DiscTrack &track);
/// A length of 0 or more frames as "mm:ss.t"; empty where it is not known.
QString shownTime(std::optional<qint64> frames);
/// By how much a file plays longer, "+1.2 s" or "-1.2 s"; empty where that is not known.
QString shownDifference(std::optional<qint64> frames);

} // namespace ravlin
