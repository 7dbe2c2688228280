// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/list/linknote.h"

#include "core/app/idiomas.h"
#include "core/files/list/listcolumns.h"
#include "core/platform/filesystem.h"
#include "core/platform/path.h"

namespace ravlin {

namespace {

/// The text with an ellipsis instead of its middle, if it is longer than that.
QString shortenedInMiddle(const QString &text, qsizetype length)
{
    if (text.size() <= length)
        return text;
    QString start = text.first(length / 2);
    if (start.back().isHighSurrogate())
        start.chop(1);
    QString end = text.last(length / 2);
    if (end.front().isLowSurrogate())
        end.remove(0, 1);
    return start + u'\u2026' + end;
}

} // namespace

QString linkNote(
    const Captions &captions, platform::FileSystem &fileSystem, const QString &folder, const QString &rowText)
{
    const Result<QString> inside = fileSystem.canonicalPath(folder);
    const Result<QString> file = fileSystem.canonicalPath(platform::inFolder(folder, rowText));
    if (!inside || !file || file->startsWith(platform::withEndSeparator(*inside), platform::NameCase))
        return {};
    constexpr qsizetype MostShown = 200;
    return captions.text(Text::TipLinkTarget).arg(shortenedInMiddle(shownName(*file), MostShown));
}

} // namespace ravlin
