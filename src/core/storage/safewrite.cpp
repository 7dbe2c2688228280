// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/storage/safewrite.h"

#include "core/platform/fileio.h"
#include "core/platform/nodes.h"
#include "core/platform/path.h"
#include "core/storage/changerecord.h"
#include "core/storage/leftovers.h"
#include "core/storage/redofile.h"
#include "core/storage/writeplan.h"

#include <chrono>
#include <optional>
#include <thread>

namespace ravlin::storage {
namespace {

tl::unexpected<Error> failure(ErrorCode code, const QString &detail)
{
    return tl::unexpected(Error{code, {}, detail});
}

tl::unexpected<Error> halfWritten(const Error &written, const Error &undone)
{
    return failure(ErrorCode::HalfWritten, written.detail + QStringLiteral("; undoing it failed: ") + undone.detail);
}

bool isSameState(const platform::FileInfo &one, const platform::FileInfo &other)
{
    // Programs set the time of the last change of the content back; nobody sets that of the last change at all.
    const bool isChanged = one.changed != other.changed && one.changed != 0 && other.changed != 0;
    return one.size == other.size && one.modified == other.modified && !isChanged && one.inode == other.inode &&
           one.device == other.device;
}

Result<platform::FileInfo> expectState(const Result<platform::FileInfo> &now, const platform::FileInfo &before)
{
    if (now && !isSameState(*now, before))
        return failure(ErrorCode::ChangedMeanwhile, QStringLiteral("the file was changed since it was read"));
    return now;
}

/// The file to be rewritten. It may be open for reading only until there is something to write: finding that out has to
/// work on read-only files too.
struct Original
{
    std::unique_ptr<platform::File> file;
    platform::FileInfo info;           ///< the permissions are those to restore, whatever they are meanwhile
    bool isWritable = false;           ///< open for writing
    bool isLifted = false;             ///< it lacks the read-only attribute that it had
    std::optional<Error> refusal = {}; ///< why it could not be opened for writing
};

Result<Original> openAs(HeldFile &held, platform::OpenMode mode, const platform::FileInfo &before)
{
    auto file = held.open(mode);
    if (!file)
        return tl::unexpected(file.error());
    const auto info = expectState(held.info(), before);
    if (!info)
        return tl::unexpected(info.error());
    return Original{.file = std::move(*file), .info = *info, .isWritable = mode == platform::OpenMode::ReadWrite};
}

Result<Original> openOriginal(HeldFile &held, const platform::FileInfo &before)
{
    if (before.isReadOnly())
        return openAs(held, platform::OpenMode::Read, before);
    auto original = openAs(held, platform::OpenMode::ReadWrite, before);
    if (original)
        return original;
    const Error refusal = original.error();
    const bool isRefused = refusal.code == ErrorCode::AccessDenied || refusal.code == ErrorCode::ReadOnly ||
                           refusal.code == ErrorCode::ReadOnlyDrive;
    if (!isRefused)
        return original;
    original = openAs(held, platform::OpenMode::Read, before);
    if (original)
        original->refusal = refusal;
    return original;
}

/// Its state now, if only we have changed it since: the change of its mode shows in the time of the last change.
Result<void> refresh(Original &original)
{
    const auto now = original.file->info();
    if (!now)
        return tl::unexpected(now.error());
    platform::FileInfo known = original.info;
    known.changed = now->changed;
    if (const auto same = expectState(now, known); !same)
        return tl::unexpected(same.error());
    original.info.changed = now->changed;
    return {};
}

/// Opens the original for writing unless it is. Lifts the read-only attribute by the handle that is open already.
Result<void> makeWritable(HeldFile &held, Original &original, const WriteOptions &options)
{
    if (original.info.isReadOnly()) {
        if (options.readOnlyFile == ReadOnlyFile::Refuse)
            return failure(ErrorCode::ReadOnly, QStringLiteral("the file is read-only"));
        constexpr quint32 OwnerMayWrite = 0200;
        original.isLifted = true;
        auto permitted = original.file->setPermissions(original.info.permissions | OwnerMayWrite).and_then([&] {
            return refresh(original);
        });
        if (!permitted)
            return permitted;
    } else if (original.isWritable) {
        return {};
    } else if (original.refusal) {
        return tl::unexpected(*original.refusal);
    }
    auto reopened = openAs(held, platform::OpenMode::ReadWrite, original.info);
    if (!reopened)
        return tl::unexpected(reopened.error());
    original.file = std::move(reopened->file);
    return {};
}

/// Keeps other programs of ours from writing the file, and checks that none has done so before. Waits for one that is
/// writing; a file is written within milliseconds, a long one on a slow disk within seconds.
Result<void> lock(HeldFile &held, Original &original)
{
    constexpr auto LongestWait = std::chrono::seconds(5);
    constexpr auto Pause = std::chrono::milliseconds(2);
    const auto deadline = std::chrono::steady_clock::now() + LongestWait;
    while (true) {
        const auto locked = original.file->tryLock();
        if (!locked && locked.error().code != ErrorCode::Unsupported)
            return tl::unexpected(locked.error());
        if (!locked || *locked)
            break;
        if (std::chrono::steady_clock::now() > deadline)
            return failure(ErrorCode::FileInUse, QStringLiteral("another program has locked the file"));
        std::this_thread::sleep_for(Pause);
    }
    const platform::Place &place = held.place();
    const auto named = place.folder->node(place.name).map([](const platform::Node &node) { return node.info; });
    const auto same = expectState(named, original.info);
    return same ? Result<void>() : tl::unexpected(same.error());
}

/// Sets the read-only attribute again, if it was lifted.
Result<void> restoreReadOnly(HeldFile &held, Original &original)
{
    if (!original.isLifted)
        return {};
    if (!original.file) {
        auto file = held.open(platform::OpenMode::Read);
        if (!file)
            return tl::unexpected(file.error());
        original.file = std::move(*file);
    }
    return original.file->setPermissions(original.info.permissions);
}

/// Best effort: a time that cannot be set is no reason to undo a save that worked.
void restoreModified(platform::File &file, const platform::FileInfo &before, const WriteOptions &options)
{
    if (options.keepModified || options.modified)
        static_cast<void>(file.setModified(options.modified.value_or(before.modified)));
}

Result<void> writePatches(platform::File &file, const std::vector<Patch> &patches, QByteArray Patch::*bytes)
{
    for (const Patch &patch : patches) {
        if (auto written = platform::writeAll(file, patch.*bytes, patch.offset); !written)
            return written;
    }
    // One block is old or new, whether it is on the disk or not. Of several some might be.
    return patches.size() > 1 ? file.sync() : Result<void>();
}

Result<void> expectNew(platform::File &file, const std::vector<Patch> &patches)
{
    for (const Patch &patch : patches) {
        const auto same = platform::sameBytes(file, patch.offset, patch.newBytes);
        if (!same)
            return tl::unexpected(same.error());
        if (!*same)
            return failure(ErrorCode::VerifyFailed, QStringLiteral("what was written reads back differently"));
    }
    return {};
}

/// The writes of an in-place change, undone if one fails. HalfWritten if that fails, too.
Result<void> patchFile(platform::File &file, const platform::FileInfo &before, const std::vector<Patch> &patches)
{
    auto written = writePatches(file, patches, &Patch::newBytes).and_then([&] { return expectNew(file, patches); });
    if (written)
        return {};
    const auto undone = writePatches(file, patches, &Patch::oldBytes);
    if (!undone)
        return halfWritten(written.error(), undone.error());
    static_cast<void>(file.setModified(before.modified)); // best effort
    return written;
}

/// Makes the new file ready to replace the original, but for its permissions.
Result<void> prepareReplacement(
    TemporaryFile &temporary, const RewriteTarget &target, const NewContent &content, const WriteOptions &options)
{
    platform::File &file = temporary.file();
    return writeContent(file, 0, target.file, content)
        .and_then([&] { return file.takeAttributes(target.file); })
        .and_then([&] {
            restoreModified(file, target.info, options);
            return file.sync();
        })
        .and_then([&] { return file.info(); })
        .and_then([&](const platform::FileInfo &info) -> Result<bool> {
            if (info.size != content.size)
                return false;
            return holdsContent(file, 0, target.file, content);
        })
        .and_then([](bool same) -> Result<void> {
            if (!same)
                return failure(ErrorCode::VerifyFailed, QStringLiteral("the new file reads back differently"));
            return {};
        });
}

/// Gives the new file the original's owner; checked before anything is copied. False if it can't have that.
Result<bool> takesOwner(TemporaryFile &temporary, const RewriteTarget &target)
{
    if (temporary.info().owner == target.info.owner && temporary.info().group == target.info.group)
        return true;
    const auto taken = temporary.file().takeOwner(target.file);
    if (!taken && taken.error().code != ErrorCode::AccessDenied)
        return tl::unexpected(taken.error());
    return taken.has_value();
}

/// One call of rewriteFile, once it is known that there is something to write.
class Rewriting
{
public:
    Rewriting(platform::FileSystem &fileSystem, HeldFile &held, Original original, const NewContent &content,
        const WriteOptions &options)
        : m_fileSystem(fileSystem), m_held(held), m_original(std::move(original)), m_content(content),
          m_options(options)
    {
    }

