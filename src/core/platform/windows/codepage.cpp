// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/codepage.h"

#include <string>

#include <windows.h>

namespace ravlin::platform {

std::optional<QByteArray> toCodePage(const QString &text)
{
    if (text.isEmpty())
        return QByteArray();
    const std::wstring wide = text.toStdWString();
    const int length = static_cast<int>(wide.size());
    // A system that is set to UTF-8 has other rules: any character fits, and the call must not be asked about it.
    const bool isUtf8 = ::GetACP() == CP_UTF8;
    const DWORD flags = isUtf8 ? WC_ERR_INVALID_CHARS : WC_NO_BEST_FIT_CHARS;
    BOOL isReplaced = FALSE;
    BOOL *const replaced = isUtf8 ? nullptr : &isReplaced;
    const int size = ::WideCharToMultiByte(CP_ACP, flags, wide.data(), length, nullptr, 0, nullptr, replaced);
    if (size <= 0 || isReplaced != FALSE)
        return std::nullopt;
    QByteArray bytes(size, Qt::Uninitialized);
    const int written =
        ::WideCharToMultiByte(CP_ACP, flags, wide.data(), length, bytes.data(), size, nullptr, replaced);
    if (written != size || isReplaced != FALSE)
        return std::nullopt;
    return bytes;
}

} // namespace ravlin::platform
