// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/update/updatedescriptor.h"

namespace ravlin {

DescriptorSeparators DescriptorSeparators::of(const QString &descriptor)
{
    const QString separator = QStringLiteral(";;");
    const QString text = QString(descriptor).remove(u'"');
    DescriptorSeparators found;
    found.first = text.indexOf(separator);
    if (found.first >= 0)
        found.second = text.indexOf(separator, found.first + separator.size());
    return found;
}

} // namespace ravlin