    Result<WriteOutcome> run(const Change &change)
    {
        auto outcome = makeWritable(m_held, m_original, m_options)
                           .and_then([&] { return lock(m_held, m_original); })
                           .and_then([&] { return write(change); });
        const bool isReplaced = outcome && *outcome == WriteOutcome::Replaced; // the new file has the attribute already
        const auto restored = isReplaced ? Result<void>() : restoreReadOnly(m_held, m_original);
        m_original.file.reset();
        endRecord(outcome);
        if (outcome && !restored)
            return tl::unexpected(restored.error());
        return outcome;
    }

private:
    Result<WriteOutcome> write(const Change &change)
    {
        if (change.kind == Change::Elsewhere)
            return writeElsewhere();
        const auto way = change.kind == Change::Patches ? ContentWay::Patches : ContentWay::OneStep;
        const auto recorded =
            record(way, [&]() -> Result<Inverse> { return inverseOf(change.patches, m_content.size); });
        if (!recorded)
            return tl::unexpected(recorded.error());
        // An interruption would leave some patches in the file, and nobody would know.
        if (way == ContentWay::Patches && !m_ticket)
            return writeElsewhere();
        platform::File &file = *m_original.file;
        const auto written = patchFile(file, m_original.info, change.patches);
        if (!written)
            return tl::unexpected(written.error());
        restoreModified(file, m_original.info, m_options);
        return WriteOutcome::InPlace;
    }

