// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/namecheck.h"

namespace ravlin {

class Captions;

/// A sentence for the user about why a name can't be used.
QString problemText(const Captions &captions, platform::NameProblem problem);

} // namespace ravlin
