// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/cddb/disccontents.h"

#include <QByteArrayView>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace ravlin {

/// A track of a record. Title and artist are single lines.
struct DiscTrack
{
    QString artist; ///< on discs of several artists; else empty, the artist is the disc's
    QString title;
    QString extendedData; ///< further remarks; may have several lines

    bool operator==(const DiscTrack &) const = default;
};

/// A record of a CD database.
struct DiscRecord
{
    QString artist;
    QString album;
    QString year;                     ///< four digits, or empty
    QString genre;                    ///< spelt as in the genre table if it is there, else free text; may be empty
    QString extendedData;             ///< further remarks; may have several lines
    std::vector<DiscTrack> tracks;    ///< in the order of the disc
    QStringList discIds;              ///< identifiers of the pressings it is for
    std::vector<qint64> frameOffsets; ///< of the tracks' starts; may be missing
    int seconds = 0;                  ///< of the whole disc, lead-in included; 0 if missing

    const QString &artistOf(const DiscTrack &track) const { return track.artist.isEmpty() ? artist : track.artist; }
    bool operator==(const DiscRecord &) const = default;
};

/// Parses a record in the xmcd format of CD databases (protocol levels 1 to 6). Values of the same key are pieces of
/// one text, \n, \t and \\ are escapes, and comments hold the offsets. Each text is decoded by itself, as UTF-8 or
/// Latin-1. Year and genre come from DYEAR and DGENRE or, in older records, from "YEAR: 1998 ID3G: 17" in the remarks.
/// Returns nothing if there is no title.
std::optional<DiscRecord> parseXmcdRecord(QByteArrayView bytes);

/// The length of a track in frames, index from 0; nothing if the record lacks it. The end of the last track is only
/// known to the second.
std::optional<qint64> trackFrames(const DiscRecord &record, int index);

/// For each track of the disc, how many frames it is longer than the record's (negative: shorter); nothing if the
/// record has no such track or no length for it.
std::vector<std::optional<qint64>> lengthDifferences(const DiscContents &disc, const DiscRecord &record);

} // namespace ravlin
