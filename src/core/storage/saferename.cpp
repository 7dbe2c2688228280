// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/storage/saferename.h"

#include "core/platform/fileio.h"
#include "core/platform/namecheck.h"

#include <QRandomGenerator>

#include <algorithm>

namespace ravlin::storage {

namespace {

constexpr QStringView Opening = u" (ravlin-";
constexpr qsizetype HexDigits = 16; ///< of 64 bits
constexpr qsizetype MarkSize = Opening.size() + HexDigits + 1;

bool isHexDigit(QChar c)
{
    return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f');
}

/// Where the extension starts, dot included. Only ".mp3" counts: folders may have full stops anywhere.
qsizetype extensionStart(QStringView name)
{
    return name.endsWith(u".mp3", Qt::CaseInsensitive) ? name.size() - 4 : name.size();
}

/// Whether an interrupted rename of the current user's can have left this: a song or a folder of his own, which is not
/// hidden. Anything else that bears such a name was put there.
bool isOurs(platform::FileSystem &fileSystem, const platform::Node &node, const QString &former)
{
    const bool isKind = node.kind == platform::NodeKind::Folder ||
                        (node.kind == platform::NodeKind::File && platform::isMp3Name(former));
    return isKind && node.info.owner == fileSystem.currentUser() && !former.startsWith(u'.');
}

/// Gives a file its former name back, or that name with a number, and returns the name.
std::optional<QString> bringBack(platform::HeldFolder &folder, const QString &name, const QString &former)
{
    const auto file = folder.openFile(name, platform::OpenMode::Read);
    if (file) {
        // Held until the file has its name, so that not two programs bring it back.
        const Result<bool> locked = (*file)->tryLock();
        if (locked && !*locked)
            return std::nullopt;
    }
    constexpr int LastNumber = 1000;
    const auto kind = platform::isMp3Name(former) ? platform::NameKind::File : platform::NameKind::Folder;
    for (int number = 1; number <= LastNumber; ++number) {
        const QString wanted = number == 1 ? former : platform::numberedName(former, number, kind);
        const Result<void> renamed = folder.renameNew(name, folder, wanted);
        if (renamed)
            return wanted;
        if (renamed.error().code != ErrorCode::AlreadyExists)
            break;
    }
    return std::nullopt;
}

/// No file system renames a file to a name that it already has, so it gets another one in between.
Result<void> renameInTwoSteps(
    platform::FileSystem &fileSystem, const QString &from, const QString &to, const QString &aside)
{
    const auto lock = lockAside(fileSystem, from);
    if (const Result<void> moved = fileSystem.renameNew(from, aside); !moved)
        return moved;
    Result<void> renamed = fileSystem.renameNew(aside, to);
    if (!renamed)
        static_cast<void>(fileSystem.renameNew(aside, from)); // on failure it keeps a name that says what it was
    return renamed;
}

} // namespace

QString asideName(const QString &name, quint64 number)
{
    const qsizetype extension = extensionStart(name);
    const QString digits = QString::number(number, 16).rightJustified(HexDigits, u'0');
    const QString end = Opening.toString() + digits + u')' + name.sliced(extension);
    return platform::shortened(name.first(extension), platform::MaxNameLength - platform::nameLength(end)) + end;
}

std::optional<QString> nameBeforeAside(const QString &name)
{
    const qsizetype extension = extensionStart(name);
    if (extension <= MarkSize || name.at(extension - 1) != u')')
        return std::nullopt;
    const QStringView mark = QStringView(name).sliced(extension - MarkSize, MarkSize);
    const QStringView digits = mark.sliced(Opening.size(), HexDigits);
    if (!mark.startsWith(Opening) || !mark.endsWith(u')') || !std::all_of(digits.begin(), digits.end(), isHexDigit))
        return std::nullopt;
    return name.first(extension - MarkSize) + name.sliced(extension);
}

QString asidePath(const QString &path)
{
    return platform::folderPrefix(path) + asideName(platform::nameOf(path), QRandomGenerator::system()->generate64());
}

std::unique_ptr<platform::File> lockAside(platform::FileSystem &fileSystem, const QString &path)
{
    const auto place = platform::placeAt(fileSystem, path);
    if (!place)
        return nullptr;
    auto file = place->folder->openFile(place->name, platform::OpenMode::Read);
    if (!file || !(*file)->tryLock().value_or(false))
        return nullptr;
    return std::move(*file);
}

Result<std::vector<std::pair<QString, QString>>> bringBackAside(platform::FileSystem &fileSystem, const QString &path)
{
    const auto folder = fileSystem.openFolder(path);
    if (!folder)
        return tl::unexpected(folder.error());
    const Result<std::vector<QString>> names = (*folder)->names();
    if (!names)
        return tl::unexpected(names.error());
    const QString prefix = platform::withEndSeparator(path);
    std::vector<std::pair<QString, QString>> done;
    for (const QString &name : *names) {
        const std::optional<QString> former = nameBeforeAside(name);
        const Result<platform::Node> node = former ? (*folder)->node(name) : tl::unexpected(Error());
        if (!node || !isOurs(fileSystem, *node, *former))
            continue;
        if (const std::optional<QString> found = bringBack(**folder, name, *former))
            done.emplace_back(prefix + name, prefix + *found);
    }
    return done;
}

bool isSameButForCase(platform::FileSystem &fileSystem, const QString &from, const QString &to)
{
    const QString folder = platform::folderPrefix(from);
    if (folder != platform::folderPrefix(to) || from.toCaseFolded() != to.toCaseFolded())
        return false;
    const Result<platform::FileInfo> one = fileSystem.info(from);
    const Result<platform::FileInfo> other = fileSystem.info(to);
    if (!one || !other || one->inode != other->inode || one->device != other->device)
        return false;
    // So far it could also be a second hard link on a file system that distinguishes case.
    const Result<std::vector<QString>> names = fileSystem.names(folder.isEmpty() ? QStringLiteral(".") : folder);
    return names && std::ranges::find(*names, platform::nameOf(to)) == names->end();
}

Result<void> renameFile(platform::FileSystem &fileSystem, const QString &from, const QString &to, const QString &aside)
{
    if (from.isEmpty() || to.isEmpty() || from == to)
        return {};
    Result<void> renamed = fileSystem.renameNew(from, to);
    // Below a plain file or a missing folder there is nothing (NotFound).
    if (!renamed && renamed.error().code != ErrorCode::NotFound && to.startsWith(platform::withEndSeparator(from)))
        return tl::unexpected(Error{ErrorCode::IntoItself, from, renamed.error().detail});
    if (renamed || renamed.error().code != ErrorCode::AlreadyExists || !isSameButForCase(fileSystem, from, to))
        return renamed;
    return renameInTwoSteps(fileSystem, from, to, aside.isEmpty() ? asidePath(from) : aside);
}

} // namespace ravlin::storage
