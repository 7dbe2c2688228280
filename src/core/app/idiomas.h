// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/texttable.h"
#include "core/platform/error.h"

#include <QLocale>
#include <QString>
#include <QStringView>

#include <array>

namespace ravlin {

class Settings;

/// The language's name ("spanish", "english", "french") for the code in the settings ("es", "en", "fr"); empty for any
/// other code.
QString languageNameFromCode(QStringView code);
/// The other way round; empty for any other name.
QString languageCodeFromName(QStringView name);

/// The user guide's page in the language of that name, else in English. Looks where an installation puts the guide: in
/// "guide" inside the program's folder, then in "share/doc/ravlin/guide" beside it. Returns an empty text if there is
/// none, since a system may leave documentation out.
QString guidePage(const QString &programFolder, QStringView languageName);

/// The interface texts in the current language.
///
/// Windows read their texts when they apply their captions, so a new language shows in a window as soon as it applies
/// them again. Used by the interface thread alone.
class Captions
{
public:
    /// "english" at first.
    const QString &languageName() const { return m_languageName; }
    /// Takes effect with the next fill().
    void setLanguageName(const QString &name) { m_languageName = name; }

    /// Takes all texts from the current language. An unknown language name changes nothing. Before the first fill all
    /// captions are empty.
    void fill();

    /// Sets the language stored in the settings, English if they hold none or an unknown one, and fills.
    void chooseAtStart(const Settings &settings);

    /// The locale whose rules sort texts: the system's if it speaks the current language, else the language's own.
    QLocale locale() const;

    /// Empty for a number that the table lacks. An ampersand marks the accelerator key.
    QString text(Caption caption) const;
    /// A text beyond the captions; in English before the first fill.
    QString text(Text text) const;
    /// A colon, semicolon or question mark between texts, with the no-break space that French sets before it.
    QString mark(QChar mark) const;
    /// One sentence for the user about what went wrong.
    QString errorText(ErrorCode code) const;

private:
    using Column = QStringView LanguageTexts::*;

    static Column columnOf(QStringView languageName);

    QString m_languageName = QStringLiteral("english");
    Column m_column = &LanguageTexts::english; ///< of the last fill
    std::array<QString, CaptionCount> m_captions;
};

/// The hint beside a page's button: that no file is selected, or the text many with the number of the selected files.
/// Empty for a single file.
QString selectionHint(const Captions &captions, qsizetype selected, Text many);

} // namespace ravlin
