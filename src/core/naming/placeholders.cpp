// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/naming/placeholders.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace ravlin {

namespace {

constexpr std::array<Placeholder, 8> RenameTable{{
    {u'1', &TagRecord::Artist, Caption::Artist, 0},
    {u'2', &TagRecord::Album, Caption::Album, 1},
    {u'3', &TagRecord::Title, Caption::Title, 2},
    {u'4', &TagRecord::Track, Caption::Track, 3},
    {u'5', &TagRecord::Year, Caption::Year, 4},
    {u'6', nullptr, Caption::File, 5},
    {u'7', &TagRecord::Genre, Caption::Genre, 6},
    {u'8', &TagRecord::Comment, Caption::Comment, 7},
}};

constexpr std::array<Placeholder, 8> ExtractionTable{{
    {u'1', &TagRecord::Artist, Caption::Artist, 9},
    {u'2', &TagRecord::Album, Caption::Album, 10},
    {u'4', &TagRecord::Track, Caption::Track, 11},
    {u'5', &TagRecord::Year, Caption::Year, 12},
    {u'0', nullptr, Caption::SkippedField, 13},
    {u'6', &TagRecord::Genre, Caption::Genre, 14},
    {u'7', &TagRecord::Comment, Caption::Comment, 15},
    {u'3', &TagRecord::Title, Caption::Title, 17},
}};

constexpr std::array<Placeholder, 4> FolderTable{{
    {u'1', &TagRecord::Artist, Caption::Artist, 0},
    {u'2', &TagRecord::Album, Caption::Album, 1},
    {u'3', &TagRecord::Year, Caption::Year, 2},
    {u'4', &TagRecord::Genre, Caption::Genre, 3},
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
