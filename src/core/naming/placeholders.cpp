// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/naming/placeholders.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace ravlin {

namespace {

/// Caption numbers of the fields' words.
enum Word
{
    GenreWord = 11,
    YearWord = 12,
    TrackWord = 13,
    CommentWord = 14,
    AlbumWord = 15,
    ArtistWord = 16,
    SkippedWord = 22,
    TitleWord = 54,
    FileWord = 55
};

constexpr std::array<Placeholder, 8> RenameTable{{
    {u'1', &TagRecord::Artist, ArtistWord, 0},
    {u'2', &TagRecord::Album, AlbumWord, 1},
    {u'3', &TagRecord::Title, TitleWord, 2},
    {u'4', &TagRecord::Track, TrackWord, 3},
    {u'5', &TagRecord::Year, YearWord, 4},
    {u'6', nullptr, FileWord, 5},
    {u'7', &TagRecord::Genre, GenreWord, 6},
    {u'8', &TagRecord::Comment, CommentWord, 7},
}};

constexpr std::array<Placeholder, 8> ExtractionTable{{
    {u'1', &TagRecord::Artist, ArtistWord, 9},
    {u'2', &TagRecord::Album, AlbumWord, 10},
    {u'4', &TagRecord::Track, TrackWord, 11},
    {u'5', &TagRecord::Year, YearWord, 12},
    {u'0', nullptr, SkippedWord, 13},
    {u'6', &TagRecord::Genre, GenreWord, 14},
    {u'7', &TagRecord::Comment, CommentWord, 15},
    {u'3', &TagRecord::Title, TitleWord, 17},
}};

constexpr std::array<Placeholder, 4> FolderTable{{
    {u'1', &TagRecord::Artist, ArtistWord, 0},
    {u'2', &TagRecord::Album, AlbumWord, 1},
    {u'3', &TagRecord::Year, YearWord, 2},
    {u'4', &TagRecord::Genre, GenreWord, 3},
}};

} // namespace

std::span<const Placeholder> renamePlaceholders()
{
    return RenameTable;
}

std::span<const Placeholder> extractionPlaceholders()
{
    return ExtractionTable;
}

std::span<const Placeholder> folderPlaceholders()
{
    return FolderTable;
}

QString placeholderLabel(const Placeholder &placeholder, const QString &word)
{
    return placeholder.token() + u" - "_s + word;
}

QString TagRecord::*extractionField(char32_t digit)
{
    const auto *const found =
        std::ranges::find_if(ExtractionTable, [digit](const Placeholder &entry) { return entry.digit == digit; });
    return found == ExtractionTable.end() ? nullptr : found->field;
}

} // namespace ravlin
