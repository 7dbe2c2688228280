// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/faultyfilesystem.h"

#include <algorithm>
#include <cstdlib>
#include <string>

namespace ravlin::test {

using platform::File;
using platform::FileInfo;
using platform::HeldFolder;
using platform::Node;
using platform::OpenMode;
using platform::Place;

namespace {

bool movesBytes(Call call)
{
    return call == Call::Write || call == Call::Copy;
}

Error injectedError(Call call, const FaultPlan &plan)
{
    const ErrorCode usual = movesBytes(call) ? ErrorCode::NoSpace : ErrorCode::Io;
    return {plan.code.value_or(usual), {}, QStringLiteral("injected")};
}

size_t half(size_t size)
{
    return std::max<size_t>(size / 2, 1);
}

} // namespace

FaultyFileSystem::Step FaultyFileSystem::step(Call call)
{
    if (beforeCall)
        beforeCall(call);
    const std::lock_guard lock(m_mutex);
    const int index = m_count;
    const bool isCounted = !m_plan || !m_plan->only || *m_plan->only == call;
    if (isCounted)
        ++m_count;
    if (!m_plan)
        return {};
    if (m_failNext) {
        m_failNext = false;
        return {.error = injectedError(call, *m_plan)};
    }
    if (!isCounted || index < m_plan->at)
        return {};
    if (index > m_plan->at)
        return m_plan->forEver ? Step{.error = injectedError(call, *m_plan)} : Step{};

    m_fired = true;
    switch (m_plan->fault) {
    case Fault::Fail:
        break;
    case Fault::FailLater:
        if (!movesBytes(call))
            break;
        m_failNext = true;
        return {.isShort = true};
    case Fault::Short:
        return {.isShort = true};
    case Fault::Corrupt:
        return {.isCorrupt = true};
    case Fault::Die:
        std::_Exit(DeathStatus);
    case Fault::DieAfter:
        return {.diesAfter = true};
    }
    return {.error = injectedError(call, *m_plan)};
}

template <typename Real>
auto FaultyFileSystem::forward(Call call, Real real) -> decltype(real())
{
    const Step planned = step(call);
    if (planned.error)
        return tl::unexpected(*planned.error);
    auto result = real();
    if (planned.diesAfter)
        std::_Exit(DeathStatus);
    return result;
}

/// A file of a FaultyFileSystem.
class FaultyFile final : public File
{
public:
    FaultyFile(FaultyFileSystem &fileSystem, std::unique_ptr<File> inner)
        : m_fileSystem(fileSystem), m_inner(std::move(inner))
    {
    }

    Result<qint64> readAt(std::span<char> buffer, qint64 offset) override
    {
        return m_fileSystem.forward(Call::Read, [&] { return m_inner->readAt(buffer, offset); });
    }

    Result<qint64> writeAt(std::span<const char> bytes, qint64 offset) override
    {
        const auto planned = m_fileSystem.step(Call::Write);
        if (planned.error)
            return tl::unexpected(*planned.error);
        QByteArray changed;
        if (planned.isShort) {
            bytes = bytes.first(half(bytes.size()));
        } else if (planned.isCorrupt) {
            changed = QByteArray(bytes.data(), static_cast<qsizetype>(bytes.size()));
            changed[changed.size() / 2] = static_cast<char>(~changed.at(changed.size() / 2));
            bytes = {changed.constData(), static_cast<size_t>(changed.size())};
        }
        auto written = m_inner->writeAt(bytes, offset);
        if (planned.diesAfter)
            std::_Exit(FaultyFileSystem::DeathStatus);
        return written;
    }

    Result<qint64> copyFrom(File &source, qint64 sourceOffset, qint64 offset, qint64 length) override
    {
        const auto planned = m_fileSystem.step(Call::Copy);
        if (planned.error)
            return tl::unexpected(*planned.error);
        if (planned.isShort)
            length = static_cast<qint64>(half(static_cast<size_t>(length)));
        auto copied = m_inner->copyFrom(*inner(source).m_inner, sourceOffset, offset, length);
        if (planned.isCorrupt && copied) {
            const auto junk = std::string(16, '\xA5');
            static_cast<void>(m_inner->writeAt({junk.data(), junk.size()}, offset));
        }
        if (planned.diesAfter)
            std::_Exit(FaultyFileSystem::DeathStatus);
        return copied;
    }

