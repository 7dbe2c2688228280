// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/update/checksumfile.h"

#include <QByteArrayList>

#include <algorithm>
#include <cctype>

namespace ravlin {

namespace {

constexpr qsizetype Digits = 64;

std::optional<QByteArray> fromDigits(QByteArrayView digits)
{
    const auto isDigit = [](char byte) { return std::isxdigit(static_cast<unsigned char>(byte)) != 0; };
    if (digits.size() != Digits || !std::all_of(digits.begin(), digits.end(), isDigit))
        return {};
    return QByteArray::fromHex(digits.toByteArray());
}

} // namespace

std::optional<QByteArray> checksumIn(QByteArrayView text, const QString &fileName)
{
    const QByteArray whole = text.toByteArray();
    if (const auto alone = fromDigits(whole.trimmed()))
        return alone;
    const QByteArray name = fileName.toUtf8();
    for (const QByteArray &line : whole.split('\n')) {
        const QByteArray trimmed = line.trimmed();
        const QByteArray rest = trimmed.mid(Digits);
        if (rest == "  " + name || rest == " *" + name)
            return fromDigits(QByteArrayView(trimmed).first(Digits));
    }
    return {};
}

} // namespace ravlin
