// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringView>

#include <array>

namespace ravlin {

/// One interface text in the three languages.
struct LanguageTexts
{
    QStringView english;
    QStringView spanish;
    QStringView french;
};

inline constexpr int CaptionCount = 91;

/// The captions 1 to 91 at the indices 0 to 90. Read them through Captions.
extern const std::array<LanguageTexts, CaptionCount> CaptionTable;

} // namespace ravlin
