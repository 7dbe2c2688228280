// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/naming/sessionchoices.h"

#include "core/app/settings.h"

namespace ravlin {

namespace {

int renameModeFromText(const QString &text)
{
    if (text.isEmpty())
        return SessionChoices::DefaultRenameMode;
    const bool isMode = text == QStringLiteral("1") || text == QStringLiteral("2") || text == QStringLiteral("3");
    return isMode ? text.toInt() : 0;
}

} // namespace

SessionChoices SessionChoices::restored(const Settings &settings)
{
    SessionChoices choices;
    choices.renameMode = renameModeFromText(settings.read(settingskey::Rename));
    choices.renamePattern = settings.read(settingskey::RenameVar);
    for (const ConversionPair &pair : ConversionPairs)
        choices.conversions[static_cast<size_t>(pair.number)] = restoreConversion(settings, pair);
    return choices;
}

void SessionChoices::store(Settings &settings) const
{
    settings.write(settingskey::Rename, renameMode == 0 ? QString() : QString::number(renameMode));
    settings.write(settingskey::RenameVar, renamePattern);
    for (const ConversionPair &pair : ConversionPairs)
        storeConversion(settings, pair, conversions[static_cast<size_t>(pair.number)]);
}

} // namespace ravlin
