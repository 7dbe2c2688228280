// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

/// Words about paths: their separator, their parts, and their form on the disk. Pure text, no disk is asked.
///
/// Paths are QString with the platform's separator. Names on disk need not be valid Unicode: on systems whose
/// names are bytes, a byte that is not part of valid UTF-8 becomes the lone low surrogate U+DC80 + (byte - 0x80)
/// and comes back as that byte, so that any name survives the round trip (see encodePath).
namespace ravlin::platform {

#ifdef _WIN32
inline constexpr QChar Separator = u'\\';
/// Whether names that differ in case alone are one name, as far as that can be told without asking the disk.
inline constexpr Qt::CaseSensitivity NameCase = Qt::CaseInsensitive;
#else
inline constexpr QChar Separator = u'/';
inline constexpr Qt::CaseSensitivity NameCase = Qt::CaseSensitive;
#endif

/// The bytes of a path as the system's calls take them; undoes decodePath exactly. Surrogates that decodePath
/// never makes become U+FFFD.
QByteArray encodePath(const QString &path);
/// The path or name for bytes from the system, whatever they are.
QString decodePath(const char *bytes, qsizetype size);
inline QString decodePath(const QByteArray &bytes)
{
    return decodePath(bytes.constData(), bytes.size());
}

/// The folder part of a path, with its separator where it is a root; a root's is itself. For a canonical path.
QString folderOf(const QString &path);
/// Without the separators at its end, but for the one of a root: a drive without it would be the folder in use there.
QString withoutEndSeparator(QString path);
/// A path, or a pattern of one, that people may have written with "/", which separates on every system.
QString withNativeSeparators(QString path);
QString nameOf(const QString &path);
QString inFolder(const QString &folder, const QString &name);
/// Whether a name stays in its folder: not empty, ".", ".." or with a separator, zero or (Windows) colon in it.
bool isPlainName(const QString &name);

} // namespace ravlin::platform
