// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/desktop.h"

#include "core/platform/filesystem.h"

#include <QDir>
#include <QFile>
#include <QMimeDatabase>
#include <QSaveFile>
#include <QStandardPaths>

#include <algorithm>
#include <array>

#include <sys/stat.h>

namespace ravlin::platform {
namespace {

struct KnownFolder
{
    SpecialFolder folder = SpecialFolder::Home;
    QStandardPaths::StandardLocation location = QStandardPaths::HomeLocation;
};

constexpr std::array Places{
    KnownFolder{SpecialFolder::Desktop, QStandardPaths::DesktopLocation},
    KnownFolder{SpecialFolder::Programs, QStandardPaths::ApplicationsLocation},
    KnownFolder{SpecialFolder::Documents, QStandardPaths::DocumentsLocation},
    KnownFolder{SpecialFolder::Music, QStandardPaths::MusicLocation},
    KnownFolder{SpecialFolder::Videos, QStandardPaths::MoviesLocation},
    KnownFolder{SpecialFolder::DesktopFiles, QStandardPaths::DesktopLocation},
    KnownFolder{SpecialFolder::Fonts, QStandardPaths::FontsLocation},
    KnownFolder{SpecialFolder::RoamingSettings, QStandardPaths::GenericConfigLocation},
    KnownFolder{SpecialFolder::LocalData, QStandardPaths::GenericDataLocation},
    KnownFolder{SpecialFolder::Pictures, QStandardPaths::PicturesLocation},
    KnownFolder{SpecialFolder::Home, QStandardPaths::HomeLocation},
};

tl::unexpected<Error> failure(ErrorCode code, const QString &path, const QString &detail)
{
    return tl::unexpected(Error{code, path, detail});
}

bool isPlainCharacter(QChar c)
{
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') || c == u'-' || c == u'_' ||
           c == u'.';
}

bool isClassName(const QString &name)
{
    return !name.isEmpty() && !name.startsWith(u'.') && std::all_of(name.begin(), name.end(), isPlainCharacter);
}

bool hasControlCharacter(const QString &text)
{
    return std::any_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x20 || c.unicode() == 0x7f; });
}

/// The value of a desktop entry's key: backslashes are doubled.
QByteArray entryValue(QByteArray text)
{
    return text.replace('\\', "\\\\");
}

/// A program's path in a desktop entry's command line: quoted, with the characters escaped that quotes do not cover.
QByteArray quotedProgram(const QString &path)
{
    QByteArray quoted = "\"";
    for (const char byte : encodePath(path)) {
        if (byte == '"' || byte == '`' || byte == '$' || byte == '\\')
            quoted += '\\';
        quoted += byte;
        if (byte == '%')
            quoted += byte;
    }
    return entryValue(quoted + '"');
}

/// Writes the whole file or leaves the old one. A symbolic link stays one.
Result<void> writeSafely(const QString &path, const QByteArray &content)
{
    if (!QDir().mkpath(folderOf(path)))
        return failure(ErrorCode::AccessDenied, folderOf(path), QStringLiteral("the folder can't be made"));
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size() || !file.commit())
        return failure(ErrorCode::Io, path, file.errorString());
    return {};
}

QByteArray desktopEntry(const FileType &type, const QByteArray &kind)
{
    const QString name = type.description.isEmpty() ? type.className : type.description;
    return "[Desktop Entry]\nType=Application\nName=" + entryValue(name.toUtf8()) +
           "\nExec=" + quotedProgram(type.programPath) + " %f\nMimeType=" + kind +
           ";\nTerminal=false\nNoDisplay=true\n";
}

/// The user's choices with one of them set; all other lines stay as they are.
QByteArray withDefault(const QByteArray &choices, const QByteArray &kind, const QByteArray &entry)
{
    static constexpr char Group[] = "[Default Applications]";
    const QByteArray chosen = kind + '=' + entry + ';';
    QList<QByteArray> lines = choices.isEmpty() ? QList<QByteArray>() : choices.split('\n');
    if (!lines.isEmpty() && lines.back().isEmpty())
        lines.removeLast();
    const auto isGroup = [](const QByteArray &line) { return line.trimmed() == Group; };
    auto group = std::find_if(lines.begin(), lines.end(), isGroup);
    if (group == lines.end()) {
        lines.append(Group);
        lines.append(chosen);
        return lines.join('\n') + '\n';
    }
    const auto end = std::find_if(group + 1, lines.end(), [](const QByteArray &line) { return line.startsWith('['); });
    const auto present = std::find_if(group + 1, end,
        [&](const QByteArray &line) { return line.left(std::max<qsizetype>(line.indexOf('='), 0)).trimmed() == kind; });
    if (present != end)
        *present = chosen;
    else
        lines.insert(group + 1, chosen);
    return lines.join('\n') + '\n';
}

