// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

#include <functional>
#include <mutex>
#include <optional>

/// A file system that fails on purpose, for one thread or several: forwards to another one, counts the calls, and at a
/// chosen call does what a full disk, a broken one, a killed program or another program would do.
namespace ravlin::test {

enum class Call
{
    Open,
    Create,
    Info,
    CanonicalPath,
    Follow,
    OpenFolder,
    FolderInfo,
    Node,
    CopyLink,
    Replace,
    Rename,
    CreateFolder,
    RemoveFolder,
    Remove,
    SetPermissions,
    SyncFolder,
    FolderAttributes,
    FreeBytes,
    Names,
    Read,
    Write,
    Truncate,
    Sync,
    FileInfo,
    Copy,
    TakeMetadata, ///< owner, attributes or permissions
    IsPrivate,
    SetModified,
    Lock,
};

enum class Fault
{
    Fail,      ///< the call does nothing and returns an error
    FailLater, ///< a write or copy does half its work and the call after it fails; other calls fail
    Short,     ///< a write or copy does half its work and says so; other calls work
    Corrupt,   ///< a write says it worked but one byte of it is wrong; other calls work
    Die,       ///< the program ends before the call, as if killed
    DieAfter,  ///< the program ends after the call
};

struct FaultPlan
{
    Fault fault = Fault::Fail;
    int at = 0;                         ///< the how manieth counted call, from 0
    std::optional<Call> only = {};      ///< count calls of this kind alone
    bool forEver = false;               ///< the counted calls after it fail too
    std::optional<ErrorCode> code = {}; ///< otherwise NoSpace for writing and Io for the rest
};

class FaultyFileSystem final : public platform::FileSystem
{
public:
    static constexpr int DeathStatus = 77; ///< exit status after Fault::Die and Fault::DieAfter

    explicit FaultyFileSystem(platform::FileSystem &inner = platform::FileSystem::native()) : m_inner(inner) {}

    /// Counting starts anew.
    void setPlan(const FaultPlan &plan);
    /// True once the planned call has come.
    bool hasFired() const { return m_fired; }
    /// Counted calls so far; without a plan all calls.
    int count() const { return m_count; }
    /// Told before each call: what another program does meanwhile.
    std::function<void(Call)> beforeCall;

    Result<std::unique_ptr<platform::File>> open(const QString &path, platform::OpenMode mode) override;
    Result<platform::FileInfo> info(const QString &path) override;
    Result<QString> canonicalPath(const QString &path) override;
    Result<std::shared_ptr<platform::HeldFolder>> openFolder(const QString &path) override;
    Result<platform::Place> follow(const QString &path) override;
    Result<void> renameNew(const QString &from, const QString &to) override;
    Result<void> createFolder(const QString &path) override;
    Result<qint64> freeBytes(const QString &path) override;
    Result<std::vector<QString>> names(const QString &folder) override;
    quint32 currentUser() override { return m_inner.currentUser(); }
    quint32 currentGroup() override { return m_inner.currentGroup(); }

private:
    friend class FaultyFile;
    friend class FaultyFolder;

    /// What is to happen to a call.
    struct Step
    {
        std::optional<Error> error = {};
        bool isShort = false;
        bool isCorrupt = false;
        bool diesAfter = false;
    };
    Step step(Call call);
    /// Runs the real call unless a fault is due.
    template <typename Real>
    auto forward(Call call, Real real) -> decltype(real());
    Result<std::unique_ptr<platform::File>> wrap(Result<std::unique_ptr<platform::File>> file);
    Result<std::shared_ptr<platform::HeldFolder>> wrap(Result<std::shared_ptr<platform::HeldFolder>> folder);

    platform::FileSystem &m_inner;
    std::mutex m_mutex; ///< of what follows
    std::optional<FaultPlan> m_plan;
    int m_count = 0;
    bool m_fired = false;
    bool m_failNext = false;
};

} // namespace ravlin::test