    Result<WriteOutcome> writeElsewhere()
    {
        if (m_original.info.linkCount <= 1) {
            const auto replaced = tryReplace();
            if (!replaced)
                return tl::unexpected(replaced.error());
            if (*replaced)
                return WriteOutcome::Replaced;
        }
        const RewriteTarget target{m_held.place(), *m_original.file, m_original.info};
        return recordElsewhere(ContentWay::Redo)
            .and_then([&] { return rewriteUnderRedo(m_fileSystem, target, m_content, m_options); })
            .map([] { return WriteOutcome::Rewritten; });
    }

    /// Returns false and does nothing if the new file cannot get the original's owner.
    Result<bool> tryReplace()
    {
        const platform::Place &place = m_held.place();
        const RewriteTarget target{place, *m_original.file, m_original.info};
        auto temporary = TemporaryFile::create(place.folder, m_options.journal);
        if (!temporary)
            return tl::unexpected(temporary.error());
        if (const auto takes = takesOwner(*temporary, target); !takes || !*takes)
            return takes;
        const auto ready =
            prepareReplacement(*temporary, target, m_content, m_options)
                .and_then([&] { return recordElsewhere(ContentWay::OneStep); })
                .and_then([&] {
                    // What has the name now is what would be lost.
                    return expectState(
                        place.folder->node(place.name).map([](const platform::Node &node) { return node.info; }),
                        target.info);
                });
        if (!ready)
            return tl::unexpected(ready.error());
        const auto made = temporary->file().info();
        if (!made)
            return tl::unexpected(made.error());
        if (const auto permitted = givePermissions(temporary->file()); !permitted)
            return tl::unexpected(permitted.error());
        // The folder is not synced: after a power cut it names the old file or the new one, and both are whole.
        return moveInPlace(*temporary).map([&] {
            m_held.becomes(*made);
            return true;
        });
    }

    /// Last of all, so that nobody could open the new file as long as it was not whole.
    Result<void> givePermissions(platform::File &file) const
    {
        return file.takePermissions(*m_original.file).and_then([&]() -> Result<void> {
            return m_original.info.isReadOnly() ? file.setPermissions(m_original.info.permissions) : Result<void>();
        });
    }

    Result<void> moveInPlace(TemporaryFile &temporary)
    {
        auto moved = temporary.moveTo(m_held.place().name);
        if (!moved && moved.error().code == ErrorCode::AccessDenied) {
            // Some file systems of Windows do not replace an open file. Its lock ends a moment too early there.
            m_original.file.reset();
            moved = temporary.moveTo(m_held.place().name);
        }
        return moved;
    }

