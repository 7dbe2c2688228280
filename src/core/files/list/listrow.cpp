// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/list/listrow.h"

#include <algorithm>
#include <cstring>

namespace ravlin {

namespace {

/// The memory begins with the number of texts. For each follows its size in characters, doubled, plus one if it is
/// wide.
using Count = quint32;

bool isWideText(QStringView text)
{
    return std::any_of(text.begin(), text.end(), [](QChar c) { return c.unicode() > 0xFF; });
}

qsizetype bytesFor(qsizetype size, bool isWide)
{
    return isWide ? size * qsizetype{sizeof(char16_t)} : size;
}

template <typename Number>
Number numberAt(const char *bytes)
{
    Number number = 0;
    std::memcpy(&number, bytes, sizeof number);
    return number;
}

} // namespace

PackedTexts::PackedTexts(std::initializer_list<QStringView> texts)
{
    const auto headSize = static_cast<qsizetype>(sizeof(Count)) * (static_cast<qsizetype>(texts.size()) + 1);
    qsizetype size = headSize;
    for (const QStringView text : texts)
        size += bytesFor(text.size(), isWideText(text));
    const auto memory = std::make_shared_for_overwrite<char[]>(static_cast<std::size_t>(size));

    const auto count = static_cast<Count>(texts.size());
    std::memcpy(memory.get(), &count, sizeof count);
    char *head = memory.get() + sizeof count;
    char *out = memory.get() + headSize;
    for (const QStringView text : texts) {
        const bool isWide = isWideText(text);
        const auto entry = static_cast<Count>(text.size() * 2 + (isWide ? 1 : 0));
        std::memcpy(head, &entry, sizeof entry);
        head += sizeof entry;
        const qsizetype bytes = bytesFor(text.size(), isWide);
        if (isWide)
            std::memcpy(out, text.utf16(), static_cast<std::size_t>(bytes));
        else
            std::transform(text.begin(), text.end(), out, [](QChar c) { return static_cast<char>(c.unicode()); });
        out += bytes;
    }
    m_memory = memory;
}

PackedTexts::Stretch PackedTexts::stretch(int position) const
{
    if (!m_memory)
        return {};
    const auto count = static_cast<int>(numberAt<Count>(m_memory.get()));
    if (position < 0 || position >= count)
        return {};
    const char *head = m_memory.get() + sizeof(Count);
    const char *bytes = head + static_cast<std::size_t>(count) * sizeof(Count);
    for (int i = 0;; ++i, head += sizeof(Count)) {
        const auto entry = numberAt<Count>(head);
        const Stretch found{bytes, static_cast<qsizetype>(entry / 2), (entry & 1) != 0};
        if (i == position)
            return found;
        bytes += bytesFor(found.size, found.isWide);
    }
}

QString PackedTexts::at(int position) const
{
    const Stretch found = stretch(position);
    if (found.size == 0)
        return {};
    if (!found.isWide)
        return QString::fromLatin1(found.bytes, found.size);
    QString text(found.size, Qt::Uninitialized);
    std::memcpy(text.data(), found.bytes, static_cast<std::size_t>(bytesFor(found.size, true)));
    return text;
}

bool PackedTexts::equals(int position, QStringView text) const
{
    const Stretch found = stretch(position);
    if (found.size != text.size())
        return false;
    if (found.isWide) // equal texts have the same width
        return std::memcmp(found.bytes, text.utf16(), static_cast<std::size_t>(bytesFor(found.size, true))) == 0;
    return text == QLatin1String(found.bytes, found.size);
}

ListedFile::ListedFile(QStringView name, const ListFields &tag)
    : m_texts{name, tag.title, tag.artist, tag.album, tag.year, tag.track}, m_hasV1(tag.hasV1), m_hasV2(tag.hasV2),
      m_isCut(tag.isCut)
{
}

ListFields ListedFile::tag() const
{
    return {title(), artist(), album(), year(), track(), m_hasV1, m_hasV2, m_isCut};
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
