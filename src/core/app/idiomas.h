// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/texttable.h"
#include "core/platform/error.h"

#include <QString>
#include <QStringView>

#include <array>

namespace ravlin {

class Settings;

/// The language's name ("spanish", "english", "french") for the code that the settings hold ("es", "en", "fr"); empty
/// for any other code.
QString languageNameFromCode(QStringView code);
/// The other way round; empty for any other name.
QString languageCodeFromName(QStringView name);

/// The interface texts in the current language.
///
/// Windows read their texts by number when they apply their captions, so a change of the language shows in a window as
/// soon as that window applies them again. Used by the interface thread alone.
class Captions
{
public:
    /// "english" at first.
    const QString &languageName() const { return m_languageName; }
    /// Takes effect with the next fill().
    void setLanguageName(const QString &name) { m_languageName = name; }

    /// Takes all texts from the current language. Under a name that is no language's, nothing changes; before the first
    /// fill all captions are empty.
    void fill();

    /// Sets the language that the settings ask for, English where they ask for none that exists, and fills.
    void chooseAtStart(const Settings &settings);

    /// Empty for a number that the table does not have. An ampersand marks the accelerator key.
    QString text(Caption caption) const;
    /// A text beyond the captions; in English before the first fill.
    QString text(Text text) const;
    /// One sentence for the user about what went wrong.
    QString errorText(ErrorCode code) const;

private:
    using Column = QStringView LanguageTexts::*;

    static Column columnOf(QStringView languageName);

    QString m_languageName = QStringLiteral("english");
    Column m_column = &LanguageTexts::english; ///< of the last fill
    std::array<QString, CaptionCount> m_captions;
};

} // namespace ravlin
