// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

#include <QSemaphore>

namespace ravlin::test {

/// The system's own files, but open() waits until the test lets it through, as with a drive that has to spin up.
class GatedFileSystem final : public platform::FileSystem
{
public:
    /// Lets that many files be opened.
    void letThrough(int count) { m_gate.release(count); }

    Result<std::unique_ptr<platform::File>> open(const QString &path, platform::OpenMode mode) override
    {
        m_gate.acquire();
        return m_inner.open(path, mode);
    }
    Result<std::unique_ptr<platform::File>> openUnlinked(const QString &path, platform::OpenMode mode) override
    {
        return m_inner.openUnlinked(path, mode);
    }
    Result<std::unique_ptr<platform::File>> createNew(const QString &path) override { return m_inner.createNew(path); }
    Result<platform::FileInfo> info(const QString &path) override { return m_inner.info(path); }
    Result<QString> canonicalPath(const QString &path) override { return m_inner.canonicalPath(path); }
    Result<void> replace(const QString &from, const QString &to) override { return m_inner.replace(from, to); }
    Result<void> renameNew(const QString &from, const QString &to) override { return m_inner.renameNew(from, to); }
    Result<void> createFolder(const QString &path) override { return m_inner.createFolder(path); }
    Result<void> removeFolder(const QString &path) override { return m_inner.removeFolder(path); }
    Result<void> remove(const QString &path) override { return m_inner.remove(path); }
    Result<void> setPermissions(const QString &path, quint32 permissions) override
    {
        return m_inner.setPermissions(path, permissions);
    }
    Result<void> syncFolder(const QString &folder) override { return m_inner.syncFolder(folder); }
    Result<qint64> freeBytes(const QString &path) override { return m_inner.freeBytes(path); }
    Result<std::vector<QString>> names(const QString &folder) override { return m_inner.names(folder); }
    quint32 currentUser() override { return m_inner.currentUser(); }
    quint32 currentGroup() override { return m_inner.currentGroup(); }

private:
    platform::FileSystem &m_inner = platform::FileSystem::native();
    QSemaphore m_gate;
};

} // namespace ravlin::test
