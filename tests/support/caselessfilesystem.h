// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

#include <algorithm>
#include <optional>

namespace ravlin::test {

/// A folder of a CaselessFileSystem.
class CaselessFolder final : public platform::HeldFolder
{
public:
    explicit CaselessFolder(std::shared_ptr<platform::HeldFolder> inner) : m_inner(std::move(inner)) {}

    QString path() const override { return m_inner->path(); }
    Result<platform::FileInfo> info() override { return m_inner->info(); }
    Result<platform::Node> node(const QString &name) override { return m_inner->node(found(name)); }
    Result<std::vector<QString>> names() override { return m_inner->names(); }
    Result<std::unique_ptr<platform::File>> openFile(const QString &name, platform::OpenMode mode) override
    {
        return m_inner->openFile(found(name), mode);
    }
    Result<std::unique_ptr<platform::File>> createNew(const QString &name) override
    {
        return m_inner->createNew(found(name));
    }
    Result<std::shared_ptr<platform::HeldFolder>> openFolder(const QString &name) override
    {
        return m_inner->openFolder(found(name)).map(wrap);
    }
    Result<std::shared_ptr<platform::HeldFolder>> createFolder(const QString &name) override
    {
        return m_inner->createFolder(found(name)).map(wrap);
    }
    Result<void> copyLink(platform::HeldFolder &source, const QString &name, const QString &newName) override
    {
        return m_inner->copyLink(inner(source), found(name), found(newName));
    }
    Result<void> replace(const QString &name, platform::HeldFolder &to, const QString &newName) override
    {
        const QString target = static_cast<CaselessFolder &>(to).found(newName);
        const bool isItself = &to == this && target == found(name);
        return isItself ? Result<void>() : m_inner->replace(found(name), inner(to), target);
    }
    Result<void> renameNew(const QString &name, platform::HeldFolder &to, const QString &newName) override
    {
        if (static_cast<CaselessFolder &>(to).onDisk(newName))
            return tl::unexpected(Error{ErrorCode::AlreadyExists, newName, {}});
        return m_inner->renameNew(found(name), inner(to), newName);
    }
    Result<void> remove(const QString &name) override { return m_inner->remove(found(name)); }
    Result<void> removeFolder(const QString &name) override { return m_inner->removeFolder(found(name)); }
    Result<void> takeAttributes(platform::HeldFolder &source) override
    {
        return m_inner->takeAttributes(inner(source));
    }
    Result<void> sync() override { return m_inner->sync(); }

private:
    static std::shared_ptr<platform::HeldFolder> wrap(std::shared_ptr<platform::HeldFolder> folder)
    {
        return std::make_shared<CaselessFolder>(std::move(folder));
    }
    static platform::HeldFolder &inner(platform::HeldFolder &folder)
    {
        return *static_cast<CaselessFolder &>(folder).m_inner;
    }
    QString found(const QString &name) { return onDisk(name).value_or(name); }
    std::optional<QString> onDisk(const QString &name)
    {
        const auto names = m_inner->names();
        if (!names)
            return std::nullopt;
        const auto same =
            std::ranges::find(*names, name.toCaseFolded(), [](const QString &each) { return each.toCaseFolded(); });
        return same == names->end() ? std::nullopt : std::optional(*same);
    }

    std::shared_ptr<platform::HeldFolder> m_inner;
};

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
    Result<platform::FileInfo> info(const QString &path) override { return m_inner.info(found(path)); }
    Result<QString> canonicalPath(const QString &path) override { return m_inner.canonicalPath(found(path)); }
    Result<std::shared_ptr<platform::HeldFolder>> openFolder(const QString &path) override
    {
        return m_inner.openFolder(found(path)).map([](std::shared_ptr<platform::HeldFolder> folder) {
            return std::shared_ptr<platform::HeldFolder>(std::make_shared<CaselessFolder>(std::move(folder)));
        });
    }
    Result<platform::Place> follow(const QString &path) override
    {
        return m_inner.follow(found(path)).map([](const platform::Place &place) {
            return platform::Place{std::make_shared<CaselessFolder>(place.folder), place.name};
        });
    }
    Result<void> renameNew(const QString &from, const QString &to) override
    {
        if (onDisk(to))
            return tl::unexpected(Error{ErrorCode::AlreadyExists, to, {}});
        return m_inner.renameNew(found(from), to);
    }
    Result<void> createFolder(const QString &path) override { return m_inner.createFolder(found(path)); }
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
