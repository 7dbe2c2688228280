// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/app/qttexts.h"

#include "core/app/idiomas.h"

#include <QCoreApplication>
#include <QLibraryInfo>

namespace ravlin {

namespace {

// The language of Qt's texts in its source.
constexpr QStringView OwnLanguage = u"en";

} // namespace

QtTexts::~QtTexts()
{
    if (m_translator && QCoreApplication::instance() != nullptr)
        QCoreApplication::removeTranslator(m_translator.get());
}

bool QtTexts::speak(QStringView languageName)
{
    const QString code = languageCodeFromName(languageName);
    if (code.isEmpty() || code == m_code)
        return !code.isEmpty();
    if (m_translator)
        QCoreApplication::removeTranslator(m_translator.get());
    m_translator.reset();
    m_code = OwnLanguage.toString();
    if (code == OwnLanguage)
        return true;
    auto translator = std::make_unique<QTranslator>();
    if (!translator->load(QStringLiteral("qtbase_") + code, QLibraryInfo::path(QLibraryInfo::TranslationsPath)) ||
        !QCoreApplication::installTranslator(translator.get()))
        return false;
    m_translator = std::move(translator);
    m_code = code;
    return true;
}

} // namespace ravlin
