// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

/// How a split panel divides its extent between two panels and the bar between them: pure functions over lengths in
/// twips, along the axis in which the bar moves. Halves round to the even neighbour. No function fails: senseless sizes
/// (negative ones, a bar thicker than the extent) still give spans within the extent.
namespace ravlin {

/// Twips to a logical pixel.
inline constexpr int TwipsPerPixel = 15;

constexpr int twipsFromPixels(int pixels)
{
    return pixels * TwipsPerPixel;
}

/// The nearest whole pixel.
constexpr int pixelsFromTwips(int twips)
{
    constexpr int Half = TwipsPerPixel / 2;
    return (twips < 0 ? twips - Half : twips + Half) / TwipsPerPixel;
}

/// Which panel is shut.
enum class SnappedPanel
{
    None = 0,
    First = 1, ///< the bar is at the start
    Second = 2 ///< the bar is at the end
};

struct SplitRule
{
    int minPanelSize = 2000; ///< least distance from either edge to the bar's centre while no panel is shut
    int splitterWidth = 75;  ///< thickness of the bar
    bool snapToEdge = false; ///< releasing the bar near an edge shuts that panel
};

struct SplitState
{
    int position = 3000; ///< centre of the bar
    SnappedPanel snapped = SnappedPanel::None;

    bool operator==(const SplitState &) const = default;
};

struct Span
{
    int begin = 0;
    int length = 0;

    constexpr int end() const { return begin + length; }
    bool operator==(const Span &) const = default;
};

struct SplitLayout
{
    int position = 0; ///< the state's, corrected to what the extent allows
    int lowest = 0;   ///< the least position that can be chosen, or the present one if that is less
    int highest = 0;  ///< the greatest one, or the present one if that is greater
    bool firstVisible = true;
    bool secondVisible = true;
    Span first;
    Span bar; ///< around the position, but never beyond the edges: a bar half outside is hard to grasp
    Span second;
};

/// Lays out a control of this extent.
SplitLayout layOutSplit(const SplitRule &rule, const SplitState &state, int extent);

/// Where the bar begins if its centre follows a pointer that is pointerOffset away from the bar's present beginning.
int draggedBarBegin(int barBegin, int pointerOffset, const SplitRule &rule, int extent);

/// The state after releasing the bar: the position is half a bar behind the pointer; with snapToEdge, a panel shuts if
/// that is less than a quarter of minPanelSize from its edge. layOutSplit() corrects the position.
SplitState releasedBar(int barBegin, int pointerOffset, const SplitRule &rule, int extent);

} // namespace ravlin
