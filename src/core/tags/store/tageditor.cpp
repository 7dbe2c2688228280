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

PageSave::PageSave(TagStore &store, EditedPage page, Conversion convert)
    : m_store(store), m_page(std::move(page)), m_convert(std::move(convert))
{
}

TagEdits PageSave::edits(const TagRecord &present)
{
    const bool isWhole = !m_store.savesOnlyEdited();
    TagEdits edits;
    if (isWhole) {
        for (const TagField &field : TagFields)
            edits.set(field.member, m_page.texts.*field.member);
    } else {
        edits = TagEdits::between(m_page.shown, m_page.texts);
    }
    for (const TagEdits::Field field :
        {&TagRecord::Artist, &TagRecord::Album, &TagRecord::Title, &TagRecord::Comment}) {
        if (!m_convert)
            break;
        const QString *typed = edits.text(field);
        const QString converted = m_convert(typed ? *typed : present.*field);
        if (typed || converted != present.*field)
            edits.set(field, converted);
        if (isWhole)
            m_page.texts.*field = converted;
    }
    return edits;
}

Result<void> PageSave::save(const QString &path)
{
    const auto seen = path == m_page.path ? std::optional(m_page.state) : std::nullopt;
    return m_store
        .save(
            path, [this](const TagRecord &present) { return edits(present); }, seen)
        .map([](const TagRecord &) {});
}

} // namespace ravlin
