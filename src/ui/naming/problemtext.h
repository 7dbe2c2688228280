// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/namecheck.h"

namespace ravlin {

class Captions;

/// One sentence for the user about why a name can't be given.
QString problemText(const Captions &captions, platform::NameProblem problem);

} // namespace ravlin
