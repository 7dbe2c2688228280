// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/storage/leftovers.h"

#include "core/platform/fileio.h"
#include "core/platform/nodes.h"
#include "core/platform/path.h"
#include "core/storage/redofile.h"
#include "core/storage/safewrite.h"

#include <QRandomGenerator>

#include <algorithm>

namespace ravlin::storage {
namespace {

constexpr QStringView Prefix = u".ravlin-";
constexpr QStringView TemporarySuffix = u".tmp";
constexpr QStringView RedoSuffix = u".redo";
constexpr qsizetype HexDigits = 16; ///< of 64 bits

QString leftoverName(quint64 number, QStringView suffix)
{
    const QString digits = QString::number(number, 16).rightJustified(HexDigits, u'0');
    return QStringLiteral("%1%2%3").arg(Prefix, digits, suffix);
}

bool isHexDigit(QChar c)
{
    return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f');
}

/// Strict, so that none of the user's own files is taken for one of ours.
bool isNumbered(QStringView name, QStringView suffix)
{
    if (name.size() != Prefix.size() + HexDigits + suffix.size() || !name.startsWith(Prefix) || !name.endsWith(suffix))
        return false;
    const QStringView number = name.sliced(Prefix.size(), HexDigits);
    return std::all_of(number.begin(), number.end(), isHexDigit);
}

QString newName()
{
    return leftoverName(QRandomGenerator::system()->generate64(), TemporarySuffix);
}

/// Removes a temporary file if it is certainly ours and its writer is dead. True if it is gone.
bool removeIfStale(platform::HeldFolder &folder, const QString &name)
{
    const auto file = folder.openFile(name, platform::OpenMode::Read);
    if (!file || !(*file)->isPrivate().value_or(false))
        return false;
    const auto locked = (*file)->tryLock();
    return locked && *locked && folder.remove(name).has_value();
}

constexpr int Attempts = 8; ///< to find a name that nobody takes

} // namespace

QString redoName(quint64 inode)
{
    return leftoverName(inode, RedoSuffix);
}

bool isTemporaryName(const QString &fileName)
{
    return isNumbered(fileName, TemporarySuffix);
}

bool isRedoName(const QString &fileName)
{
    return isNumbered(fileName, RedoSuffix);
}

bool isLeftoverName(const QString &fileName)
{
    return isTemporaryName(fileName) || isRedoName(fileName);
}

Announcement::Announcement(Journal *journal, const QString &folder, const QString &name)
    : m_journal(journal), m_ticket(journal != nullptr ? journal->beginTemporary(folder, name) : std::nullopt)
{
}

Announcement::Announcement(Announcement &&other) noexcept
    : m_journal(other.m_journal), m_ticket(std::exchange(other.m_ticket, std::nullopt))
{
}

Announcement &Announcement::operator=(Announcement &&other) noexcept
{
    m_journal = other.m_journal;
    m_ticket = std::exchange(other.m_ticket, std::nullopt);
    return *this;
}

void Announcement::end()
{
    if (m_ticket)
        m_journal->endTemporary(*std::exchange(m_ticket, std::nullopt));
}

TemporaryFile::TemporaryFile(
    platform::Place place, std::unique_ptr<platform::File> file, platform::FileInfo info, Announcement announcement)
    : m_place(std::move(place)), m_announcement(std::move(announcement)), m_file(std::move(file)), m_info(info)
{
}

TemporaryFile::TemporaryFile(TemporaryFile &&other) noexcept
    : m_place(std::exchange(other.m_place, {})), m_announcement(std::move(other.m_announcement)),
      m_file(std::move(other.m_file)), m_info(other.m_info)
{
}

TemporaryFile::~TemporaryFile()
{
    // On failure a file stays that cleanLeftovers recognises, and so does its record.
    if (!m_place.folder || m_place.folder->remove(m_place.name))
        m_announcement.end();
}

Result<TemporaryFile> TemporaryFile::create(const std::shared_ptr<platform::HeldFolder> &folder, Journal *journal)
{
    for (int attempt = 0; attempt < Attempts; ++attempt) {
        const QString name = newName();
        Announcement announcement(journal, folder->path(), name);
        auto file = folder->createNew(name);
        if (!file)
            announcement.end();
        if (!file && file.error().code == ErrorCode::AlreadyExists)
            continue;
        if (!file)
            return tl::unexpected(file.error());
        // On a file system without locks nothing is taken for stale, and nothing is cleaned.
        const auto locked = (*file)->tryLock();
        const auto info = (*file)->info();
        TemporaryFile made(
            {folder, name}, std::move(*file), info.value_or(platform::FileInfo()), std::move(announcement));
        if (!info)
            return tl::unexpected(info.error());
        // Until it was locked it looked stale: a cleaner may hold it or have removed it.
        const bool taken = (locked && !*locked) || info->linkCount == 0;
        if (!taken)
            return made;
    }
    return tl::unexpected(Error{ErrorCode::Io, folder->path(), QStringLiteral("no temporary file could be made")});
}

Result<TemporaryFile> TemporaryFile::create(platform::FileSystem &fileSystem, const QString &path, Journal *journal)
{
    const auto folder = fileSystem.openFolder(path);
    return folder ? create(*folder, journal) : tl::unexpected(folder.error());
}

Result<void> TemporaryFile::moveTo(const QString &name)
{
    auto moved = m_place.folder->replace(m_place.name, *m_place.folder, name);
    if (moved)
        m_place = {};
    return moved;
}

Result<void> TemporaryFile::moveToNew(const QString &name)
{
    auto moved = m_place.folder->renameNew(m_place.name, *m_place.folder, name);
    if (moved)
        m_place = {};
    return moved;
}

TemporaryFolder::TemporaryFolder(
    platform::Place place, std::shared_ptr<platform::HeldFolder> folder, Announcement announcement)
    : m_place(std::move(place)), m_announcement(std::move(announcement)), m_folder(std::move(folder))
{
}

TemporaryFolder::TemporaryFolder(TemporaryFolder &&other) noexcept
    : m_place(std::exchange(other.m_place, {})), m_announcement(std::move(other.m_announcement)),
      m_folder(std::move(other.m_folder))
{
}

TemporaryFolder::~TemporaryFolder()
{
    const auto isGone = [&] {
        // Only the folder that was made here: nobody else's that has taken its name.
        const auto own = m_folder->info();
        const auto named = m_place.folder->node(m_place.name);
        return own && named && named->isSameAs(*own) && platform::removeTree(*m_place.folder, m_place.name);
    };
    if (!m_place.folder || isGone())
        m_announcement.end();
}

Result<TemporaryFolder> TemporaryFolder::create(const std::shared_ptr<platform::HeldFolder> &parent, Journal *journal)
{
    for (int attempt = 0; attempt < Attempts; ++attempt) {
        const QString name = newName();
        Announcement announcement(journal, parent->path(), name);
        auto made = parent->createFolder(name);
        if (made) {
            static_cast<void>((*made)->tryLock()); // tells a cleaner that somebody is at work
            return TemporaryFolder({parent, name}, std::move(*made), std::move(announcement));
        }
        announcement.end();
        if (made.error().code != ErrorCode::AlreadyExists)
            return tl::unexpected(made.error());
    }
    return tl::unexpected(Error{ErrorCode::Io, parent->path(), QStringLiteral("no temporary folder could be made")});
}

Result<void> TemporaryFolder::moveToNew(const QString &name)
{
    auto moved = m_place.folder->renameNew(m_place.name, *m_place.folder, name);
    if (moved)
        m_place = {};
    return moved;
}

namespace {

/// By handle, so that nothing that takes the folder's name meanwhile is emptied.
bool empty(platform::HeldFolder &folder)
{
    const auto names = folder.names();
    return names && std::ranges::all_of(
                        *names, [&](const QString &name) { return platform::removeTree(folder, name).has_value(); });
}

} // namespace

bool removeTemporary(platform::FileSystem &fileSystem, const QString &folder, const QString &name)
{
    const auto held = fileSystem.openFolder(folder);
    if (!held)
        return held.error().code == ErrorCode::NotFound;
    const auto node = (*held)->node(name);
    if (!node)
        return node.error().code == ErrorCode::NotFound;
    if (!isTemporaryName(name))
        return false;
    if (node->kind == platform::NodeKind::File)
        return removeIfStale(**held, name);
    if (node->kind != platform::NodeKind::Folder)
        return false;
    constexpr quint32 OwnerOnly = 0700;
    const auto opened = (*held)->openFolder(name);
    const auto info = opened ? (*opened)->info() : tl::unexpected(opened.error());
    const bool isOurs = info && info->owner == fileSystem.currentUser() && info->permissions == OwnerOnly;
    return isOurs && (*opened)->tryLock().value_or(false) && empty(**opened) && (*held)->removeFolder(name);
}

Result<int> cleanLeftovers(platform::FileSystem &fileSystem, const QString &path)
{
    const auto folder = fileSystem.openFolder(path);
    if (!folder)
        return tl::unexpected(folder.error());
    const auto names = (*folder)->names();
    if (!names)
        return tl::unexpected(names.error());
    int gone = 0;
    for (const QString &name : *names) {
        if (isTemporaryName(name)) {
            gone += removeIfStale(**folder, name) ? 1 : 0;
        } else if (isRedoName(name)) {
            const auto finished = finishRedo(fileSystem, **folder, name);
            // One that cannot be finished now stays for the next time and must not hold up the others.
            gone += finished && *finished == RedoState::Gone ? 1 : 0;
        }
    }
    return gone;
}

Result<bool> recoverFile(platform::FileSystem &fileSystem, const platform::Place &place, const platform::FileInfo &info)
{
    const QString redo = redoName(info.inode);
    if (!info.isFile || !place.folder->node(redo))
        return false;
    const auto finished = finishRedo(fileSystem, *place.folder, redo, place.name);
    if (!finished)
        return tl::unexpected(finished.error());
    if (*finished == RedoState::Kept)
        return tl::unexpected(
            Error{ErrorCode::Interrupted, place.path(), QStringLiteral("%1 holds its former contents").arg(redo)});
    return *finished == RedoState::Gone;
}

Result<bool> recoverFile(platform::FileSystem &fileSystem, const QString &path)
{
    const auto place = fileSystem.follow(path);
    if (!place)
        return tl::unexpected(place.error());
    const auto node = place->folder->node(place->name);
    if (!node)
        return tl::unexpected(node.error());
    return recoverFile(fileSystem, *place, node->info);
}

Result<bool> recoverNamed(platform::FileSystem &fileSystem, const QString &path)
{
    const auto node = platform::nodeAt(path);
    const bool isFile = node && node->kind == platform::NodeKind::File;
    if (!isFile || !platform::nodeAt(platform::folderPrefix(path) + redoName(node->info.inode)))
        return false;
    return platform::placeAt(fileSystem, path).and_then([&](const platform::Place &place) {
        return recoverFile(fileSystem, place, node->info);
    });
}

bool recoverFolder(platform::FileSystem &fileSystem, const QString &path, const std::vector<QString> &names)
{
    bool any = false;
    for (const QString &name : names) {
        if (isRedoName(name)) {
            const auto finished = finishRedo(fileSystem, path, name);
            any = any || (finished && *finished == RedoState::Gone);
        }
    }
    return any;
}

} // namespace ravlin::storage
