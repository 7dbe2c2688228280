// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringView>

namespace ravlin {

namespace platform {
class FileSystem;
}
class Captions;

/// A sentence about a row of the list whose file is not in the listed folder or below it, because a link leads out of
/// it: where the file really is, shortened in the middle. Empty for every other row, and if the file is not there any
/// more. rowText: see ListRow::text. Reads the disk, so only for a row that the user asks about.
QString linkNote(
    const Captions &captions, platform::FileSystem &fileSystem, const QString &folder, const QString &rowText);

} // namespace ravlin
