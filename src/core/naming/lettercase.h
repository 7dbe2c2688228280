// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLocale>
#include <QString>

/// Upper and lower case by the rules of a language, the same on every system. Qt knows such rules only if built with
/// ICU, and on Windows it is not.
///
/// On top of the mappings that hold for all languages: the conditional ones of Unicode's SpecialCasing.txt (the final
/// sigma; i and its dot in Turkish, Azerbaijani and Lithuanian), no accents on capitals in Greek, and no ligature of
/// capitals in Armenian, as in the Unicode locale data (CLDR).
namespace ravlin {

QString upperCase(const QString &text, const QLocale &locale);
QString lowerCase(const QString &text, const QLocale &locale);

} // namespace ravlin
