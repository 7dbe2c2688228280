// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/app/guide.h"

#include "core/app/idiomas.h"

#include <QDir>
#include <QFileInfo>

namespace ravlin {

namespace {

// From the program's folder: where programs stand alone (Windows), and where all programs stand together.
constexpr QStringView GuideFolders[] = {u"guide", u"../share/doc/ravlin/guide"};

} // namespace

QString guidePage(const QString &programFolder, QStringView languageName)
{
    for (const QString &code : {languageCodeFromName(languageName), QStringLiteral("en")}) {
        if (code.isEmpty())
            continue;
        for (const QStringView folder : GuideFolders) {
            const QString page =
                QDir::cleanPath(QStringLiteral("%1/%2/%3/index.html").arg(programFolder, folder, code));
            if (QFileInfo(page).isFile())
                return page;
        }
    }
    return {};
}

} // namespace ravlin
