// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

namespace ravlin {

inline constexpr std::size_t NotAligned = std::numeric_limits<std::size_t>::max();

/// Finds the elements of a former list in a new one of mostly the same order. Returns for each new element its position
/// in the former list, ascending, or NotAligned. isSame(former, new) compares by position. Misses some elements if more
/// than a few went in one place or the order changed; gives up on the rest once more than mostNew are not found.
template <typename IsSame>
std::vector<std::size_t> alignedPositions(
    std::size_t formerCount, std::size_t newCount, IsSame isSame, std::size_t mostNew = NotAligned)
{
    constexpr std::size_t MostGoneInOnePlace = 8;
    std::vector<std::size_t> positions(newCount, NotAligned);
    std::size_t next = 0;
    std::size_t newOnes = 0;
    for (std::size_t i = 0; i < newCount && newOnes <= mostNew; ++i) {
        const std::size_t end = std::min(formerCount, next + MostGoneInOnePlace + 1);
        std::size_t found = next;
        while (found < end && !isSame(found, i))
            ++found;
        if (found < end) {
            positions[i] = found;
            next = found + 1;
        } else {
            ++newOnes;
        }
    }
    return positions;
}

} // namespace ravlin
