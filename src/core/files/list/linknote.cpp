// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/list/linknote.h"

#include "core/app/idiomas.h"
#include "core/app/showntext.h"
#include "core/platform/filesystem.h"
#include "core/platform/path.h"

namespace ravlin {

QString linkNote(
    const Captions &captions, platform::FileSystem &fileSystem, const QString &folder, const QString &rowText)
{
    const Result<QString> inside = fileSystem.canonicalPath(folder);
    const Result<QString> file = fileSystem.canonicalPath(platform::inFolder(folder, rowText));
    if (!inside || !file || file->startsWith(platform::withEndSeparator(*inside), platform::NameCase))
        return {};
    constexpr qsizetype MostShown = 200;
    return captions.text(Text::TipLinkTarget).arg(shownLine(*file, MostShown));
}

} // namespace ravlin
