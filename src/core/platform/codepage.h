// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace ravlin::platform {

/// A text in the code page in which programs of this system take paths (Windows: ANSI); nothing when that has no
/// character for something in it. Where paths are bytes it is those bytes, whatever they are.
std::optional<QByteArray> toCodePage(const QString &text);

} // namespace ravlin::platform
