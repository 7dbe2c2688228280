// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>

/// Words about paths: their separator, their parts, and their form on the disk. Pure text; nothing here reads the disk.
///
/// Paths are QString with the platform's separator. Names on disk need not be valid Unicode: on systems whose
/// names are bytes, a byte that is not part of valid UTF-8 becomes the lone low surrogate U+DC80 + (byte - 0x80)
/// and comes back as that byte, so that any name survives the round trip (see encodePath).
namespace ravlin::platform {

#ifdef _WIN32
inline constexpr QChar Separator = u'\\';
/// Whether names that differ in case alone are one name, as far as one can know without reading the disk.
inline constexpr Qt::CaseSensitivity NameCase = Qt::CaseInsensitive;
#else
inline constexpr QChar Separator = u'/';
inline constexpr Qt::CaseSensitivity NameCase = Qt::CaseSensitive;
#endif

/// The bytes of a path as the system's calls take them; undoes decodePath exactly. Surrogates that decodePath
/// never makes become U+FFFD.
QByteArray encodePath(const QString &path);
/// The path or name for any bytes from the system.
QString decodePath(const char *bytes, qsizetype size);
inline QString decodePath(const QByteArray &bytes)
{
    return decodePath(bytes.constData(), bytes.size());
}

/// Index of the first character after the last separator; 0 if there is none.
qsizetype nameStart(QStringView path);
/// What follows the last separator; empty for a path that ends in one.
QString nameOf(const QString &path);
/// What nameOf leaves: everything up to and including the last separator; empty if there is none.
QString folderPrefix(const QString &path);
/// The folder that holds the path's last name, without a separator at its end unless it is a root. A root's folder is
/// the root itself; a name without a separator is in ".". Expects no separator at the path's end.
QString folderOf(const QString &path);
/// Appends a separator unless the path ends in one.
QString withEndSeparator(const QString &path);
/// Removes separators from the end, but keeps a root's: "C:" would mean the current folder of that drive.
QString withoutEndSeparator(QString path);
/// The path of a name in a folder, whose path may end in a separator.
QString inFolder(const QString &folder, const QString &name);
/// Whether a name stays in its folder: it is not empty, "." or "..", and holds no separator, NUL or (Windows) colon.
bool isPlainName(const QString &name);

} // namespace ravlin::platform
