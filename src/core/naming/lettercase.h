// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLocale>
#include <QString>

/// Upper and lower case by the rules of a language, the same on every system: Qt alone knows such rules only where it
/// is built with ICU, which it is not for Windows.
///
/// Beyond the mappings that hold for all languages these are the conditional ones of Unicode's SpecialCasing.txt (the
/// final sigma; i and its dot in Turkish, Azerbaijani and Lithuanian), and that capitals bear no accents in Greek and
/// have no ligature in Armenian, as the Unicode locale data (CLDR) has it.
namespace ravlin {

QString upperCase(const QString &text, const QLocale &locale);
QString lowerCase(const QString &text, const QLocale &locale);

} // namespace ravlin
