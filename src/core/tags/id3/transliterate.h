// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

namespace ravlin {

/// A text in Latin-1, at most maximumSize bytes, for fields that hold nothing else (ID3v1). What Latin-1 lacks is
/// written in similar letters (ő as o, Ж as Zh, … as ...) or, where there are none, as one '?' for each character that
/// a reader sees, never as nothing. Nothing is cut inside a character: what does not fit as a whole is left out.
QByteArray toLatin1Visibly(const QString &text, qsizetype maximumSize);

} // namespace ravlin
