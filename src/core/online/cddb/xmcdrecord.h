// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/cddb/disccontents.h"

#include <QByteArrayView>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace ravlin {

/// A track of a disc's record. Titles and artists are on one line.
struct DiscTrack
{
    QString artist; ///< of this track, on discs of several artists; else empty: it is the disc's
    QString title;
    QString extendedData; ///< further remarks; may have several lines

    bool operator==(const DiscTrack &) const = default;
};

/// What a CD database knows of a disc.
struct DiscRecord
{
    QString artist;
    QString album;
    QString year;                     ///< four digits, or empty
    QString genre;                    ///< as the genre table spells it where it knows it, else free text; may be empty
    QString extendedData;             ///< further remarks; may have several lines
    std::vector<DiscTrack> tracks;    ///< in the order of the disc
    QStringList discIds;              ///< identifiers of the pressings that the record is for
    std::vector<qint64> frameOffsets; ///< of the tracks' starts, if the record tells them
    int seconds = 0;                  ///< of the whole disc with its lead-in; 0 if the record does not tell it

    const QString &artistOf(const DiscTrack &track) const { return track.artist.isEmpty() ? artist : track.artist; }
    bool operator==(const DiscRecord &) const = default;
};

/// Reads a record of the xmcd format as CD databases keep it (protocol levels 1 to 6): values of the same key are
/// pieces of one text, \n, \t and \\ are escapes, comments tell the offsets. Texts are UTF-8 or Latin-1, each for
/// itself. Year and genre are those of DYEAR and DGENRE or, in older records, of a "YEAR: 1998 ID3G: 17" among the
/// remarks. Nothing: there is no title in it, so it is no record.
std::optional<DiscRecord> parseXmcdRecord(QByteArrayView bytes);

/// The length of one of the record's tracks in frames, index from 0. Nothing where the record does not tell it. The end
/// of the last track is known to the second only.
std::optional<qint64> trackFrames(const DiscRecord &record, int index);

/// By how many frames each of the disc's tracks is longer than that of the record (negative: shorter); as many entries
/// as the disc has tracks. Nothing where the record has no such track or does not tell (trackFrames()).
std::vector<std::optional<qint64>> lengthDifferences(const DiscContents &disc, const DiscRecord &record);

} // namespace ravlin