    Result<void> recordElsewhere(ContentWay way)
    {
        return record(way, [&] { return inverseOf(*m_original.file, m_original.info.size, m_content); });
    }

    /// An error only if the file cannot be read. What can't be recorded can't be taken back, but is done.
    template <typename MakeInverse>
    Result<void> record(ContentWay way, MakeInverse makeInverse)
    {
        if (m_options.journal == nullptr)
            return {};
        auto inverse = makeInverse();
        const auto identity = m_original.file->identity();
        if (!inverse || !identity)
            return tl::unexpected(inverse ? identity.error() : inverse.error());
        ChangeRecord change{.path = m_held.place().path(),
            .before = m_original.info,
            .identity = *identity,
            .way = way,
            .newSize = m_content.size,
            .inverse = std::move(inverse->segments),
            .written = std::move(inverse->written),
            .values = m_options.values};
        m_ticket = m_options.journal->begin(change);
        return {};
    }

    void endRecord(const Result<WriteOutcome> &outcome)
    {
        // A half-written file stays on record, to be settled by the next start.
        if (!m_ticket || (!outcome && outcome.error().code == ErrorCode::HalfWritten))
            return;
        if (!outcome) {
            m_options.journal->end(*m_ticket, tl::unexpected(outcome.error()));
            return;
        }
        // Only now that the file is closed: Windows may change its time then.
        const platform::Place &place = m_held.place();
        const auto node = place.folder->node(place.name);
        platform::FileInfo after = node && node->isSameAs(m_held.info()) ? node->info : m_held.info();
        after.size = m_content.size;
        m_options.journal->end(*m_ticket, ChangeDone{.after = after});
    }

    platform::FileSystem &m_fileSystem;
    HeldFile &m_held;
    Original m_original;
    const NewContent &m_content;
    const WriteOptions &m_options;
    std::optional<Journal::Ticket> m_ticket;
};

Result<WriteOutcome> rewrite(platform::FileSystem &fileSystem, HeldFile &held, const platform::FileInfo &before,
    const std::vector<Segment> &segments, const WriteOptions &options)
{
    const auto content = makeContent(segments, before.size);
    if (!content)
        return tl::unexpected(content.error());
    auto original = openOriginal(held, before);
    if (!original)
        return tl::unexpected(original.error());
    auto change = findChange(*original->file, before.size, *content);
    if (!change)
        return tl::unexpected(change.error());
    if (change->kind == Change::None)
        return WriteOutcome::Unchanged;
    if (change->kind == Change::Patches && options.journal == nullptr)
        change->kind = Change::Elsewhere;
    return Rewriting(fileSystem, held, std::move(*original), *content, options).run(*change);
}

Error withPath(Error error, const QString &path)
{
    if (error.path.isEmpty())
        error.path = path;
    return error;
}

} // namespace

Result<HeldFile> HeldFile::follow(platform::FileSystem &fileSystem, const QString &path)
{
    return fileSystem.follow(path).map([](platform::Place &&place) { return HeldFile(std::move(place)); });
}

Result<std::unique_ptr<platform::File>> HeldFile::open(platform::OpenMode mode)
{
    auto file = m_place.folder->openFile(m_place.name, mode);
    if (!file)
        return file;
    const auto info = (*file)->info();
    if (!info)
        return tl::unexpected(info.error());
    if (m_known && (m_known->inode != info->inode || m_known->device != info->device))
        return tl::unexpected(Error{
            ErrorCode::ChangedMeanwhile, m_place.path(), QStringLiteral("another file has taken its name meanwhile")});
    m_known = *info;
    return file;
}

Result<WriteOutcome> rewriteFile(platform::FileSystem &fileSystem, HeldFile &held, const platform::FileInfo &before,
    const std::vector<Segment> &segments, const WriteOptions &options)
{
    auto outcome = rewrite(fileSystem, held, before, segments, options);
    if (!outcome)
        return tl::unexpected(withPath(outcome.error(), held.place().path()));
    return outcome;
}

Result<WriteOutcome> rewriteFile(platform::FileSystem &fileSystem, const QString &path,
    const platform::FileInfo &before, const std::vector<Segment> &segments, const WriteOptions &options)
{
    auto held = HeldFile::follow(fileSystem, path);
    if (!held)
        return tl::unexpected(withPath(held.error(), path));
    return rewriteFile(fileSystem, *held, before, segments, options);
}

} // namespace ravlin::storage
