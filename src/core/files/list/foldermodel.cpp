// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/list/foldermodel.h"

#include "core/files/list/listcolumns.h"
#include "core/platform/folder.h"
#include "core/platform/parallel.h"

#include <QDir>
#include <QStandardPaths>
#include <QStorageInfo>

#include <algorithm>
#include <set>

namespace ravlin {

/// What is known of a folder in a folder.
struct FolderModel::Subfolder
{
    QString path;
    QString name;
    bool isHidden = false;
    bool isReadable = true;
    bool hasSubfolders = false;

    /// The order of GetSubfolders: by the character codes of the upper-case path with the separator at its end.
    QString orderKey() const { return platform::withEndSeparator(name).toUpper(); }
    bool operator<(const Subfolder &other) const
    {
        const QString key = orderKey();
        const QString otherKey = other.orderKey();
        return key != otherKey ? key < otherKey : name < other.name;
    }
};

struct FolderModel::Node
{
    Subfolder folder;
    Node *parent = nullptr;
    int row = 0;
    std::optional<FolderRoot::Kind> rootKind = {};
    bool isLoaded = false;
    Nodes children = {};
};

namespace {

bool contains(const QString &root, const QString &path)
{
    return platform::withEndSeparator(path).startsWith(platform::withEndSeparator(root), platform::NameCase);
}

void addRoot(std::vector<FolderRoot> &roots, const QString &path, FolderRoot::Kind kind)
{
    const QString native = QDir::toNativeSeparators(QDir::cleanPath(path));
    const auto isSame = [&](const FolderRoot &root) { return root.path == native; };
    if (!path.isEmpty() && QDir(path).exists() && std::none_of(roots.begin(), roots.end(), isSame))
        roots.push_back({native, kind});
}

bool isMountedForUsers(const QString &path)
{
    return path.startsWith(QStringLiteral("/media/")) || path.startsWith(QStringLiteral("/run/media/")) ||
           path.startsWith(QStringLiteral("/mnt/"));
}

} // namespace

std::vector<FolderRoot> standardFolderRoots()
{
    std::vector<FolderRoot> roots;
    addRoot(roots, QStandardPaths::writableLocation(QStandardPaths::HomeLocation), FolderRoot::Kind::Home);
    addRoot(roots, QStandardPaths::writableLocation(QStandardPaths::MusicLocation), FolderRoot::Kind::Music);
    for (const QStorageInfo &volume : QStorageInfo::mountedVolumes()) {
        if (volume.isReady() && isMountedForUsers(volume.rootPath()))
            addRoot(roots, volume.rootPath(), FolderRoot::Kind::Drive);
    }
    for (const QFileInfo &drive : QDir::drives())
        addRoot(roots, drive.filePath(), FolderRoot::Kind::Drive);
    return roots;
}

FolderModel::FolderModel(const std::vector<FolderRoot> &roots, QObject *parent) : QAbstractItemModel(parent)
{
    addRoots(roots);
}

FolderModel::~FolderModel() = default;

std::unique_ptr<FolderModel::Node> FolderModel::rootNode(const FolderRoot &root)
{
    Subfolder folder;
    folder.path = root.path;
    // A drive's root goes by the name "C:".
    const bool isRoot = root.path.size() > 1 && root.path.endsWith(platform::Separator);
    const QString path = isRoot ? root.path.chopped(1) : root.path;
    const QString name = platform::nameOf(path);
    folder.name = name.isEmpty() ? path : name;
    look(folder);
    return std::make_unique<Node>(Node{folder, nullptr, 0, root.kind, false, Nodes()});
}

// The item model

FolderModel::Node *FolderModel::nodeOf(const QModelIndex &index)
{
    return static_cast<Node *>(index.internalPointer());
}

QModelIndex FolderModel::indexOf(const Node *node) const
{
    return node ? createIndex(node->row, 0, node) : QModelIndex();
}

FolderModel::Nodes &FolderModel::childrenOf(const QModelIndex &parent)
{
    return parent.isValid() ? nodeOf(parent)->children : m_roots;
}

QModelIndex FolderModel::index(int row, int column, const QModelIndex &parent) const
{
    if (!hasIndex(row, column, parent))
        return {};
    const Nodes &siblings = parent.isValid() ? nodeOf(parent)->children : m_roots;
    return indexOf(siblings[static_cast<std::size_t>(row)].get());
}

QModelIndex FolderModel::parent(const QModelIndex &index) const
{
    return index.isValid() ? indexOf(nodeOf(index)->parent) : QModelIndex();
}

int FolderModel::rowCount(const QModelIndex &parent) const
{
    return static_cast<int>(parent.isValid() ? nodeOf(parent)->children.size() : m_roots.size());
}

int FolderModel::columnCount(const QModelIndex &) const
{
    return 1;
}

QVariant FolderModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const Node &node = *nodeOf(index);
    switch (role) {
    case Qt::DisplayRole:
        return shownName(node.folder.name);
    case Qt::ToolTipRole:
        return shownName(node.folder.path);
    case PathRole:
        return node.folder.path;
    case ReadableRole:
        return node.folder.isReadable;
    case RootKindRole:
        return node.rootKind ? QVariant(static_cast<int>(*node.rootKind)) : QVariant();
    default:
        return {};
    }
}

