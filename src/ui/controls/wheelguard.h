// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QComboBox;

namespace ravlin {

/// Keeps the mouse wheel from changing a drop-down list that merely lies under the pointer: only the list that has the
/// keyboard focus is turned, otherwise what is around it scrolls.
void guardAgainstWheel(QComboBox *list);

} // namespace ravlin
