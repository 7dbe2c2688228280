// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/cddb/xmcdrecord.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

/// What is odd about files and tracks that stand side by side, row by row. Lengths are in frames of a CD, nothing where
/// they are not known.
namespace ravlin {

class Captions;

/// The title or, on discs of several artists, "artist / title", as the database writes it.
QString shownTitle(const DiscTrack &track);
/// A length of 0 or more frames as "mm:ss.t"; empty where it is not known.
QString shownTime(std::optional<qint64> frames);
/// By how much a file plays longer, "+1.2 s" or "-1.2 s"; empty where that is not known.
QString shownDifference(std::optional<qint64> frames);

using Lengths = std::vector<std::optional<qint64>>;

/// For each track by how much the file beside it plays longer (negative: shorter); 0 where that is not known, not worth
/// a word (2 seconds or less: encoders add that much), or where there is no file.
std::vector<qint64> notableDifferences(const Lengths &files, const Lengths &tracks);

/// A sentence about one of these differences; empty for 0.
QString differenceRemark(const Captions &captions, qint64 frames);

/// Sentences about what differs in the whole: the number of rows, and how many tracks have a notable difference.
QStringList comparisonRemarks(const Captions &captions, qsizetype files, qsizetype tracks, qsizetype differing);

} // namespace ravlin
