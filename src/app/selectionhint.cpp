#include "app/selectionhint.h"

#include "app/idiomas.h"

namespace ravlin {

QString selectionHint(const Captions &captions, qsizetype selected, Text many)
{
    if (selected == 0)
        return captions.text(Text::HintNoFile);
    return selected > 1 ? captions.text(many).arg(selected) : QString();
}

} // namespace ravlin
