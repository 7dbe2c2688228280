// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/naming/foldername.h"

#include "core/app/settings.h"
#include "core/naming/placeholders.h"
#include "core/naming/texttransforms.h"
#include "core/platform/path.h"

#include <QDir>

using namespace Qt::StringLiterals;

namespace ravlin {

namespace {

constexpr QStringView ArtistAlbumText = u"1";
constexpr QStringView PatternText = u"2";

QString filledPattern(const QString &pattern, const TagRecord &record)
{
    QString name = QDir::toNativeSeparators(pattern);
    for (const Placeholder &placeholder : folderPlaceholders()) {
        const QString &value = record.*(placeholder.field);
        if (!value.isEmpty())
            name = SubstitutePlaceholder(name, placeholder.token(), CleanFileName(value));
    }
    return name;
}

/// Empty if there is neither.
QString artistAndAlbum(const TagRecord &record)
{
    const bool hasBoth = !record.Artist.isEmpty() && !record.Album.isEmpty();
    return record.Artist + (hasBoth ? u" - "_s : QString()) + record.Album;
}

} // namespace

FolderRule FolderRule::restored(const Settings &settings)
{
    const QString stored = settings.read(settingskey::DirRename);
    return {stored == ArtistAlbumText, stored == PatternText, settings.read(settingskey::DirRenameVar)};
}

void FolderRule::store(Settings &settings) const
{
    const QStringView chosen = artistAlbum ? ArtistAlbumText : QStringView();
    settings.write(settingskey::DirRename, (pattern ? PatternText : chosen).toString());
    settings.write(settingskey::DirRenameVar, patternText);
}

std::optional<QString> newFolderPath(const QString &folder, const TagRecord &record, const FolderRule &rule)
{
    const QString path = platform::withoutEndSeparator(folder);
    const QString parent = platform::folderPrefix(path);
    if (parent.isEmpty() || parent == path)
        return std::nullopt;
    QString name = rule.artistAlbum ? artistAndAlbum(record) : QString();
    if (name.isEmpty() && rule.pattern)
        name = filledPattern(rule.patternText, record);
    if (name.isEmpty())
        return std::nullopt;
    return parent + name;
}

} // namespace ravlin
