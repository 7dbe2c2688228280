// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/naming/problemtext.h"

#include "core/app/idiomas.h"

namespace ravlin {

QString problemText(const Captions &captions, platform::NameProblem problem)
{
    switch (problem) {
    case platform::NameProblem::Empty:
        return captions.text(Text::NameEmpty);
    case platform::NameProblem::Dots:
        return captions.text(Text::NameDots);
    case platform::NameProblem::Forbidden:
        return captions.text(Text::NameForbidden);
    case platform::NameProblem::Reserved:
        return captions.text(Text::NameReserved);
    case platform::NameProblem::TooLong:
        return captions.text(Text::NameTooLong);
    case platform::NameProblem::LeadsOutside:
        return captions.text(Text::NameLeadsOutside);
    }
    return {};
}

} // namespace ravlin
