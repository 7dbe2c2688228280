// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringView>
#include <QTranslator>

#include <memory>

namespace ravlin {

/// Shows Qt's own texts (yes, no, the folder dialog, a text box's menu) in the interface's language, by Qt's
/// translations. Qt notifies every window of the change. On a system without the translations Qt's texts are English.
/// Needs the application object, but may outlive it; used by the interface thread.
class QtTexts
{
    Q_DISABLE_COPY_MOVE(QtTexts)

public:
    QtTexts() = default;
    ~QtTexts();

    /// The language's name is "spanish", "english" or "french"; any other changes nothing. Returns false if there are
    /// no translations into the language; Qt's texts are English then.
    bool speak(QStringView languageName);

private:
    std::unique_ptr<QTranslator> m_translator; ///< null: English
    QString m_code;                            ///< of the current language; empty at first
};

} // namespace ravlin
