// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>
#include <QString>

class QPalette;

namespace ravlin {

/// The drawing of that name (assets/icons) in all its sizes, in the palette's text colour, which suits light and dark
/// windows; grey if disabled. An unknown name gives an empty icon.
QIcon themedIcon(const QString &name, const QPalette &palette);

/// The program's own icon.
QIcon programIcon();

} // namespace ravlin
