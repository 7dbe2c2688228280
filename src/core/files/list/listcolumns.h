// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/list/listrow.h"

#include <array>
#include <bitset>

/// The columns of the file list.
namespace ravlin {

enum class ListColumn
{
    File,
    Track,
    Title,
    Artist,
    Album,
    Year,
    Id3v1,
    Id3v2
};
inline constexpr int ListColumnCount = 8;

/// A set of columns, by their position.
using ColumnSet = std::bitset<ListColumnCount>;
/// The columns that a text names ("track year"), with blanks between the names. Unknown names are passed over, and so
/// is "file": that column can't be hidden.
ColumnSet hiddenColumnsFromText(QStringView text);
/// The text for these columns. Names in the former text that are unknown here are kept, a later version may know them.
QString textOfHiddenColumns(ColumnSet hidden, QStringView formerText);

/// What a row shows in a column. The words for the tags' presence, "yes" and "no", are the same in every language.
QString columnText(const ListRow &row, ListColumn column);

/// Whether a row's file name, without the path before it, is a long one (see isLongName in core/naming/filename.h).
bool hasLongName(QStringView rowText);

/// A name as it can be shown: what is no valid Unicode in it becomes U+FFFD. Only for showing, never to find the file.
QString shownName(const QString &name);

/// The columns' widths for a list of that width, both in twips. The list's own width counts, with its frame and scroll
/// bar. In a list from about 8,571 twips on (that is where 0.07 of it reaches 600) the columns of track, year and tags
/// stay as they are and the others share the rest. What hidden columns leave goes to the columns of text, in
/// proportion; hidden columns have the width 0.
std::array<int, ListColumnCount> columnWidths(int listWidth, ColumnSet hidden = {});

} // namespace ravlin
