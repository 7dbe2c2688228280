// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>

namespace ravlin {

/// The SHA-256 that a text says a file has, 32 bytes: either nothing but its 64 hexadecimal digits, or lines of the
/// form that sha256sum writes ("DIGITS  NAME" or "DIGITS *NAME"), of which the one with that name counts. None where
/// the text is anything else.
std::optional<QByteArray> checksumIn(QByteArrayView text, const QString &fileName);

} // namespace ravlin
