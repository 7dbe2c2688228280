// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/list/listcolumns.h"

#include "core/app/showntext.h"
#include "core/naming/filename.h"
#include "core/platform/filesystem.h"

#include <QStringList>

#include <algorithm>

namespace ravlin {

namespace {

constexpr double NarrowTrackShare = 0.07;
constexpr int WideTrackWidth = 600; ///< twips; equals the share in the narrowest wide list
constexpr int WideYearWidth = 800;  ///< with the track's, what wide lists reserve for fixed columns
constexpr int WideFixedWidth = WideTrackWidth + WideYearWidth;
constexpr int TagWidth = 750; ///< fits "id3v1" and the sort arrow

constexpr std::array TextColumns{ListColumn::File, ListColumn::Title, ListColumn::Artist, ListColumn::Album};
constexpr std::array<QStringView, ListColumnCount> ColumnNames{
    u"file", u"track", u"title", u"artist", u"album", u"year", u"id3v1", u"id3v2"};

QStringList words(QStringView text)
{
    return text.toString().simplified().split(u' ', Qt::SkipEmptyParts);
}

int share(double part, int whole)
{
    return static_cast<int>(part * whole);
}

} // namespace

QString columnText(const ListRow &row, ListColumn column)
{
    const auto word = [](bool has) { return has ? QStringLiteral("yes") : QStringLiteral("no"); };
    switch (column) {
    case ListColumn::File:
        return row.text();
    case ListColumn::Track:
        return row.trackColumn();
    case ListColumn::Title:
        return row.file.title();
    case ListColumn::Artist:
        return row.file.artist();
    case ListColumn::Album:
        return row.file.album();
    case ListColumn::Year:
        return row.file.year();
    case ListColumn::Id3v1:
        return word(row.file.hasV1());
    case ListColumn::Id3v2:
        return word(row.file.hasV2());
    }
    return {};
}

ColumnSet hiddenColumnsFromText(QStringView text)
{
    const QStringList names = words(text);
    ColumnSet hidden;
    for (std::size_t column = 1; column < ColumnNames.size(); ++column)
        hidden[column] = names.contains(ColumnNames[column]);
    return hidden;
}

QString textOfHiddenColumns(ColumnSet hidden, QStringView formerText)
{
    QStringList names;
    for (std::size_t column = 1; column < ColumnNames.size(); ++column) {
        if (hidden[column])
            names += ColumnNames[column].toString();
    }
    for (const QString &name : words(formerText)) {
        if (std::ranges::find(ColumnNames, name) == ColumnNames.end())
            names += name;
    }
    return names.join(u' ');
}

bool hasLongName(QStringView rowText)
{
    return isLongName(rowText.sliced(platform::nameStart(rowText)));
}

QString shownName(const QString &name)
{
    return shownLine(name);
}

namespace {

std::array<int, ListColumnCount> widthsOfAllColumns(int listWidth)
{
    if (NarrowTrackShare * listWidth < WideTrackWidth) {
        return {share(0.3, listWidth), share(NarrowTrackShare, listWidth), share(0.208, listWidth),
            share(0.148, listWidth), share(0.17, listWidth), share(0.1, listWidth), TagWidth, TagWidth};
    }
    const int rest = listWidth - WideFixedWidth;
    return {share(0.35, rest), WideTrackWidth, share(0.25, rest), share(0.178, rest), share(0.21, rest), WideYearWidth,
        TagWidth, TagWidth};
}

} // namespace

std::array<int, ListColumnCount> columnWidths(int listWidth, ColumnSet hidden)
{
    std::array<int, ListColumnCount> widths = widthsOfAllColumns(listWidth);
    if (hidden.none())
        return widths;
    // The two tag columns lie beyond the list's edge and leave no room.
    int left = 0;
    for (std::size_t column = 0; column < widths.size(); ++column) {
        if (hidden[column] && column < static_cast<std::size_t>(ListColumn::Id3v1))
            left += widths[column];
        if (hidden[column])
            widths[column] = 0;
    }
    int textWidth = 0;
    for (const ListColumn column : TextColumns)
        textWidth += widths[static_cast<std::size_t>(column)];
    for (const ListColumn column : TextColumns) {
        int &width = widths[static_cast<std::size_t>(column)];
        if (textWidth > 0)
            width += static_cast<int>(static_cast<qint64>(left) * width / textWidth);
    }
    return widths;
}

} // namespace ravlin
