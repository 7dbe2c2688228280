// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/controls/splitlayout.h"

#include <algorithm>
#include <limits>

namespace ravlin {

namespace {

/// Stored lengths may come from anywhere, so their sums may leave the range of int.
int saturated(qint64 value)
{
    return int(std::clamp<qint64>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

/// Half of a length, rounded to the even neighbour.
int halved(qint64 twice)
{
    const qint64 below = twice >> 1;
    const bool between = (twice & 1) != 0;
    return saturated(between && (below & 1) != 0 ? below + 1 : below);
}

int withoutHalfABar(qint64 end, const SplitRule &rule)
{
    return halved(2 * end - rule.splitterWidth);
}

bool hasRoomForTwo(const SplitRule &rule, int extent)
{
    return extent >= 2 * qint64(rule.minPanelSize);
}

int correctedPosition(const SplitRule &rule, const SplitState &state, int extent)
{
    if (!hasRoomForTwo(rule, extent)) {
        switch (state.snapped) {
        case SnappedPanel::First:
            return 0;
        case SnappedPanel::Second:
            return withoutHalfABar(extent, rule);
        case SnappedPanel::None:
            break;
        }
        return halved(extent);
    }
    if (state.position < rule.minPanelSize)
        return state.snapped == SnappedPanel::First ? 0 : rule.minPanelSize;
    const int greatest = saturated(qint64(extent) - rule.minPanelSize);
    if (state.position > greatest)
        return state.snapped == SnappedPanel::Second ? withoutHalfABar(extent, rule) : greatest;
    return state.position;
}

/// The bar's beginning, moved in from beyond the edges.
int within(int barBegin, int thickness, int extent)
{
    return std::clamp(barBegin, 0, extent - thickness);
}

int thicknessIn(const SplitRule &rule, int extent)
{
    return std::clamp(rule.splitterWidth, 0, extent);
}

} // namespace

SplitLayout layOutSplit(const SplitRule &rule, const SplitState &state, int extent)
{
    extent = std::max(extent, 0);
    SplitLayout layout;
    layout.position = correctedPosition(rule, state, extent);
    layout.firstVisible = state.snapped != SnappedPanel::First;
    layout.secondVisible = state.snapped != SnappedPanel::Second;

    const bool movable = hasRoomForTwo(rule, extent);
    layout.lowest = movable ? std::min(rule.minPanelSize, layout.position) : layout.position;
    layout.highest =
        movable ? std::max(saturated(qint64(extent) - rule.minPanelSize), layout.position) : layout.position;

    const int thickness = thicknessIn(rule, extent);
    layout.bar = {within(withoutHalfABar(layout.position, rule), thickness, extent), thickness};
    layout.first = {0, layout.bar.begin};
    layout.second = {layout.bar.end(), extent - layout.bar.end()};
    return layout;
}

int draggedBarBegin(int barBegin, int pointerOffset, const SplitRule &rule, int extent)
{
    extent = std::max(extent, 0);
    return within(withoutHalfABar(qint64(barBegin) + pointerOffset, rule), thicknessIn(rule, extent), extent);
}

SplitState releasedBar(int barBegin, int pointerOffset, const SplitRule &rule, int extent)
{
    const int position = halved(2 * (qint64(barBegin) + pointerOffset) + rule.splitterWidth);
    const int nearEdge = rule.minPanelSize / 4;
    if (rule.snapToEdge && position < nearEdge)
        return {0, SnappedPanel::First};
    if (rule.snapToEdge && position > qint64(extent) - nearEdge)
        return {withoutHalfABar(extent, rule), SnappedPanel::Second};
    return {position, SnappedPanel::None};
}

} // namespace ravlin
