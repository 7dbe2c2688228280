// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/textorder.h"

#include <QtEndian>

#include <windows.h>

namespace ravlin::platform {
namespace {

/// Bytes that compare like the text's UTF-16.
QByteArray plainKey(const QString &text)
{
    QByteArray key(text.size() * qsizetype(sizeof(char16_t)), Qt::Uninitialized);
    qToBigEndian<char16_t>(text.utf16(), text.size(), key.data());
    return key;
}

} // namespace

TextOrder::TextOrder(const QLocale &locale) : m_collator(locale) {}

TextKey TextOrder::keyOf(const QString &text) const
{
    if (text.isEmpty())
        return {};
    const QString folded = text.toCaseFolded();
    if (m_collator.locale().language() == QLocale::C)
        return plainKey(folded);
    const std::wstring name = m_collator.locale().bcp47Name().toStdWString();
    const std::wstring wide = folded.toStdWString();
    const auto map = [&](QByteArray &key) {
        // For sort keys both sizes are in bytes.
        return ::LCMapStringEx(name.c_str(), LCMAP_SORTKEY | NORM_IGNORECASE, wide.data(), int(wide.size()),
            reinterpret_cast<wchar_t *>(key.data()), int(key.size()), nullptr, nullptr, 0);
    };
    QByteArray key;
    key.resize(map(key));
    return !key.isEmpty() && map(key) == key.size() ? key : plainKey(folded);
}

} // namespace ravlin::platform
