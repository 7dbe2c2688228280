// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace ravlin {

/// Where the first two separators ";;" of an update descriptor begin, double quotes not counted; -1 for one that is not
/// there.
struct DescriptorSeparators
{
    qsizetype first = -1;
    qsizetype second = -1;

    static DescriptorSeparators of(const QString &descriptor);
};

} // namespace ravlin
