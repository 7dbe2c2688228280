// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringView>

/// The parts of a file's path that the naming rules speak of. Pure text: nothing here looks at the disk.
namespace ravlin {

/// Characters of the extension that a bare name lacks: ".mp3", or whatever else the last four are.
inline constexpr qsizetype ExtensionSize = 4;
/// The extension that every new name gets, whatever the old one was.
inline constexpr QStringView NewExtension = u".mp3";
/// The longest file name, extension included, that is no long name.
inline constexpr qsizetype LongestPlainName = 64;

/// The file's name without its last four characters; empty for a name that is not longer than that.
QString bareName(const QString &path);

/// Unicode code points; a byte of a name that is no valid Unicode counts as one.
qsizetype characterCount(QStringView name);
/// Whether a name has 65 characters or more. No separator is looked for.
bool isLongName(QStringView name);

/// A name as text for a tag: a byte that is no valid UTF-8 (see platform::decodePath) is taken for Latin-1, since that
/// is what most such names are. Every other text stays.
QString nameAsText(const QString &name);

} // namespace ravlin
