// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>
#include <QString>

class QPalette;

namespace ravlin {

/// The drawing of that name (assets/icons) in all its sizes, in the palette's text colour, so that it is seen on light
/// and dark windows; greyed where it is disabled. An unknown name gives an empty icon.
QIcon themedIcon(const QString &name, const QPalette &palette);

/// The program's own icon.
QIcon programIcon();

} // namespace ravlin
