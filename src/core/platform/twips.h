// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace ravlin {

/// Lengths of the window's layout are told in twips; so many make a logical pixel.
inline constexpr int TwipsPerPixel = 15;

} // namespace ravlin
