// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/storage/copyfile.h"

#include "core/platform/fileio.h"
#include "core/platform/nodes.h"

#include <algorithm>

namespace ravlin::storage {
namespace {

constexpr qint64 Step = 4 * 1024 * 1024; ///< bytes between two checks for a stop
constexpr qint64 EndLength = 64 * 1024;

tl::unexpected<Error> failure(ErrorCode code, const QString &path, const QString &detail)
{
    return tl::unexpected(Error{code, path, detail});
}

bool isSameState(const platform::FileInfo &one, const platform::FileInfo &other)
{
    return one.size == other.size && one.modified == other.modified && one.changed == other.changed;
}

/// The user knows nothing of the temporary file: errors of its are told of the source.
Error withPath(Error error, const QString &path)
{
    if (error.path.isEmpty() || isTemporaryName(platform::nameOf(error.path)))
        error.path = path;
    return error;
}

/// What the target's file system can't keep, or may not be given, is left out.
Result<void> unlessRefused(Result<void> taken)
{
    const bool isDamage = !taken && (taken.error().code == ErrorCode::NoSpace || taken.error().code == ErrorCode::Io);
    return isDamage ? taken : Result<void>();
}

} // namespace

FileCopy::FileCopy(
    platform::Place from, std::unique_ptr<platform::File> source, platform::FileInfo before, TemporaryFile temporary)
    : m_from(std::move(from)), m_source(std::move(source)), m_before(before), m_temporary(std::move(temporary))
{
}

Result<FileCopy> FileCopy::prepare(
    const platform::Place &from, const std::shared_ptr<platform::HeldFolder> &folder, const CopyWatch &watch)
{
    auto source = from.folder->openFile(from.name, platform::OpenMode::Read);
    if (!source)
        return tl::unexpected(source.error());
    const auto before = (*source)->info();
    if (!before)
        return tl::unexpected(withPath(before.error(), from.path()));
    auto temporary = TemporaryFile::create(folder, watch.journal);
    if (!temporary)
        return tl::unexpected(withPath(temporary.error(), from.path()));
    FileCopy copy(from, std::move(*source), *before, std::move(*temporary));
    if (const auto filled = copy.fill(watch); !filled)
        return tl::unexpected(withPath(filled.error(), from.path()));
    return copy;
}

Result<void> FileCopy::fill(const CopyWatch &watch)
{
    for (qint64 done = 0; done < m_before.size;) {
        if (watch.stop.stop_requested())
            return failure(ErrorCode::Cancelled, m_from.path(), QStringLiteral("stopped"));
        const qint64 length = std::min(Step, m_before.size - done);
        if (auto copied = platform::copyAll(*m_source, done, m_temporary.file(), done, length); !copied)
            return copied;
        done += length;
        if (watch.advanced)
            watch.advanced(length);
    }
    platform::File &file = m_temporary.file();
    return unlessRefused(file.takeOwner(*m_source)).and_then([&] { return file.takeAttributes(*m_source); }).map([&] {
        file.takeTimes(*m_source);
        // Windows updates the time when the handle that wrote is closed, unless the handle set it too.
        static_cast<void>(file.setModified(m_before.modified));
    });
}

Result<void> FileCopy::secure(CopyCheck check)
{
    auto secured = m_temporary.file().sync().and_then([&] { return compare(check); });
    if (!secured)
        return tl::unexpected(withPath(secured.error(), m_from.path()));
    return {};
}

Result<void> FileCopy::compare(CopyCheck check)
{
    const auto now = m_source->info();
    if (!now)
        return tl::unexpected(now.error());
    // Also by path: whoever moved the file or its folder elsewhere does not expect it to be deleted.
    const QString path = m_from.path();
    const auto named = platform::nodeAt(path);
    if (!named)
        return tl::unexpected(named.error());
    if (!isSameState(*now, m_before) || named->info.inode != now->inode || named->info.device != now->device)
        return failure(ErrorCode::ChangedMeanwhile, path, QStringLiteral("the source was changed while it was copied"));
    const auto made = m_temporary.file().info();
    if (!made)
        return tl::unexpected(made.error());

    Result<bool> same = made->size == m_before.size;
    if (check == CopyCheck::Everything) {
        m_temporary.file().forgetCached();
        if (*same)
            same = platform::sameBytes(*m_source, 0, m_temporary.file(), 0, m_before.size);
    } else if (*same) {
        const qint64 length = std::min(EndLength, m_before.size);
        const qint64 tail = m_before.size - length;
        same = platform::sameBytes(*m_source, 0, m_temporary.file(), 0, length);
        if (same && *same)
            same = platform::sameBytes(*m_source, tail, m_temporary.file(), tail, length);
    }
    if (!same)
        return tl::unexpected(same.error());
    if (!*same)
        return failure(ErrorCode::VerifyFailed, path, QStringLiteral("the copy reads back differently"));
    return {};
}

Result<void> FileCopy::place(const QString &name, Placing placing)
{
    // Last of all, so that nobody could open the copy as long as it was not whole.
    if (auto permitted = unlessRefused(m_temporary.file().takePermissions(*m_source)); !permitted)
        return tl::unexpected(withPath(permitted.error(), m_from.path()));
    const auto placed = placing == Placing::New ? m_temporary.moveToNew(name) : m_temporary.moveTo(name);
    return placed.map_error([&](const Error &error) { return withPath(error, m_from.path()); });
}

} // namespace ravlin::storage
