// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/error.h"

#include <cerrno>

/// Turns the system's error numbers into error values, and repeats calls that a signal interrupted.
namespace ravlin::platform {

/// The error for a system call on path that failed with an errno value.
tl::unexpected<Error> systemError(int number, const QString &path, const char *call);

/// Repeats the call until no signal interrupts it.
template <typename Call>
auto uninterrupted(Call call)
{
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

} // namespace ravlin::platform
