// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/list/folderscan.h"

#include "core/files/list/folderreading.h"
#include "core/platform/folder.h"
#include "core/platform/namecheck.h"
#include "core/storage/leftovers.h"
#include "core/storage/saferename.h"
#include "core/storage/safewrite.h"

#include <QElapsedTimer>
#include <QHash>

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

namespace ravlin {

namespace {

using FolderIdentity = std::pair<quint64, quint64>;

bool isListed(const platform::FolderEntry &entry)
{
    return entry.kind == platform::EntryKind::File && !entry.isHidden && platform::isMp3Name(entry.name) &&
           !storage::isLeftoverName(entry.name);
}

QStringList subfolders(
    const std::vector<platform::FolderEntry> &entries, const QString &folderPath, const std::stop_token &stop)
{
    std::vector<std::pair<QString, QString>> found; // upper-case form and path
    for (const platform::FolderEntry &entry : entries) {
        // A folder that is still being copied does not count.
        if (entry.kind == platform::EntryKind::Folder && !storage::isLeftoverName(entry.name)) {
            const QString path = platform::withEndSeparator(folderPath + entry.name);
            found.emplace_back(path.toUpper(), path);
        }
    }
    if (!stop.stop_requested())
        std::sort(found.begin(), found.end());
    QStringList paths;
    for (std::pair<QString, QString> &entry : found)
        paths += std::move(entry.second);
    return paths;
}

/// Finds the files of a listing in their order. Their tags are read once many are known, so that the cores share the
/// work evenly however small the folders are. Only one folder is open at a time: depth costs no descriptors.
class FolderWalk
{
public:
    FolderWalk(const ScanOptions &options, QString root) : m_options(options), m_root(std::move(root))
    {
        m_searching.start();
    }

    /// Finds a folder's own files and returns its subfolders.
    Result<QStringList> visit(const QString &folderPath, const QString &relativePrefix)
    {
        const Result<platform::Folder> folder = platform::Folder::open(folderPath);
        if (!folder)
            return tl::unexpected(folder.error());
        if (!m_seen.insert(folder->identity()).second)
            return QStringList();
        Result<std::vector<platform::FolderEntry>> entries = folder->entries(m_options.stop);
        if (!entries)
            return tl::unexpected(entries.error());
        if (m_options.stop.stop_requested())
            return QStringList(); // some entries are missing; the cache would forget what it knows of them
        FolderFiles files{folderPath, relativePrefix, {}};
        bool hasAside = false;
        for (const platform::FolderEntry &entry : *entries) {
            if (isListed(entry))
                files.names.push_back(entry.name);
            else if (storage::isRedoName(entry.name)) // a save was interrupted
                storage::recoverFolder(platform::FileSystem::native(), folderPath, {entry.name});
            hasAside = hasAside || storage::nameBeforeAside(entry.name).has_value();
        }
        if (hasAside)
            m_interruptedRenames.push_back(folderPath);
        m_fileCount += static_cast<qsizetype>(files.names.size());
        if (!files.names.empty())
            m_found.push_back(std::move(files));
        if (m_options.progress)
            m_options.progress({m_readCount, m_fileCount, folderPath});
        if (m_options.skipTrashFolders)
            removeTrashFolders(*entries, *folder);
        return subfolders(*entries, folderPath, m_options.stop);
    }

    /// Visits the folders, then what lies below each of them.
    void descend(const QStringList &folders)
    {
        std::vector<QStringList> below;
        for (const QString &folder : folders) {
            if (m_options.stop.stop_requested())
                return;
            Result<QStringList> found = visit(folder, folder.mid(m_root.size()));
            if (!found)
                m_failures.push_back({folder, found.error()});
            below.push_back(found.value_or(QStringList()));
            if (std::chrono::milliseconds(m_searching.elapsed()) >= m_options.longSearch)
                readFound();
        }
        for (const QStringList &next : below) {
            if (!next.isEmpty())
                descend(next);
        }
    }

    /// Reads the tags of the remaining files found. Call this last.
    Listing read()
    {
        readFound();
        m_failures.insert(m_failures.end(), std::make_move_iterator(m_readFailures.begin()),
            std::make_move_iterator(m_readFailures.end()));
        m_listing.failures = std::move(m_failures);
        m_listing.interruptedRenames = std::move(m_interruptedRenames);
        m_listing.isComplete = !m_options.stop.stop_requested();
        return std::move(m_listing);
    }

private:
    static void removeTrashFolders(std::vector<platform::FolderEntry> &entries, const platform::Folder &folder)
    {
        const auto isTrash = [](const platform::FolderEntry &entry) { return isTrashFolderName(entry.name); };
        // The system is asked only where there is such a name: nearly nowhere.
        if (std::ranges::any_of(entries, isTrash) && folder.isTopOfDrive())
            std::erase_if(entries, isTrash);
    }

