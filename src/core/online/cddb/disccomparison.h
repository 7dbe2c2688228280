// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/cddb/xmcdrecord.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

/// Files and a disc's tracks side by side, row by row: how lengths are shown and which differ. Lengths are in CD
/// frames, nullopt if unknown.
namespace ravlin {

class Captions;

/// The title, or "artist / title" on discs of several artists, as the database writes it.
QString shownTitle(const DiscTrack &track);
/// A length of 0 or more frames as "mm:ss.t"; empty if unknown.
QString shownTime(std::optional<qint64> frames);
/// How much longer a file plays, as "+1.2 s" or "-1.2 s"; empty if unknown.
QString shownDifference(std::optional<qint64> frames);

using Lengths = std::vector<std::optional<qint64>>;

/// For each track, how much longer the file beside it plays (negative: shorter). 0 if unknown, if there is no file, or
/// up to 2 seconds, which encoders add.
std::vector<qint64> notableDifferences(const Lengths &files, const Lengths &tracks);

/// A sentence about one such difference; empty for 0.
QString differenceRemark(const Captions &captions, qint64 frames);

/// Sentences about the whole: different numbers of rows, and how many tracks differ notably.
QStringList comparisonRemarks(const Captions &captions, qsizetype files, qsizetype tracks, qsizetype differing);

} // namespace ravlin
