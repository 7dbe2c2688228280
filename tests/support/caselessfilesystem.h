// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

#include <algorithm>
#include <optional>

namespace ravlin::test {

/// The system's own files, found by names without regard to case, as on the file systems of Windows and of memory
/// cards: a name is taken when it differs from another in case alone, and renaming a file to such a name of its own
/// does nothing. Only the last name of a path is looked up so.
class CaselessFileSystem final : public platform::FileSystem
{
public:
    Result<std::unique_ptr<platform::File>> open(const QString &path, platform::OpenMode mode) override
    {
        return m_inner.open(found(path), mode);
    }
    Result<std::unique_ptr<platform::File>> openUnlinked(const QString &path, platform::OpenMode mode) override
    {
        return m_inner.openUnlinked(found(path), mode);
    }
    Result<std::unique_ptr<platform::File>> createNew(const QString &path) override
    {
        return m_inner.createNew(found(path));
    }
    Result<platform::FileInfo> info(const QString &path) override { return m_inner.info(found(path)); }
    Result<QString> canonicalPath(const QString &path) override { return m_inner.canonicalPath(found(path)); }
    Result<void> replace(const QString &from, const QString &to) override
    {
        return found(from) == found(to) ? Result<void>() : m_inner.replace(found(from), found(to));
    }
    Result<void> renameNew(const QString &from, const QString &to) override
    {
        if (onDisk(to))
            return tl::unexpected(Error{ErrorCode::AlreadyExists, to, {}});
        return m_inner.renameNew(found(from), to);
    }
    Result<void> createFolder(const QString &path) override { return m_inner.createFolder(found(path)); }
    Result<void> removeFolder(const QString &path) override { return m_inner.removeFolder(found(path)); }
    Result<void> remove(const QString &path) override { return m_inner.remove(found(path)); }
    Result<void> setPermissions(const QString &path, quint32 permissions) override
    {
        return m_inner.setPermissions(found(path), permissions);
    }
    Result<void> syncFolder(const QString &folder) override { return m_inner.syncFolder(folder); }
    Result<qint64> freeBytes(const QString &path) override { return m_inner.freeBytes(path); }
    Result<std::vector<QString>> names(const QString &folder) override { return m_inner.names(folder); }
    quint32 currentUser() override { return m_inner.currentUser(); }
    quint32 currentGroup() override { return m_inner.currentGroup(); }

private:
    /// The path as it is on the disk; as given when there is none.
    QString found(const QString &path) { return onDisk(path).value_or(path); }
    std::optional<QString> onDisk(const QString &path)
    {
        const QString folder = platform::folderPrefix(path);
        const auto names = m_inner.names(folder.isEmpty() ? QStringLiteral(".") : folder);
        if (!names)
            return std::nullopt;
        const QString key = platform::nameOf(path).toCaseFolded();
        const auto same = std::ranges::find(*names, key, [](const QString &name) { return name.toCaseFolded(); });
        return same == names->end() ? std::nullopt : std::optional(folder + *same);
    }

    platform::FileSystem &m_inner = platform::FileSystem::native();
};

} // namespace ravlin::test