bool FolderModel::hasChildren(const QModelIndex &parent) const
{
    if (!parent.isValid())
        return !m_roots.empty();
    const Node &node = *nodeOf(parent);
    return node.isLoaded ? !node.children.empty() : node.folder.hasSubfolders;
}

bool FolderModel::canFetchMore(const QModelIndex &parent) const
{
    return parent.isValid() && !nodeOf(parent)->isLoaded;
}

void FolderModel::fetchMore(const QModelIndex &parent)
{
    if (canFetchMore(parent))
        load(*nodeOf(parent));
}

QString FolderModel::pathOf(const QModelIndex &index) const
{
    return index.isValid() ? nodeOf(index)->folder.path : QString();
}

// The disk

void FolderModel::look(Subfolder &subfolder)
{
    const Result<platform::Folder> folder = platform::Folder::open(subfolder.path);
    const Result<bool> has = folder ? folder->hasVisibleSubfolder() : tl::unexpected(folder.error());
    subfolder.isReadable = has.has_value();
    subfolder.hasSubfolders = has.value_or(false);
}

std::vector<FolderModel::Subfolder> FolderModel::readSubfolders(const Node &node)
{
    constexpr std::size_t FewFolders = 8; // each costs system calls, on a network a round trip
    const Result<platform::Folder> folder = platform::Folder::open(node.folder.path);
    if (!folder)
        return {};
    std::vector<Subfolder> found;
    for (const platform::FolderEntry &entry : folder->entries().value_or(std::vector<platform::FolderEntry>())) {
        if (entry.kind == platform::EntryKind::Folder)
            found.push_back({platform::inFolder(node.folder.path, entry.name), entry.name, entry.isHidden});
    }
    const auto isShown = [&](const Subfolder &subfolder) {
        const auto isSame = [&](const std::unique_ptr<Node> &child) { return child->folder.name == subfolder.name; };
        return !subfolder.isHidden || std::any_of(node.children.begin(), node.children.end(), isSame);
    };
    found.erase(std::partition(found.begin(), found.end(), isShown), found.end());
    platform::parallelFor(
        found.size(), [&](std::size_t i) { look(found[i]); }, FewFolders);
    std::sort(found.begin(), found.end());
    return found;
}

void FolderModel::load(Node &node)
{
    const std::vector<Subfolder> found = readSubfolders(node);
    node.isLoaded = true;
    if (found.empty())
        return;
    beginInsertRows(indexOf(&node), 0, static_cast<int>(found.size()) - 1);
    for (const Subfolder &subfolder : found)
        node.children.push_back(
            std::make_unique<Node>(Node{subfolder, &node, static_cast<int>(node.children.size()), {}, false, Nodes()}));
    endInsertRows();
}

void FolderModel::insertChild(Node &parent, const Subfolder &subfolder)
{
    Nodes &children = parent.children;
    const auto isBefore = [](const std::unique_ptr<Node> &child, const Subfolder &other) {
        return child->folder < other;
    };
    const auto place = std::lower_bound(children.begin(), children.end(), subfolder, isBefore);
    const int row = static_cast<int>(place - children.begin());
    beginInsertRows(indexOf(&parent), row, row);
    const auto inserted =
        children.insert(place, std::make_unique<Node>(Node{subfolder, &parent, row, {}, false, Nodes()}));
    for (auto next = inserted + 1; next != children.end(); ++next)
        ++(*next)->row;
    endInsertRows();
}

