// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/error.h"

#include <cerrno>

/// From the system's error numbers to error values, and calling again what a signal interrupted.
namespace ravlin::platform {

/// The error for a system call that failed with the number (an errno value) on path.
tl::unexpected<Error> systemError(int number, const QString &path, const char *call);

/// Calls until the result is something else than "interrupted by a signal".
template <typename Call>
auto uninterrupted(Call call)
{
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

} // namespace ravlin::platform
