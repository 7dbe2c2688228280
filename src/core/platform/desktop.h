// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/error.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <optional>

/// What the user's desktop and settings decide: standard folders, the program that opens a kind of file, the code page
/// in which other programs read paths, and where files that other programs open are kept.
namespace ravlin::platform {

/// The folders with a counterpart on every system, by their Windows CSIDL numbers.
enum class SpecialFolder
{
    Desktop = 0,
    Programs = 2, ///< the menu entries of programs
    Documents = 5,
    Music = 13,
    Videos = 14,
    DesktopFiles = 16, ///< the folder that the desktop shows
    Fonts = 20,
    RoamingSettings = 26, ///< of all programs
    LocalData = 28,       ///< of all programs
    Pictures = 39,
    Home = 40
};

/// A standard folder by its number, without a separator at the end; empty if the system has none. Outside Windows only
/// the numbers of SpecialFolder are known.
QString specialFolder(int number);
/// Where Windows and its own programs are installed, without a separator at the end; empty on other systems.
QString windowsFolder();
QString systemFolder();

/// A kind of file and the program that opens it.
struct FileType
{
    QString className;   ///< the name it is registered under: ASCII letters, digits, "-", "_" and "."
    QString description; ///< for people
    QString programPath;
    QString extension; ///< with or without the leading full stop
};

/// Makes a program the default for files of an extension, for this user. On Windows that takes three values in the
/// registry. Elsewhere it takes a desktop entry named after the class in the user's data folder, which replaces one of
/// that name, and a line in the user's mimeapps.list, whose other lines stay as they are.
///
/// Errors: InvalidArgument (class, program or extension is missing or cannot be expressed there), Unsupported (the
/// system does not know the extension), and those of writing.
Result<void> makeFileDefault(const FileType &type);

/// Text in the code page in which programs of this system read paths: ANSI on Windows, nothing if that lacks one of the
/// characters. Elsewhere the bytes of the path, whatever they are.
std::optional<QByteArray> toCodePage(const QString &text);

/// The address by which other programs are asked to open a file. A byte of its name that is not UTF-8 stands there as
/// that byte, "%FF". The path is absolute, so that no part of it is taken for a host or an option; empty for others.
QUrl addressOf(const QString &path);

/// The path of a file that the program keeps under one fixed name for other programs to open, in a folder of its own in
/// the user's cache, which is created if needed. Never in a folder that others can write to, where somebody could plant
/// a file or link of that name; on Windows in the root of drive C: if the user may write there.
QString fixedFilePath(const QString &name);

/// The permissions of a new file according to the user's umask; 0666 on Windows.
quint32 newFilePermissions();

} // namespace ravlin::platform
