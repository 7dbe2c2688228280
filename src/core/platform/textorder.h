// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCollator>
#include <QLocale>
#include <QString>

#include <optional>

namespace ravlin::platform {

#ifdef _WIN32
// On Windows Qt compares the bytes of the system's keys in pairs, each the wrong way round, and reads beyond their end.
using TextKey = QByteArray;
#else
using TextKey = std::optional<QCollatorSortKey>;
#endif

/// Makes keys that compare with < in the order of a locale, ignoring case. Texts that differ in case alone have equal
/// keys; the empty text's key comes before all others.
///
/// An object belongs to one thread; keys from several objects for one locale may be compared.
class TextOrder
{
public:
    explicit TextOrder(const QLocale &locale);

    TextKey keyOf(const QString &text) const;

private:
    QCollator m_collator;
};

} // namespace ravlin::platform
