// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/faultyfilesystem.h"

#include <algorithm>
#include <cstdlib>
#include <string>

namespace ravlin::test {

using platform::File;
using platform::FileInfo;
using platform::OpenMode;

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
    Result<void> takeMetadata(File &source) override
    {
        return m_fileSystem.forward(Call::TakeMetadata, [&] { return m_inner->takeMetadata(*inner(source).m_inner); });
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

Result<std::unique_ptr<File>> FaultyFileSystem::open(const QString &path, OpenMode mode)
{
    return wrap(forward(Call::Open, [&] { return m_inner.open(path, mode); }));
}

Result<std::unique_ptr<File>> FaultyFileSystem::openUnlinked(const QString &path, OpenMode mode)
{
    return wrap(forward(Call::Open, [&] { return m_inner.openUnlinked(path, mode); }));
}

Result<std::unique_ptr<File>> FaultyFileSystem::createNew(const QString &path)
{
    return wrap(forward(Call::Create, [&] { return m_inner.createNew(path); }));
}

Result<FileInfo> FaultyFileSystem::info(const QString &path)
{
    return forward(Call::Info, [&] { return m_inner.info(path); });
}

Result<QString> FaultyFileSystem::canonicalPath(const QString &path)
{
    return forward(Call::CanonicalPath, [&] { return m_inner.canonicalPath(path); });
}

Result<void> FaultyFileSystem::replace(const QString &from, const QString &to)
{
    return forward(Call::Replace, [&] { return m_inner.replace(from, to); });
}

Result<void> FaultyFileSystem::renameNew(const QString &from, const QString &to)
{
    return forward(Call::Rename, [&] { return m_inner.renameNew(from, to); });
}

Result<void> FaultyFileSystem::createFolder(const QString &path)
{
    return forward(Call::CreateFolder, [&] { return m_inner.createFolder(path); });
}

Result<void> FaultyFileSystem::removeFolder(const QString &path)
{
    return forward(Call::RemoveFolder, [&] { return m_inner.removeFolder(path); });
}

Result<void> FaultyFileSystem::remove(const QString &path)
{
    return forward(Call::Remove, [&] { return m_inner.remove(path); });
}

Result<void> FaultyFileSystem::setPermissions(const QString &path, quint32 permissions)
{
    return forward(Call::SetPermissions, [&] { return m_inner.setPermissions(path, permissions); });
}

Result<void> FaultyFileSystem::syncFolder(const QString &folder)
{
    return forward(Call::SyncFolder, [&] { return m_inner.syncFolder(folder); });
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
