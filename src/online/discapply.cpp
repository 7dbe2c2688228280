#include "online/discapply.h"

namespace ravlin {

void applyDisc(TagRecord &record, const DiscFields &disc, const DiscRow &row)
{
    record.Track = row.track;
    record.Title = row.title;
    record.Artist = disc.artist;
    record.Album = disc.album;
    if (!disc.year.isEmpty())
        record.Year = disc.year;
    if (!disc.genre.isEmpty())
        record.Genre = disc.genre;
}

} // namespace ravlin
