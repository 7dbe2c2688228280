// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractItemModel>

#include <memory>
#include <optional>
#include <vector>

namespace ravlin {

/// A root of the folder tree.
struct FolderRoot
{
    enum class Kind
    {
        Home,
        Music,
        Drive
    };

    QString path; ///< without a separator at its end, but for the root of a file system
    Kind kind = Kind::Drive;
};

/// Where this user may keep music: the home and music folders if they exist, the roots of the file systems, and the
/// volumes mounted for the user.
std::vector<FolderRoot> standardFolderRoots();

/// The folders of the disk as a tree, read level by level as they are opened.
///
/// Folders come in the order of GetSubfolders(). Hidden ones are left out unless find() looked for them. Reading a
/// level also learns whether its folders have subfolders and can be read; after that, questions do no I/O. Changes on
/// the disk show only after refresh(). Interface thread only.
class FolderModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    enum Role
    {
        PathRole = Qt::UserRole, ///< QString: the full path, without a separator at its end but for a drive's root
        ReadableRole,            ///< bool: the folder can be listed
        RootKindRole             ///< int: FolderRoot::Kind; invalid below the roots
    };

    explicit FolderModel(const std::vector<FolderRoot> &roots, QObject *parent = nullptr);
    ~FolderModel() override;

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &index) const override;
    using QObject::parent;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool hasChildren(const QModelIndex &parent = {}) const override;
    bool canFetchMore(const QModelIndex &parent) const override;
    void fetchMore(const QModelIndex &parent) override;

    QString pathOf(const QModelIndex &index) const;

    struct Found
    {
        QModelIndex index;    ///< the folder, or its nearest ancestor that exists
        bool isExact = false; ///< it is the folder itself
    };
    /// Looks for a folder on the disk and reads the levels down to it. path: absolute, without "." and "..". If several
    /// roots lead to the folder, uses the root of near, else the deepest.
    Found find(const QString &path, const QModelIndex &near = {});

    /// Reads all known levels again, keeping the nodes that still exist.
    void refresh();
    /// Adds the roots that it lacks, each before the next one of these that it has. Roots that are gone stay.
    void addRoots(const std::vector<FolderRoot> &roots);

private:
    struct Node;
    struct Subfolder;
    using Nodes = std::vector<std::unique_ptr<Node>>;

    static Node *nodeOf(const QModelIndex &index);
    QModelIndex indexOf(const Node *node) const;
    Nodes &childrenOf(const QModelIndex &parent);
    static std::vector<Subfolder> readSubfolders(const Node &node);
    static void look(Subfolder &subfolder);

    static std::unique_ptr<Node> rootNode(const FolderRoot &root);
    void load(Node &node);
    void refreshNode(Node &node);
    void updateChildren(Node &node, const std::vector<Subfolder> &found);
    void insertChild(Node &parent, const Subfolder &subfolder);
    void removeChild(Node &parent, std::size_t row);
    Node *child(Node &parent, const QString &name);
    Node *rootFor(const QString &path, const QModelIndex &near) const;

    Nodes m_roots;
};

} // namespace ravlin
