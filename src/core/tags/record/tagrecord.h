// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <algorithm>
#include <array>
#include <functional>

namespace ravlin {

/// The tag of the current file, as the editors, the renaming and the file list see it.
///
/// A read fills all of it, a write takes it as it is. An empty text: the file has no such value, or shall have none.
struct TagRecord
{
    QString Title;   ///< song title
    QString Artist;  ///< lead artist
    QString Album;   ///< album
    QString Year;    ///< year; only a value of exactly four digits is written
    QString Comment; ///< the comment without a description, else the first that no program keeps for itself
    /// Track number without the total; a stored 0 reads as empty. Only one or two digits are written.
    QString Track;
    /// The name from the genre table, or the free text of the ID3v2 content type if that names no genre of the table.
    /// Only names that GenreNameToNumber knows are written.
    QString Genre;
    bool HasV1 = false;      ///< the file has an ID3v1 tag; a write ignores it
    bool HasV2 = false;      ///< the file has an ID3v2 tag; a write ignores it
    bool HasPicture = false; ///< the ID3v2 tag has a picture; a write ignores it

    friend bool operator==(const TagRecord &, const TagRecord &) = default;
};

/// A field that people edit, and its name where it is not translated.
struct TagField
{
    QString TagRecord::*member = nullptr;
    QStringView name;
};

inline constexpr std::array TagFields{TagField{&TagRecord::Title, u"title"}, TagField{&TagRecord::Artist, u"artist"},
    TagField{&TagRecord::Album, u"album"}, TagField{&TagRecord::Year, u"year"}, TagField{&TagRecord::Track, u"track"},
    TagField{&TagRecord::Genre, u"genre"}, TagField{&TagRecord::Comment, u"comment"}};

/// A batch calls this after each file that it wrote, on the thread that it runs on.
using RecordSaved = std::function<void(const QString &path, const TagRecord &record)>;

/// Whether a text is this many digits, 0 to 9.
inline bool isDigits(const QString &text, qsizetype count)
{
    return text.size() == count && std::ranges::all_of(text, [](QChar c) { return c >= u'0' && c <= u'9'; });
}

/// Whether a year is written: exactly four digits. Any other text removes the file's year.
inline bool isWritableYear(const QString &text)
{
    return isDigits(text, 4);
}

/// Whether a track is written: one or two digits. Any other text removes the file's track.
inline bool isWritableTrack(const QString &text)
{
    return isDigits(text, 1) || isDigits(text, 2);
}

} // namespace ravlin
