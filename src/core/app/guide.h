// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringView>

namespace ravlin {

/// The user guide's page to open: the one in the language of that name ("spanish", "english", "french"), else the
/// English one. It is looked for from the program's folder, where an installation puts it: in "guide" beside the
/// program, or in "share/doc/ravlin/guide" beside the program's folder. Empty where there is none: a system may leave
/// documentation out.
QString guidePage(const QString &programFolder, QStringView languageName);

} // namespace ravlin
