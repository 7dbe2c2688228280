#include "files/folderscan.h"

#include "platform/folder.h"
#include "platform/parallel.h"
#include "platform/safewrite.h"

#include <algorithm>
#include <optional>
#include <set>

namespace ravlin {

namespace {

using FolderIdentity = std::pair<quint64, quint64>;

bool isListed(const platform::FolderEntry &entry)
{
    return entry.kind == platform::EntryKind::File && !entry.isHidden &&
           entry.name.endsWith(QStringLiteral(".mp3"), Qt::CaseInsensitive) && !platform::isLeftoverName(entry.name);
}

void appendRows(Listing &listing, platform::Folder &folder, const std::vector<platform::FolderEntry> &entries,
    const QString &folderPath, const QString &relativePrefix)
{
    std::vector<const platform::FolderEntry *> files;
    for (const platform::FolderEntry &entry : entries) {
        if (isListed(entry))
            files.push_back(&entry);
    }
    std::vector<Result<ListTag>> tags(files.size());
    platform::parallelFor(files.size(), [&](std::size_t i) {
        Result<std::unique_ptr<platform::File>> file = folder.openFile(files[i]->name);
        tags[i] = file ? readListTag(**file) : tl::unexpected(file.error());
    });
    listing.rows.reserve(listing.rows.size() + files.size());
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (tags[i])
            listing.rows.push_back({relativePrefix + files[i]->name, std::move(*tags[i])});
        else
            listing.failures.push_back({folderPath + files[i]->name, tags[i].error()});
    }
}

QStringList subfolders(const std::vector<platform::FolderEntry> &entries, const QString &folderPath)
{
    std::vector<std::pair<QString, QString>> found; // upper-case form and path
    for (const platform::FolderEntry &entry : entries) {
        if (entry.kind == platform::EntryKind::Folder) {
            const QString path = folderPath + entry.name + platform::Separator;
            found.emplace_back(path.toUpper(), path);
        }
    }
    std::sort(found.begin(), found.end());
    QStringList paths;
    for (std::pair<QString, QString> &entry : found)
        paths += std::move(entry.second);
    return paths;
}

/// The walk of ListFolderTree. One folder is open at a time, so that depth costs no descriptors.
class TreeWalk
{
public:
    TreeWalk(Listing &listing, const QString &root) : m_listing(listing), m_root(root) {}

    /// Lists a folder's own files and gives back its subfolders.
    Result<QStringList> list(const QString &folderPath)
    {
        Result<std::unique_ptr<platform::Folder>> folder = platform::Folder::open(folderPath);
        if (!folder)
            return tl::unexpected(folder.error());
        if (!m_seen.insert((*folder)->identity()).second)
            return QStringList();
        const Result<std::vector<platform::FolderEntry>> entries = (*folder)->entries();
        if (!entries)
            return tl::unexpected(entries.error());
        appendRows(m_listing, **folder, *entries, folderPath, folderPath.mid(m_root.size()));
        return subfolders(*entries, folderPath);
    }

    /// Lists the folders, then what lies below each of them.
    void descend(const QStringList &folders)
    {
        std::vector<QStringList> below;
        for (const QString &folder : folders) {
            Result<QStringList> found = list(folder);
            if (!found)
                m_listing.failures.push_back({folder, found.error()});
            below.push_back(found.value_or(QStringList()));
        }
        for (const QStringList &next : below) {
            if (!next.isEmpty())
                descend(next);
        }
    }

private:
    Listing &m_listing;
    const QString m_root;
    std::set<FolderIdentity> m_seen;
};

QString withSeparator(const QString &path)
{
    return path.endsWith(platform::Separator) ? path : path + platform::Separator;
}

} // namespace

QString ListRow::trackColumn() const
{
    bool isNumber = false;
    const int number = tag.track.toInt(&isNumber);
    return isNumber && number < 10 ? u'0' + tag.track : tag.track;
}

Result<Listing> ListFolder(const QString &folderPath, const QString &relativePrefix)
{
    Result<std::unique_ptr<platform::Folder>> folder = platform::Folder::open(folderPath);
    if (!folder)
        return tl::unexpected(folder.error());
    const Result<std::vector<platform::FolderEntry>> entries = (*folder)->entries();
    if (!entries)
        return tl::unexpected(entries.error());
    Listing listing;
    appendRows(listing, **folder, *entries, withSeparator(folderPath), relativePrefix);
    return listing;
}

Result<Listing> ListFolderTree(const QString &folderPath)
{
    Listing listing;
    const QString root = withSeparator(folderPath);
    TreeWalk walk(listing, root);
    Result<QStringList> folders = walk.list(root);
    if (!folders)
        return tl::unexpected(folders.error());
    walk.descend(*folders);
    return listing;
}

Result<QStringList> GetSubfolders(const QString &folderPath)
{
    Result<std::unique_ptr<platform::Folder>> folder = platform::Folder::open(folderPath);
    if (!folder)
        return tl::unexpected(folder.error());
    const Result<std::vector<platform::FolderEntry>> entries = (*folder)->entries();
    if (!entries)
        return tl::unexpected(entries.error());
    return subfolders(*entries, withSeparator(folderPath));
}

} // namespace ravlin
