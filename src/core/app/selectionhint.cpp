// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/app/selectionhint.h"

#include "core/app/idiomas.h"

namespace ravlin {

QString selectionHint(const Captions &captions, qsizetype selected, Text many)
{
    if (selected == 0)
        return captions.text(Text::HintNoFile);
    return selected > 1 ? captions.text(many).arg(selected) : QString();
}

} // namespace ravlin
