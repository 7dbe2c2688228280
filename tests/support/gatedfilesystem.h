// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

#include <QSemaphore>

namespace ravlin::test {

/// The system's own files, but open() and follow() wait until the test lets it through, as with a drive that has to
/// spin up.
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
    Result<platform::FileInfo> info(const QString &path) override { return m_inner.info(path); }
    Result<QString> canonicalPath(const QString &path) override { return m_inner.canonicalPath(path); }
    Result<std::shared_ptr<platform::HeldFolder>> openFolder(const QString &path) override
    {
        return m_inner.openFolder(path);
    }
    Result<platform::Place> follow(const QString &path) override
    {
        m_gate.acquire();
        return m_inner.follow(path);
    }
    Result<void> renameNew(const QString &from, const QString &to) override { return m_inner.renameNew(from, to); }
    Result<void> createFolder(const QString &path) override { return m_inner.createFolder(path); }
    Result<qint64> freeBytes(const QString &path) override { return m_inner.freeBytes(path); }
    Result<std::vector<QString>> names(const QString &folder) override { return m_inner.names(folder); }
    quint32 currentUser() override { return m_inner.currentUser(); }
    quint32 currentGroup() override { return m_inner.currentGroup(); }

private:
    platform::FileSystem &m_inner = platform::FileSystem::native();
    QSemaphore m_gate;
};

} // namespace ravlin::test
