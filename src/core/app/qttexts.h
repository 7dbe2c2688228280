// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringView>
#include <QTranslator>

#include <memory>

namespace ravlin {

/// The texts that Qt itself brings (yes, no, the folder dialog, a text box's menu) in the language of the interface, by
/// Qt's own translations. Qt tells every window of the change. Where the system lacks them Qt's texts are English.
/// Needs the application object, which it outlives or not; used by the interface thread.
class QtTexts
{
    Q_DISABLE_COPY_MOVE(QtTexts)

public:
    QtTexts() = default;
    ~QtTexts();

    /// The language by its name: "spanish", "english" or "french". Any other name changes nothing. False where there
    /// are no translations into the language; Qt's texts are English then.
    bool speak(QStringView languageName);

private:
    std::unique_ptr<QTranslator> m_translator; ///< none: English
    QString m_code;                            ///< of the language that is spoken; empty before the first
};

} // namespace ravlin
