#include "files/listcolumns.h"

#include "naming/filename.h"
#include "platform/filesystem.h"

#include <algorithm>

namespace ravlin {

namespace {

constexpr double NarrowTrackShare = 0.07;
constexpr int WideTrackWidth = 600; ///< twips; what the share reaches in the narrowest wide list
constexpr int WideYearWidth = 800;  ///< with the track's, what wide lists keep back for fixed columns
constexpr int WideFixedWidth = WideTrackWidth + WideYearWidth;
constexpr int TagWidth = 750; ///< fits "id3v1" and the sorting arrow

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

bool hasLongName(QStringView rowText)
{
    return isLongName(rowText.mid(rowText.lastIndexOf(platform::Separator) + 1));
}

QString shownName(const QString &name)
{
    if (name.isValidUtf16())
        return name;
    QString shown = name;
    for (qsizetype i = 0; i < shown.size(); ++i) {
        if (shown[i].isHighSurrogate() && i + 1 < shown.size() && shown[i + 1].isLowSurrogate())
            ++i;
        else if (shown[i].isSurrogate())
            shown[i] = QChar::ReplacementCharacter;
    }
    return shown;
}

std::array<int, ListColumnCount> columnWidths(int listWidth)
{
    if (NarrowTrackShare * listWidth < WideTrackWidth) {
        return {share(0.3, listWidth), share(NarrowTrackShare, listWidth), share(0.208, listWidth),
            share(0.148, listWidth), share(0.17, listWidth), share(0.1, listWidth), TagWidth, TagWidth};
    }
    const int rest = listWidth - WideFixedWidth;
    return {share(0.35, rest), WideTrackWidth, share(0.25, rest), share(0.178, rest), share(0.21, rest), WideYearWidth,
        TagWidth, TagWidth};
}

int dropPosition(int y, int firstTop, int rowHeight, int rowCount)
{
    if (rowHeight <= 0)
        return rowCount;
    return std::clamp((y - firstTop + rowHeight / 2) / rowHeight, 0, rowCount);
}

} // namespace ravlin
