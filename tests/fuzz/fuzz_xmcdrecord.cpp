// SPDX-License-Identifier: GPL-3.0-or-later
// A record of a CD database may be any bytes: parsing it ends, and the result can be shown and compared.
#include "core/online/cddb/xmcdrecord.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

using namespace ravlin;

namespace {

void require(bool condition)
{
    if (!condition)
        std::abort();
}

/// On one line, without surrounding spaces and control characters.
void requireLine(const QString &text)
{
    require(text == text.trimmed());
    require(std::none_of(
        text.begin(), text.end(), [](QChar character) { return character.category() == QChar::Other_Control; }));
}

void checkRecord(const DiscRecord &record)
{
    require(record.tracks.size() <= MaximumTracks && record.frameOffsets.size() <= MaximumTracks);
    require(record.year.isEmpty() || record.year.size() == 4);
    require(record.seconds >= 0);
    for (const QString &text : {record.artist, record.album, record.genre})
        requireLine(text);
    for (const DiscTrack &track : record.tracks) {
        requireLine(track.artist);
        requireLine(track.title);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArrayView bytes(data, qsizetype(size));
    const std::optional<DiscRecord> record = parseXmcdRecord(bytes);
    if (!record)
        return 0;
    checkRecord(*record);
    const Result<DiscContents> disc = DiscContents::parse(u"150 15000 30100 45225");
    require(lengthDifferences(*disc, *record).size() == 3);
    return 0;
}
