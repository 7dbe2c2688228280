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
    const Result<TagRecord> present = m_store.readForSaving(path);
    if (!present)
        return tl::unexpected(present.error());
    if (m_convert)
        convertPage();
    TagRecord record = m_page;
    record.HasV1 = present->HasV1;
    record.HasV2 = present->HasV2;
    return m_store.SaveTag(path, record);
}

} // namespace ravlin
