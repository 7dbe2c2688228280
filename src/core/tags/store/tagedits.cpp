// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/store/tagedits.h"

#include "core/tags/record/genres.h"

#include <algorithm>

namespace ravlin {

TagEdits TagEdits::between(const TagRecord &shown, const TagRecord &page)
{
    TagEdits edits;
    for (const TagField &field : TagFields) {
        if (shown.*field.member != page.*field.member)
            edits.set(field.member, page.*field.member);
    }
    return edits;
}

void TagEdits::set(Field field, QString text)
{
    const auto known = std::ranges::find(m_texts, field, &std::pair<Field, QString>::first);
    if (known != m_texts.end())
        known->second = std::move(text);
    else
        m_texts.emplace_back(field, std::move(text));
}

const QString *TagEdits::text(Field field) const
{
    const auto known = std::ranges::find(m_texts, field, &std::pair<Field, QString>::first);
    return known != m_texts.end() ? &known->second : nullptr;
}

TagRecord TagEdits::appliedTo(TagRecord record) const
{
    for (const auto &[field, text] : m_texts)
        record.*field = text;
    return record;
}

TagEdits TagEdits::storable() const
{
    TagEdits edits;
    std::ranges::copy_if(m_texts, std::back_inserter(edits.m_texts),
        [](const auto &edit) { return isStorable(edit.first, edit.second); });
    return edits;
}

bool isWritable(TagEdits::Field field, const QString &text)
{
    if (text.isEmpty())
        return true;
    if (field == &TagRecord::Year)
        return isWritableYear(text);
    if (field == &TagRecord::Track)
        return isWritableTrack(text);
    return field != &TagRecord::Genre || GenreNameToNumber(text) != GenreNone;
}

bool isStorable(TagEdits::Field field, const QString &text)
{
    return isWritable(field, text) || (field == &TagRecord::Genre && tableGenreNumber(text) != GenreNone);
}

std::optional<TagEdits::Field> fieldNotStorable(const TagEdits &edits, const TagRecord &present)
{
    for (const auto &[field, text] : edits.texts()) {
        if (!isStorable(field, text) && present.*field != text)
            return field;
    }
    return {};
}

} // namespace ravlin