    Result<void> truncate(qint64 size) override
    {
        return m_fileSystem.forward(Call::Truncate, [&] { return m_inner->truncate(size); });
    }
    Result<void> sync() override
    {
        return m_fileSystem.forward(Call::Sync, [&] { return m_inner->sync(); });
    }
    Result<FileInfo> info() override
    {
        return m_fileSystem.forward(Call::FileInfo, [&] { return m_inner->info(); });
    }
    Result<void> takeOwner(File &source) override
    {
        return m_fileSystem.forward(Call::TakeMetadata, [&] { return m_inner->takeOwner(*inner(source).m_inner); });
    }
    Result<void> takeAttributes(File &source) override
    {
        return m_fileSystem.forward(
            Call::TakeMetadata, [&] { return m_inner->takeAttributes(*inner(source).m_inner); });
    }
    Result<void> takePermissions(File &source) override
    {
        return m_fileSystem.forward(
            Call::TakeMetadata, [&] { return m_inner->takePermissions(*inner(source).m_inner); });
    }
    void takeTimes(File &source) override { m_inner->takeTimes(*inner(source).m_inner); }
    Result<void> setPermissions(quint32 permissions) override
    {
        return m_fileSystem.forward(Call::SetPermissions, [&] { return m_inner->setPermissions(permissions); });
    }
    void forgetCached() override { m_inner->forgetCached(); }
    Result<bool> isPrivate() override
    {
        return m_fileSystem.forward(Call::IsPrivate, [&] { return m_inner->isPrivate(); });
    }
    Result<void> setModified(qint64 nanoseconds) override
    {
        return m_fileSystem.forward(Call::SetModified, [&] { return m_inner->setModified(nanoseconds); });
    }
    Result<bool> tryLock() override
    {
        return m_fileSystem.forward(Call::Lock, [&] { return m_inner->tryLock(); });
    }

private:
    static FaultyFile &inner(File &file) { return static_cast<FaultyFile &>(file); }

    FaultyFileSystem &m_fileSystem;
    std::unique_ptr<File> m_inner;
};

/// A folder of a FaultyFileSystem.
class FaultyFolder final : public HeldFolder
{
public:
    FaultyFolder(FaultyFileSystem &fileSystem, std::shared_ptr<HeldFolder> inner)
        : m_fileSystem(fileSystem), m_inner(std::move(inner))
    {
    }

