// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/codepage.h"

#include "core/platform/filesystem.h"

namespace ravlin::platform {

std::optional<QByteArray> toCodePage(const QString &text)
{
    return encodePath(text);
}

} // namespace ravlin::platform
