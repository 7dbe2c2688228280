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
/// Reads names of columns separated by blanks ("track year"). Ignores unknown names and "file", which can't be hidden.
ColumnSet hiddenColumnsFromText(QStringView text);
/// The text for these columns. Keeps unknown names of the former text: a later version may know them.
QString textOfHiddenColumns(ColumnSet hidden, QStringView formerText);

/// What a row shows in a column. Whether a tag is there is "yes" or "no" in every language.
QString columnText(const ListRow &row, ListColumn column);

/// Whether a row's file name, without the path before it, is a long one (see isLongName in core/naming/filename.h).
bool hasLongName(QStringView rowText);

/// A name or path as it is shown, see shownLine(). Never finds its file by it.
QString shownName(const QString &name);

/// The columns' widths for a list of that width, frame and scroll bar included, both in twips. From about 8,571 twips
/// on, where 0.07 of the width reaches 600, the columns of track, year and tags have fixed widths and the others share
/// the rest. The room of hidden columns, whose width is 0, goes to the columns of text in proportion.
std::array<int, ListColumnCount> columnWidths(int listWidth, ColumnSet hidden = {});

} // namespace ravlin