    QString path() const override { return m_inner->path(); }
    Result<FileInfo> info() override
    {
        return m_fileSystem.forward(Call::FolderInfo, [&] { return m_inner->info(); });
    }
    Result<Node> node(const QString &name) override
    {
        return m_fileSystem.forward(Call::Node, [&] { return m_inner->node(name); });
    }
    Result<std::vector<QString>> names() override
    {
        return m_fileSystem.forward(Call::Names, [&] { return m_inner->names(); });
    }
    Result<std::unique_ptr<File>> openFile(const QString &name, OpenMode mode) override
    {
        return m_fileSystem.wrap(m_fileSystem.forward(Call::Open, [&] { return m_inner->openFile(name, mode); }));
    }
    Result<std::unique_ptr<File>> createNew(const QString &name) override
    {
        return m_fileSystem.wrap(m_fileSystem.forward(Call::Create, [&] { return m_inner->createNew(name); }));
    }
    Result<std::shared_ptr<HeldFolder>> openFolder(const QString &name) override
    {
        return m_fileSystem.wrap(m_fileSystem.forward(Call::OpenFolder, [&] { return m_inner->openFolder(name); }));
    }
    Result<std::shared_ptr<HeldFolder>> createFolder(const QString &name) override
    {
        return m_fileSystem.wrap(m_fileSystem.forward(Call::CreateFolder, [&] { return m_inner->createFolder(name); }));
    }
    Result<void> copyLink(HeldFolder &source, const QString &name, const QString &newName) override
    {
        return m_fileSystem.forward(
            Call::CopyLink, [&] { return m_inner->copyLink(*inner(source).m_inner, name, newName); });
    }
    Result<void> replace(const QString &name, HeldFolder &to, const QString &newName) override
    {
        return m_fileSystem.forward(Call::Replace, [&] { return m_inner->replace(name, *inner(to).m_inner, newName); });
    }
    Result<void> renameNew(const QString &name, HeldFolder &to, const QString &newName) override
    {
        return m_fileSystem.forward(
            Call::Rename, [&] { return m_inner->renameNew(name, *inner(to).m_inner, newName); });
    }
    Result<void> remove(const QString &name) override
    {
        return m_fileSystem.forward(Call::Remove, [&] { return m_inner->remove(name); });
    }
    Result<void> removeFolder(const QString &name) override
    {
        return m_fileSystem.forward(Call::RemoveFolder, [&] { return m_inner->removeFolder(name); });
    }
    Result<void> takeAttributes(HeldFolder &source) override
    {
        return m_fileSystem.forward(
            Call::FolderAttributes, [&] { return m_inner->takeAttributes(*inner(source).m_inner); });
    }
    Result<void> sync() override
    {
        return m_fileSystem.forward(Call::SyncFolder, [&] { return m_inner->sync(); });
    }

private:
    static FaultyFolder &inner(HeldFolder &folder) { return static_cast<FaultyFolder &>(folder); }

    FaultyFileSystem &m_fileSystem;
    std::shared_ptr<HeldFolder> m_inner;
};

void FaultyFileSystem::setPlan(const FaultPlan &plan)
{
    m_plan = plan;
    m_count = 0;
    m_fired = false;
    m_failNext = false;
}

Result<std::unique_ptr<File>> FaultyFileSystem::wrap(Result<std::unique_ptr<File>> file)
{
    if (!file)
        return file;
    return std::make_unique<FaultyFile>(*this, std::move(*file));
}

Result<std::shared_ptr<HeldFolder>> FaultyFileSystem::wrap(Result<std::shared_ptr<HeldFolder>> folder)
{
    if (!folder)
        return folder;
    return std::make_shared<FaultyFolder>(*this, std::move(*folder));
}

Result<std::unique_ptr<File>> FaultyFileSystem::open(const QString &path, OpenMode mode)
{
    return wrap(forward(Call::Open, [&] { return m_inner.open(path, mode); }));
}

Result<FileInfo> FaultyFileSystem::info(const QString &path)
{
    return forward(Call::Info, [&] { return m_inner.info(path); });
}

Result<QString> FaultyFileSystem::canonicalPath(const QString &path)
{
    return forward(Call::CanonicalPath, [&] { return m_inner.canonicalPath(path); });
}

Result<std::shared_ptr<HeldFolder>> FaultyFileSystem::openFolder(const QString &path)
{
    return wrap(forward(Call::OpenFolder, [&] { return m_inner.openFolder(path); }));
}

Result<Place> FaultyFileSystem::follow(const QString &path)
{
    return forward(Call::Follow, [&] { return m_inner.follow(path); }).map([&](const Place &place) {
        return Place{std::make_shared<FaultyFolder>(*this, place.folder), place.name};
    });
}

Result<void> FaultyFileSystem::renameNew(const QString &from, const QString &to)
{
    return forward(Call::Rename, [&] { return m_inner.renameNew(from, to); });
}

Result<void> FaultyFileSystem::createFolder(const QString &path)
{
    return forward(Call::CreateFolder, [&] { return m_inner.createFolder(path); });
}

Result<qint64> FaultyFileSystem::freeBytes(const QString &path)
{
    return forward(Call::FreeBytes, [&] { return m_inner.freeBytes(path); });
}

Result<std::vector<QString>> FaultyFileSystem::names(const QString &folder)
{
    return forward(Call::Names, [&] { return m_inner.names(folder); });
}

} // namespace ravlin::test
