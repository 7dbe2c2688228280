// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/naming/conversion.h"

#include "core/app/settings.h"
#include "core/naming/texttransforms.h"

#include <span>

namespace ravlin {

namespace {

struct Entry
{
    int mode;
    Caption caption;
};

constexpr std::array<Entry, 3> CaseEntries{
    {{CaseUpper, Caption::CaseUpper}, {CaseLower, Caption::CaseLower}, {CaseCapitalize, Caption::CaseCapitalize}}};
constexpr std::array<Entry, 2> ReplaceEntries{
    {{SpacesToUnderscores, Caption::ReplaceSpaces}, {UnderscoresToSpaces, Caption::ReplaceUnderscores}}};

std::span<const Entry> entriesOf(ConversionKind kind)
{
    if (kind == ConversionKind::Case)
        return CaseEntries;
    return ReplaceEntries;
}

} // namespace

const std::array<ConversionPair, 5> ConversionPairs{{
    {RenameCasePair, ConversionKind::Case, settingskey::RenameCase},
    {MultiCasePair, ConversionKind::Case, settingskey::MultiCase},
    {SingleCasePair, ConversionKind::Case, {}},
    {RenameReplacePair, ConversionKind::Replace, settingskey::RenameReplace},
    {MultiReplacePair, ConversionKind::Replace, settingskey::MultiReplace},
}};

int conversionCount(ConversionKind kind)
{
    return static_cast<int>(entriesOf(kind).size());
}

int conversionMode(ConversionKind kind, int index)
{
    return index >= 0 && index < conversionCount(kind) ? entriesOf(kind)[static_cast<std::size_t>(index)].mode : -1;
}

Caption conversionCaption(ConversionKind kind)
{
    return kind == ConversionKind::Case ? Caption::ConvertCase : Caption::ConvertReplace;
}

QList<Caption> conversionEntryCaptions(ConversionKind kind)
{
    QList<Caption> captions;
    for (const Entry &entry : entriesOf(kind))
        captions.append(entry.caption);
    return captions;
}

QString applyConversion(ConversionKind kind, ConversionChoice choice, const QString &text)
{
    if (!choice.on)
        return text;
    const int mode = conversionMode(kind, choice.index);
    return kind == ConversionKind::Case ? ConvertCase(text, mode) : ExchangeSpaces(text, mode);
}

QString conversionToText(ConversionChoice choice)
{
    return choice.on ? QString::number(choice.index) : QString();
}

ConversionChoice conversionFromText(ConversionKind kind, QStringView text)
{
    for (int index = 0; index < conversionCount(kind); ++index) {
        if (text == QString::number(index))
            return {true, index};
    }
    return {};
}

ConversionChoice restoreConversion(const Settings &settings, const ConversionPair &pair)
{
    if (pair.settingsKey.isEmpty())
        return {};
    return conversionFromText(pair.kind, settings.read(pair.settingsKey));
}

void storeConversion(Settings &settings, const ConversionPair &pair, ConversionChoice choice)
{
    if (!pair.settingsKey.isEmpty())
        settings.write(pair.settingsKey, conversionToText(choice));
}

} // namespace ravlin