void FolderModel::removeChild(Node &parent, std::size_t row)
{
    Nodes &children = parent.children;
    const int number = static_cast<int>(row);
    beginRemoveRows(indexOf(&parent), number, number);
    for (auto next = children.begin() + number + 1; next != children.end(); ++next)
        --(*next)->row;
    const std::unique_ptr<Node> removed = std::move(children[row]);
    children.erase(children.begin() + number);
    endRemoveRows();
}

void FolderModel::refresh()
{
    for (const std::unique_ptr<Node> &root : m_roots) {
        look(root->folder);
        Q_EMIT dataChanged(indexOf(root.get()), indexOf(root.get()));
        refreshNode(*root);
    }
}

void FolderModel::addRoots(const std::vector<FolderRoot> &roots)
{
    const auto placeOf = [this](const FolderRoot &root) {
        return std::find_if(m_roots.begin(), m_roots.end(),
            [&](const std::unique_ptr<Node> &known) { return known->folder.path == root.path; });
    };
    auto place = m_roots.end();
    for (std::size_t i = roots.size(); i-- > 0;) {
        const FolderRoot &root = roots[i];
        if (const auto known = placeOf(root); known != m_roots.end()) {
            place = known;
            continue;
        }
        const int row = static_cast<int>(place - m_roots.begin());
        beginInsertRows({}, row, row);
        place = m_roots.insert(place, rootNode(root));
        int next = 0;
        for (const std::unique_ptr<Node> &node : m_roots)
            node->row = next++;
        endInsertRows();
    }
}

void FolderModel::refreshNode(Node &node)
{
    if (!node.isLoaded)
        return;
    updateChildren(node, readSubfolders(node));
    for (const std::unique_ptr<Node> &child : node.children)
        refreshNode(*child);
}

void FolderModel::updateChildren(Node &node, const std::vector<Subfolder> &found)
{
    for (std::size_t row = node.children.size(); row-- > 0;) {
        const Subfolder &old = node.children[row]->folder;
        const auto same = std::lower_bound(found.begin(), found.end(), old);
        if (same == found.end() || same->name != old.name)
            removeChild(node, row);
    }
    // The remaining children are among those found, in the same order.
    for (std::size_t row = 0; row < found.size(); ++row) {
        if (row == node.children.size() || node.children[row]->folder.name != found[row].name)
            insertChild(node, found[row]);
        else
            node.children[row]->folder = found[row];
    }
    if (!found.empty())
        Q_EMIT dataChanged(indexOf(node.children.front().get()), indexOf(node.children.back().get()));
}

// Finding a path

FolderModel::Node *FolderModel::rootFor(const QString &path, const QModelIndex &near) const
{
    Node *nearRoot = near.isValid() ? nodeOf(near) : nullptr;
    while (nearRoot && nearRoot->parent)
        nearRoot = nearRoot->parent;
    if (nearRoot && contains(nearRoot->folder.path, path))
        return nearRoot;
    Node *deepest = nullptr;
    for (const std::unique_ptr<Node> &root : m_roots) {
        if (contains(root->folder.path, path) && (!deepest || root->folder.path.size() > deepest->folder.path.size()))
            deepest = root.get();
    }
    return deepest;
}

FolderModel::Node *FolderModel::child(Node &parent, const QString &name)
{
    if (!parent.isLoaded)
        load(parent);
    const auto isSame = [&](const std::unique_ptr<Node> &node) {
        return node->folder.name.compare(name, platform::NameCase) == 0;
    };
    const auto known = std::find_if(parent.children.begin(), parent.children.end(), isSame);
    const QString path = platform::inFolder(parent.folder.path, name);
    const Result<platform::FileInfo> info = platform::FileSystem::native().info(path);
    if (!info || !info->isFolder)
        return nullptr;
    if (known != parent.children.end())
        return known->get();
    Subfolder subfolder{path, name}; // hidden, or made since the level was read
    look(subfolder);
    insertChild(parent, subfolder);
    return std::find_if(parent.children.begin(), parent.children.end(), isSame)->get();
}

FolderModel::Found FolderModel::find(const QString &path, const QModelIndex &near)
{
    Node *node = rootFor(path, near);
    if (!node)
        return {};
    const QString below = platform::withEndSeparator(path).mid(platform::withEndSeparator(node->folder.path).size());
    for (const QString &name : below.split(platform::Separator, Qt::SkipEmptyParts)) {
        Node *next = child(*node, name);
        if (!next)
            return {indexOf(node), false};
        node = next;
    }
    return {indexOf(node), platform::FileSystem::native().info(node->folder.path).has_value()};
}

} // namespace ravlin
