// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/list/folderscan.h"

#include "core/files/list/folderreading.h"
#include "core/platform/folder.h"
#include "core/platform/namecheck.h"
#include "core/storage/saferename.h"
#include "core/storage/safewrite.h"

#include <QHash>

#include <algorithm>
#include <iterator>
#include <set>

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

/// Finds the files of a listing in their order. Their tags are read once all are known, so that the cores share the
/// work evenly however small the folders are. Only one folder is open at a time: depth costs no descriptors.
class FolderWalk
{
public:
    FolderWalk(const ScanOptions &options, QString root) : m_options(options), m_root(std::move(root)) {}

    /// Finds a folder's own files and returns its subfolders.
    Result<QStringList> visit(const QString &folderPath, const QString &relativePrefix)
    {
        const Result<platform::Folder> folder = platform::Folder::open(folderPath);
        if (!folder)
            return tl::unexpected(folder.error());
        if (!m_seen.insert(folder->identity()).second)
            return QStringList();
        const Result<std::vector<platform::FolderEntry>> entries = folder->entries(m_options.stop);
        if (!entries)
            return tl::unexpected(entries.error());
        FolderFiles files{folderPath, relativePrefix, {}};
        bool hasAside = false;
        for (const platform::FolderEntry &entry : *entries) {
            if (isListed(entry))
                files.names.push_back(entry.name);
            hasAside = hasAside || storage::nameBeforeAside(entry.name).has_value();
        }
        if (hasAside)
            m_interruptedRenames.push_back(folderPath);
        m_fileCount += static_cast<qsizetype>(files.names.size());
        if (!files.names.empty())
            m_found.push_back(std::move(files));
        if (m_options.progress)
            m_options.progress({0, m_fileCount, folderPath});
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
        }
        for (const QStringList &next : below) {
            if (!next.isEmpty())
                descend(next);
        }
    }

    /// Reads the tags of the files found. Call this last.
    Listing read()
    {
        FolderRows files = readFolders(std::move(m_found), m_options);
        Listing listing;
        if (std::find(files.hasTag.begin(), files.hasTag.end(), false) == files.hasTag.end()) {
            listing.rows = std::move(files.rows);
        } else {
            for (std::size_t i = 0; i < files.rows.size(); ++i) {
                if (files.hasTag[i])
                    listing.rows.push_back(std::move(files.rows[i]));
            }
        }
        listing.failures = std::move(m_failures);
        listing.interruptedRenames = std::move(m_interruptedRenames);
        std::move(files.failures.begin(), files.failures.end(), std::back_inserter(listing.failures));
        listing.filesRead = files.readCount;
        listing.isComplete = !m_options.stop.stop_requested();
        return listing;
    }

private:
    const ScanOptions &m_options;
    const QString m_root;
    std::vector<FolderFiles> m_found;
    qsizetype m_fileCount = 0;
    std::vector<ListFailure> m_failures;
    QStringList m_interruptedRenames;
    std::set<FolderIdentity> m_seen;
};

} // namespace

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
