// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/store/tageditor.h"

#include "core/tags/record/genres.h"
#include "core/tags/store/tagstore.h"

#include <algorithm>

namespace ravlin {

QStringList genreListEntries()
{
    return QStringList(QString()) + genreNames();
}

int genreListIndex(const QString &genre)
{
    // Not found is -1, which leads to the empty entry.
    return static_cast<int>(genreNames().indexOf(genre)) + 1;
}

KeyVerdict digitKeyVerdict(QStringView typed)
{
    if (typed == u"\r" || typed == u"\n")
        return KeyVerdict::Swallow;
    const bool foreign = std::any_of(
        typed.begin(), typed.end(), [](QChar c) { return (c.isPrint() || c.isSurrogate()) && (c < u'0' || c > u'9'); });
    return foreign ? KeyVerdict::Beep : KeyVerdict::Pass;
}

PageSave::PageSave(TagStore &store, TagRecord page, Conversion convert)
    : m_store(store), m_page(std::move(page)), m_convert(std::move(convert))
{
}

void PageSave::convertPage()
{
    for (QString *text : {&m_page.Artist, &m_page.Album, &m_page.Title, &m_page.Comment})
        *text = m_convert(*text);
}

Result<void> PageSave::save(const QString &path)
{
    TagRecord record;
    if (Result<void> read = m_store.ReadTag(path, record); !read && read.error().code != ErrorCode::GenreOutOfRange)
        return read;
    if (m_convert)
        convertPage();
    const bool hasV1 = record.HasV1;
    const bool hasV2 = record.HasV2;
    record = m_page;
    record.HasV1 = hasV1;
    record.HasV2 = hasV2;
    return m_store.SaveTag(path, record);
}

} // namespace ravlin
