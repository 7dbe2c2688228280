// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/captiontable.h"

#include <QList>
#include <QString>
#include <QStringView>

#include <array>

/// The optional conversions of names and tag texts. Each is a pair of controls: a check box `op4` switches it on, a
/// list `ccase` chooses which.
namespace ravlin {

class Settings;

enum class ConversionKind
{
    Case,   ///< ConvertCase: upper, lower, first letters
    Replace ///< ExchangeSpaces: spaces by underscores, underscores by spaces
};

/// The state of one pair.
struct ConversionChoice
{
    static constexpr int InitialIndex = 1;

    bool on = false;
    int index = InitialIndex; ///< in the list, from 0

    friend bool operator==(const ConversionChoice &, const ConversionChoice &) = default;
};

/// One of the pairs, by the number of its controls.
struct ConversionPair
{
    int number = 0;
    ConversionKind kind = ConversionKind::Case;
    QStringView settingsKey; ///< empty for the pair that is not remembered
};

inline constexpr int RenameCasePair = 0;
inline constexpr int MultiCasePair = 1;
inline constexpr int SingleCasePair = 2;
inline constexpr int RenameReplacePair = 3;
inline constexpr int MultiReplacePair = 4;

/// All pairs, each at the index of its number.
extern const std::array<ConversionPair, 5> ConversionPairs;

/// Number of entries in a list of that kind.
int conversionCount(ConversionKind kind);
/// The transforms' mode for the entry at that index; -1 beyond the list.
int conversionMode(ConversionKind kind, int index);
/// The caption of the check box.
Caption conversionCaption(ConversionKind kind);
/// The captions of the list's entries, in list order.
QList<Caption> conversionEntryCaptions(ConversionKind kind);

/// The text after the conversion; unchanged while the choice is off.
QString applyConversion(ConversionKind kind, ConversionChoice choice, const QString &text);

/// The index in digits; empty for a choice that is off.
QString conversionToText(ConversionChoice choice);
/// The choice for such a text. A text that is empty or names no entry is off, with the initial entry.
ConversionChoice conversionFromText(ConversionKind kind, QStringView text);

/// A pair's choice from the settings. A pair without a key is as at the first start.
ConversionChoice restoreConversion(const Settings &settings, const ConversionPair &pair);
/// Settings::save() writes it to the file. Does nothing for a pair without a key.
void storeConversion(Settings &settings, const ConversionPair &pair, ConversionChoice choice);

} // namespace ravlin
