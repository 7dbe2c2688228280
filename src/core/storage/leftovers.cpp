// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/storage/leftovers.h"

#include "core/platform/fileio.h"
#include "core/platform/nodes.h"
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

/// Removes a temporary file or folder unless its writer is alive. True if it is gone.
bool removeIfStale(platform::FileSystem &fileSystem, const QString &path)
{
    const auto file = fileSystem.openUnlinked(path, platform::OpenMode::Read);
    if (!file && file.error().code == ErrorCode::NotAFile) { // or a link, which is not ours: lockFolder refuses it
        const std::unique_ptr<platform::FolderLock> lock = platform::lockFolder(path);
        return lock && platform::removeTree(fileSystem, path).has_value();
    }
    if (!file)
        return false;
    const auto locked = (*file)->tryLock();
    return locked && *locked && fileSystem.remove(path).has_value();
}

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

TemporaryFile::TemporaryFile(
    platform::FileSystem &fileSystem, QString path, std::unique_ptr<platform::File> file, platform::FileInfo info)
    : m_fileSystem(&fileSystem), m_path(std::move(path)), m_file(std::move(file)), m_info(info)
{
}

TemporaryFile::TemporaryFile(TemporaryFile &&other) noexcept
    : m_fileSystem(other.m_fileSystem), m_path(std::exchange(other.m_path, {})), m_file(std::move(other.m_file)),
      m_info(other.m_info)
{
}

TemporaryFile::~TemporaryFile()
{
    // On failure a file stays that cleanLeftovers recognises by its name.
    if (!m_path.isEmpty())
        static_cast<void>(m_fileSystem->remove(m_path));
}

Result<TemporaryFile> TemporaryFile::create(platform::FileSystem &fileSystem, const QString &folder)
{
    constexpr int Attempts = 8;
    for (int attempt = 0; attempt < Attempts; ++attempt) {
        const quint64 number = QRandomGenerator::system()->generate64();
        const QString path = platform::inFolder(folder, leftoverName(number, TemporarySuffix));
        auto file = fileSystem.createNew(path);
        if (!file && file.error().code == ErrorCode::AlreadyExists)
            continue;
        if (!file)
            return tl::unexpected(file.error());
        // On a file system without locks nothing is taken for stale, and nothing is cleaned.
        const auto locked = (*file)->tryLock();
        const auto info = (*file)->info();
        TemporaryFile made(fileSystem, path, std::move(*file), info.value_or(platform::FileInfo()));
        if (!info)
            return tl::unexpected(info.error());
        // Until it was locked it looked stale: a cleaner may hold it or have removed it.
        const bool taken = (locked && !*locked) || info->linkCount == 0;
        if (!taken)
            return made;
    }
    return tl::unexpected(Error{ErrorCode::Io, folder, QStringLiteral("no temporary file could be made")});
}

Result<void> TemporaryFile::moveTo(const QString &path)
{
    auto moved = m_fileSystem->replace(m_path, path);
    if (moved)
        m_path.clear();
    return moved;
}

Result<void> TemporaryFile::moveToNew(const QString &path)
{
    auto moved = m_fileSystem->renameNew(m_path, path);
    if (moved)
        m_path.clear();
    return moved;
}

TemporaryFolder::TemporaryFolder(
    platform::FileSystem &fileSystem, QString path, std::unique_ptr<platform::FolderLock> lock)
    : m_fileSystem(&fileSystem), m_path(std::move(path)), m_lock(std::move(lock))
{
}

TemporaryFolder::TemporaryFolder(TemporaryFolder &&other) noexcept
    : m_fileSystem(other.m_fileSystem), m_path(std::exchange(other.m_path, {})), m_lock(std::move(other.m_lock))
{
}

TemporaryFolder::~TemporaryFolder()
{
    // On failure a folder stays that cleanLeftovers recognises by its name.
    if (!m_path.isEmpty())
        static_cast<void>(platform::removeTree(*m_fileSystem, m_path));
}

Result<TemporaryFolder> TemporaryFolder::create(platform::FileSystem &fileSystem, const QString &folder)
{
    constexpr quint32 OwnerOnly = 0700;
    constexpr int Attempts = 8;
    for (int attempt = 0; attempt < Attempts; ++attempt) {
        const quint64 number = QRandomGenerator::system()->generate64();
        const QString path = platform::inFolder(folder, leftoverName(number, TemporarySuffix));
        const auto made = fileSystem.createFolder(path);
        if (!made && made.error().code == ErrorCode::AlreadyExists)
            continue;
        if (!made)
            return tl::unexpected(made.error());
        TemporaryFolder temporary(fileSystem, path, platform::lockFolder(path));
        // Until it was locked it looked stale: a cleaner may have removed it. Not all drives have permissions.
        static_cast<void>(fileSystem.setPermissions(path, OwnerOnly));
        if (platform::isTaken(path))
            return temporary;
        temporary.m_path.clear();
    }
    return tl::unexpected(Error{ErrorCode::Io, folder, QStringLiteral("no temporary folder could be made")});
}

Result<void> TemporaryFolder::moveToNew(const QString &path)
{
    auto moved = m_fileSystem->renameNew(m_path, path);
    if (moved)
        m_path.clear();
    return moved;
}

Result<int> cleanLeftovers(platform::FileSystem &fileSystem, const QString &folder)
{
    const auto canonical = fileSystem.canonicalPath(folder);
    if (!canonical)
        return tl::unexpected(canonical.error());
    const auto names = fileSystem.names(*canonical);
    if (!names)
        return tl::unexpected(names.error());
    int gone = 0;
    for (const QString &name : *names) {
        if (isTemporaryName(name)) {
            gone += removeIfStale(fileSystem, platform::inFolder(*canonical, name)) ? 1 : 0;
        } else if (isRedoName(name)) {
            const auto finished = finishRedo(fileSystem, platform::inFolder(*canonical, name));
            // One that cannot be finished now stays for the next time and must not hold up the others.
            gone += finished && *finished ? 1 : 0;
        }
    }
    return gone;
}

} // namespace ravlin::storage
