// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/list/listrow.h"

namespace ravlin {

ListedFile::ListedFile(QStringView name, const ListFields &tag)
    : m_texts{name, tag.title, tag.artist, tag.album, tag.year, tag.track}, m_hasV1(tag.hasV1), m_hasV2(tag.hasV2)
{
}

ListFields ListedFile::tag() const
{
    return {title(), artist(), album(), year(), track(), m_hasV1, m_hasV2};
}

QString ListRow::trackColumn() const
{
    const QString track = file.track();
    bool isNumber = false;
    const int number = track.toInt(&isNumber);
    return isNumber && number < 10 ? u'0' + track : track;
}

void ListRow::takeTags(const ListedFile &other)
{
    const QString name = file.name();
    file = other.isNamed(name) ? other : ListedFile(name, other.tag());
}

} // namespace ravlin
