// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

#include <algorithm>
#include <map>
#include <memory>

/// A file system in memory, for tests that save thousands of files and for fuzz targets: one flat set of paths, no
/// links, one user. Every change of a file gives it a new modification time, so that tests can check that nothing was
/// written. Header-only because fuzz targets link only the core.
namespace ravlin::test {

/// What a path leads to. A file that was replaced exists as long as it is open.
struct MemoryNode
{
    QByteArray content;
    platform::FileInfo info;
    bool isLocked = false;
};

/// An open file of a MemoryFileSystem.
class MemoryFile final : public platform::File
{
public:
    MemoryFile(std::shared_ptr<MemoryNode> node, qint64 &clock, bool isWritable)
        : m_node(std::move(node)), m_clock(clock), m_isWritable(isWritable)
    {
    }
    ~MemoryFile() override
    {
        if (m_hasLock)
            m_node->isLocked = false;
    }
    Q_DISABLE_COPY_MOVE(MemoryFile)

    Result<qint64> readAt(std::span<char> buffer, qint64 offset) override
    {
        const qint64 count = std::clamp<qint64>(m_node->content.size() - offset, 0, std::ssize(buffer));
        std::copy_n(
            m_node->content.constData() + std::min<qint64>(offset, m_node->content.size()), count, buffer.data());
        return count;
    }
    Result<qint64> writeAt(std::span<const char> bytes, qint64 offset) override
    {
        if (!m_isWritable)
            return refusal();
        const qint64 end = offset + std::ssize(bytes);
        if (m_node->content.size() < end)
            m_node->content.resize(end, '\0');
        std::copy(bytes.begin(), bytes.end(), m_node->content.data() + offset);
        touch();
        return std::ssize(bytes);
    }
    Result<void> truncate(qint64 size) override
    {
        if (!m_isWritable)
            return refusal();
        m_node->content.resize(size, '\0');
        touch();
        return {};
    }
    Result<void> sync() override { return {}; }
    Result<platform::FileInfo> info() override { return m_node->info; }
    Result<qint64> copyFrom(platform::File &source, qint64 sourceOffset, qint64 offset, qint64 length) override
    {
        const QByteArray &from = static_cast<MemoryFile &>(source).m_node->content;
        const QByteArray bytes = from.mid(sourceOffset, length);
        return bytes.isEmpty() ? Result<qint64>(0)
                               : writeAt({bytes.constData(), static_cast<size_t>(bytes.size())}, offset);
    }
    Result<void> takeOwner(platform::File &) override { return {}; }
    Result<void> takeAttributes(platform::File &) override { return {}; }
    Result<void> takePermissions(platform::File &source) override
    {
        m_node->info.permissions = static_cast<MemoryFile &>(source).m_node->info.permissions;
        return {};
    }
    void takeTimes(platform::File &source) override
    {
        m_node->info.modified = static_cast<MemoryFile &>(source).m_node->info.modified;
    }
    Result<void> setPermissions(quint32 permissions) override
    {
        m_node->info.permissions = permissions;
        return {};
    }
    void forgetCached() override {}
    Result<bool> isPrivate() override { return true; }
    Result<void> setModified(qint64 nanoseconds) override
    {
        m_node->info.modified = nanoseconds;
        return {};
    }
    Result<bool> tryLock() override
    {
        if (m_node->isLocked && !m_hasLock)
            return false;
        m_node->isLocked = m_hasLock = true;
        return true;
    }

private:
    static tl::unexpected<Error> refusal()
    {
        return tl::unexpected(Error{ErrorCode::AccessDenied, {}, QStringLiteral("opened for reading")});
    }
    void touch()
    {
        m_node->info.size = m_node->content.size();
        m_node->info.modified = ++m_clock;
    }

    std::shared_ptr<MemoryNode> m_node;
    qint64 &m_clock;
    bool m_isWritable;
    bool m_hasLock = false;
};

class MemoryFileSystem final : public platform::FileSystem
{
public:
    /// Creates or replaces a file.
    void put(const QString &path, const QByteArray &content)
    {
        const auto node = newNode(path);
        node->content = content;
        node->info.size = content.size();
    }
    /// The file's bytes; empty if there is none.
    QByteArray content(const QString &path) const
    {
        const auto found = m_nodes.find(path);
        return found == m_nodes.end() ? QByteArray() : found->second->content;
    }
    /// Number of files: one more than put means that something was left behind.
    size_t fileCount() const { return m_nodes.size(); }

