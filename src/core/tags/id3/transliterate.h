// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

namespace ravlin {

/// A text in Latin-1, at most maximumSize bytes, for fields that hold nothing else (ID3v1). Characters that Latin-1
/// lacks are written in similar letters (ő as o, Ж as Zh, … as ...), or as one '?' for each character that a reader
/// sees, never as nothing. No character is cut: one that does not fit as a whole is left out.
QByteArray toLatin1Visibly(const QString &text, qsizetype maximumSize);

} // namespace ravlin