Result<void> chooseDefault(const QByteArray &kind, const QByteArray &entry)
{
    const QString path = inFolder(
        QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation), QStringLiteral("mimeapps.list"));
    QFile file(path);
    QByteArray choices;
    if (file.exists()) {
        if (!file.open(QIODevice::ReadOnly))
            return failure(ErrorCode::AccessDenied, path, file.errorString());
        choices = file.readAll();
        if (file.error() != QFileDevice::NoError)
            return failure(ErrorCode::Io, path, file.errorString());
    }
    const QByteArray wanted = withDefault(choices, kind, entry);
    return wanted == choices ? Result<void>() : writeSafely(path, wanted);
}

constexpr mode_t OwnerOnly = 0700;

/// Like mkdir -p, for the owner alone. A failure shows when a file is written there.
void makeFolders(const QString &path)
{
    if (path.size() <= 1 || FileSystem::native().info(path))
        return;
    makeFolders(folderOf(path));
    static_cast<void>(::mkdir(encodePath(path).constData(), OwnerOnly));
}

} // namespace

QString specialFolder(int number)
{
    const auto *const place = std::find_if(Places.begin(), Places.end(),
        [number](const KnownFolder &each) { return static_cast<int>(each.folder) == number; });
    return place == Places.end() ? QString() : QStandardPaths::writableLocation(place->location);
}

QString windowsFolder()
{
    return {};
}

QString systemFolder()
{
    return {};
}

Result<void> makeFileDefault(const FileType &type)
{
    if (!isClassName(type.className))
        return failure(ErrorCode::InvalidArgument, type.className, QStringLiteral("not a class name"));
    if (type.programPath.isEmpty() || hasControlCharacter(type.programPath) || hasControlCharacter(type.description))
        return failure(ErrorCode::InvalidArgument, type.programPath, QStringLiteral("not a program's path"));
    const QString extension = type.extension.startsWith(u'.') ? type.extension : u'.' + type.extension;
    if (extension.size() < 2 || extension.contains(Separator))
        return failure(ErrorCode::InvalidArgument, type.extension, QStringLiteral("not an extension"));
    const QList<QMimeType> kinds = QMimeDatabase().mimeTypesForFileName(QStringLiteral("x") + extension);
    if (kinds.isEmpty())
        return failure(ErrorCode::Unsupported, extension, QStringLiteral("the system knows no such kind of file"));

    const QByteArray kind = kinds.front().name().toLatin1();
    const QString entry = type.className + QStringLiteral(".desktop");
    const QString folder =
        inFolder(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation), QStringLiteral("applications"));
    return writeSafely(inFolder(folder, entry), desktopEntry(type, kind)).and_then([&] {
        return chooseDefault(kind, entry.toLatin1());
    });
}

std::optional<QByteArray> toCodePage(const QString &text)
{
    return encodePath(text);
}

QUrl addressOf(const QString &path)
{
    if (!path.startsWith(Separator))
        return {};
    // QUrl::fromLocalFile would put U+FFFD in the place of such a byte.
    return QUrl::fromEncoded("file://" + encodePath(path).toPercentEncoding("/"), QUrl::StrictMode);
}

QString fixedFilePath(const QString &name)
{
    const QString cache = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    const QString folder = inFolder(cache, QStringLiteral("ravlin"));
    makeFolders(folder);
    return inFolder(folder, name);
}

quint32 newFilePermissions()
{
    constexpr quint32 ForAll = 0666;
    constexpr quint32 UsualMask = 022;
    // umask(2) returns the mask only by changing it, for all threads at once.
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return ForAll & ~UsualMask;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("Umask:"))
            return ForAll & ~line.sliced(6).trimmed().toUInt(nullptr, 8);
    }
    return ForAll & ~UsualMask;
}

} // namespace ravlin::platform
