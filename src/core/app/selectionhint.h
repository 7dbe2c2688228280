// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace ravlin {

class Captions;
enum class Text;

/// What stands beside a page's button: that no file is selected or, of several ones, the text many with their number in
/// it. Nothing for a single file, whose work needs no hint.
QString selectionHint(const Captions &captions, qsizetype selected, Text many);

} // namespace ravlin
