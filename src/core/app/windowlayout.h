// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/twips.h"

/// The main window's sizes, in pixels of 15 twips each where nothing else is said.
namespace ravlin::windowlayout {

inline constexpr int MinimumWidth = 6000 / TwipsPerPixel;
inline constexpr int SplitterStart = 3800; ///< twips: the bar's centre from the left at the first start

/// The width of the splitter, the menu frame and the toolbar in a window of that inner width.
constexpr int panesWidth(int innerWidth)
{
    return innerWidth - 200 / TwipsPerPixel;
}

/// The width of the tab strip.
constexpr int tabsWidth(int innerWidth)
{
    return innerWidth - 800 / TwipsPerPixel;
}

} // namespace ravlin::windowlayout