    Result<std::unique_ptr<platform::File>> open(const QString &path, platform::OpenMode mode) override
    {
        const auto found = m_nodes.find(path);
        if (found == m_nodes.end())
            return missing(path);
        const bool isWriting = mode == platform::OpenMode::ReadWrite;
        if (isWriting && found->second->info.isReadOnly())
            return tl::unexpected(Error{ErrorCode::AccessDenied, path, {}});
        return std::make_unique<MemoryFile>(found->second, m_clock, isWriting);
    }
    Result<std::unique_ptr<platform::File>> createNew(const QString &path)
    {
        if (m_nodes.contains(path))
            return tl::unexpected(Error{ErrorCode::AlreadyExists, path, {}});
        return std::make_unique<MemoryFile>(newNode(path), m_clock, true);
    }
    Result<platform::FileInfo> info(const QString &path) override
    {
        const auto found = m_nodes.find(path);
        return found == m_nodes.end() ? Result<platform::FileInfo>(missing(path)) : found->second->info;
    }
    Result<QString> canonicalPath(const QString &path) override
    {
        return m_nodes.contains(path) ? Result<QString>(path) : missing(path);
    }
    Result<std::shared_ptr<platform::HeldFolder>> openFolder(const QString &path) override;
    Result<platform::Place> follow(const QString &path) override
    {
        if (!m_nodes.contains(path))
            return missing(path);
        return openFolder(platform::folderOf(path)).map([&](const std::shared_ptr<platform::HeldFolder> &folder) {
            return platform::Place{folder, platform::nameOf(path)};
        });
    }
    Result<void> replace(const QString &from, const QString &to)
    {
        const auto found = m_nodes.find(from);
        if (found == m_nodes.end())
            return missing(from);
        m_nodes[to] = found->second;
        m_nodes.erase(from);
        return {};
    }
    Result<void> renameNew(const QString &from, const QString &to) override
    {
        return m_nodes.contains(to) ? tl::unexpected(Error{ErrorCode::AlreadyExists, to, {}}) : replace(from, to);
    }
    Result<void> createFolder(const QString &path) override { return noFolders(path); }
    Result<void> remove(const QString &path) { return m_nodes.erase(path) > 0 ? Result<void>() : missing(path); }
    Result<qint64> freeBytes(const QString &) override { return qint64{1} << 40; }
    Result<std::vector<QString>> names(const QString &) override { return std::vector<QString>{}; }
    quint32 currentUser() override { return 0; }
    quint32 currentGroup() override { return 0; }

private:
    static tl::unexpected<Error> missing(const QString &path)
    {
        return tl::unexpected(Error{ErrorCode::NotFound, path, {}});
    }
    static tl::unexpected<Error> noFolders(const QString &path)
    {
        return tl::unexpected(Error{ErrorCode::Unsupported, path, {}});
    }
    std::shared_ptr<MemoryNode> newNode(const QString &path)
    {
        auto node = std::make_shared<MemoryNode>();
        node->info.inode = ++m_lastInode;
        node->info.modified = ++m_clock;
        node->info.permissions = 0644;
        node->info.isFile = true;
        m_nodes[path] = node;
        return node;
    }

    std::map<QString, std::shared_ptr<MemoryNode>> m_nodes;
    qint64 m_clock = 0;
    quint64 m_lastInode = 0;
};

/// A folder of a MemoryFileSystem: there are none in it, and it lists nothing.
class MemoryFolder final : public platform::HeldFolder
{
public:
    MemoryFolder(MemoryFileSystem &fileSystem, QString path) : m_fileSystem(fileSystem), m_path(std::move(path)) {}

    QString path() const override { return m_path; }
    Result<platform::FileInfo> info() override { return platform::FileInfo{.isFolder = true}; }
    Result<platform::Node> node(const QString &name) override
    {
        return m_fileSystem.info(in(name)).map([](const platform::FileInfo &info) {
            return platform::Node{platform::NodeKind::File, info};
        });
    }
    Result<std::vector<QString>> names() override { return std::vector<QString>{}; }
    Result<std::unique_ptr<platform::File>> openFile(const QString &name, platform::OpenMode mode) override
    {
        return m_fileSystem.open(in(name), mode);
    }
    Result<std::unique_ptr<platform::File>> createNew(const QString &name) override
    {
        return m_fileSystem.createNew(in(name));
    }
    Result<std::shared_ptr<platform::HeldFolder>> openFolder(const QString &name) override { return none(name); }
    Result<std::shared_ptr<platform::HeldFolder>> createFolder(const QString &name) override { return none(name); }
    Result<void> copyLink(platform::HeldFolder &, const QString &name, const QString &) override { return none(name); }
    Result<void> replace(const QString &name, platform::HeldFolder &to, const QString &newName) override
    {
        return m_fileSystem.replace(in(name), platform::inFolder(to.path(), newName));
    }
    Result<void> renameNew(const QString &name, platform::HeldFolder &to, const QString &newName) override
    {
        return m_fileSystem.renameNew(in(name), platform::inFolder(to.path(), newName));
    }
    Result<void> remove(const QString &name) override { return m_fileSystem.remove(in(name)); }
    Result<void> removeFolder(const QString &name) override { return none(name); }
    Result<void> takeAttributes(platform::HeldFolder &) override { return {}; }
    Result<void> sync() override { return {}; }

private:
    QString in(const QString &name) const { return platform::inFolder(m_path, name); }
    tl::unexpected<Error> none(const QString &name) const
    {
        return tl::unexpected(Error{ErrorCode::Unsupported, in(name), {}});
    }

    MemoryFileSystem &m_fileSystem;
    QString m_path;
};

inline Result<std::shared_ptr<platform::HeldFolder>> MemoryFileSystem::openFolder(const QString &path)
{
    return std::make_shared<MemoryFolder>(*this, path);
}

} // namespace ravlin::test