    /// Makes rows of the files found since the last call.
    void readFound()
    {
        ScanOptions options = m_options;
        if (options.progress) {
            options.progress = [this](Progress now) {
                now.done += m_readCount;
                now.total = m_fileCount;
                m_options.progress(now);
            };
        }
        FolderRows files = readFolders(std::exchange(m_found, {}), options);
        m_readCount += static_cast<qsizetype>(files.rows.size());
        m_listing.rows.reserve(m_listing.rows.size() + files.rows.size());
        for (std::size_t i = 0; i < files.rows.size(); ++i) {
            if (files.hasTag[i])
                m_listing.rows.push_back(std::move(files.rows[i]));
        }
        std::move(files.failures.begin(), files.failures.end(), std::back_inserter(m_readFailures));
        m_listing.filesRead += files.readCount;
        m_searching.restart();
    }

    const ScanOptions &m_options;
    const QString m_root;
    QElapsedTimer m_searching; ///< since files were read
    std::vector<FolderFiles> m_found;
    qsizetype m_fileCount = 0;
    qsizetype m_readCount = 0;
    Listing m_listing;
    std::vector<ListFailure> m_failures;     ///< of folders
    std::vector<ListFailure> m_readFailures; ///< of files
    QStringList m_interruptedRenames;
    std::set<FolderIdentity> m_seen;
};

} // namespace

bool isTrashFolderName(const QString &name)
{
    constexpr QStringView Trash = u".Trash";
    if (name == Trash || name == u"lost+found")
        return true;
    if (name.startsWith(u".Trash-")) { // and a user's number
        const QStringView number = QStringView(name).mid(Trash.size() + 1);
        return !number.isEmpty() &&
               std::ranges::all_of(number, [](QChar letter) { return letter >= u'0' && letter <= u'9'; });
    }
    return name.compare(u"$RECYCLE.BIN", Qt::CaseInsensitive) == 0 ||
           name.compare(u"System Volume Information", Qt::CaseInsensitive) == 0;
}

Result<Listing> ListFolder(const QString &folderPath, const QString &relativePrefix, const ScanOptions &options)
{
    const QString root = platform::withEndSeparator(folderPath);
    FolderWalk walk(options, root);
    const Result<QStringList> folders = walk.visit(root, relativePrefix);
    if (!folders)
        return tl::unexpected(folders.error());
    return walk.read();
}

Result<Listing> ListFolderTree(const QString &folderPath, const ScanOptions &options)
{
    const QString root = platform::withEndSeparator(folderPath);
    FolderWalk walk(options, root);
    const Result<QStringList> folders = walk.visit(root, QString());
    if (!folders)
        return tl::unexpected(folders.error());
    walk.descend(*folders);
    return walk.read();
}

Result<QStringList> GetSubfolders(const QString &folderPath, const std::stop_token &stop)
{
    const Result<platform::Folder> folder = platform::Folder::open(folderPath);
    if (!folder)
        return tl::unexpected(folder.error());
    const Result<std::vector<platform::FolderEntry>> entries = folder->entries(stop);
    if (!entries)
        return tl::unexpected(entries.error());
    return subfolders(*entries, platform::withEndSeparator(folderPath), stop);
}

std::vector<std::optional<ListedFile>> rereadFiles(
    const QString &folderPath, const QStringList &texts, const ScanOptions &options)
{
    std::vector<FolderFiles> folders;
    std::vector<std::vector<std::size_t>> positions; // of the folders' files among the texts
    QHash<QString, std::size_t> folderOfPrefix;
    for (qsizetype i = 0; i < texts.size(); ++i) {
        const QString prefix = platform::folderPrefix(texts[i]);
        auto folder = folderOfPrefix.constFind(prefix);
        if (folder == folderOfPrefix.cend()) {
            folder = folderOfPrefix.insert(prefix, folders.size());
            folders.push_back({platform::inFolder(folderPath, prefix), prefix, {}});
            positions.emplace_back();
        }
        folders[*folder].names.push_back(platform::nameOf(texts[i]));
        positions[*folder].push_back(static_cast<std::size_t>(i));
    }
    FolderRows files = readFolders(std::move(folders), options);
    std::vector<std::optional<ListedFile>> tags(static_cast<std::size_t>(texts.size()));
    std::size_t row = 0;
    for (const std::vector<std::size_t> &ofFolder : positions) {
        for (const std::size_t position : ofFolder) {
            if (files.hasTag[row])
                tags[position] = std::move(files.rows[row].file);
            ++row;
        }
    }
    return tags;
}

} // namespace ravlin
