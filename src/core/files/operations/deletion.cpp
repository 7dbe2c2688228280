// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/operations/deletion.h"

#include "core/platform/fileio.h"
#include "core/platform/nodes.h"
#include "core/platform/path.h"
#include "core/storage/recorder.h"
#include "core/storage/safewrite.h"

#include <QSet>

namespace ravlin {

namespace {

/// The read-only drives that were met: one is told once, not for each file on it.
class ReadOnlyDrives
{
public:
    void add(const QString &path) { m_devices.insert(deviceOf(path)); }
    bool hold(const QString &path) const { return !m_devices.isEmpty() && m_devices.contains(deviceOf(path)); }

private:
    static quint64 deviceOf(const QString &path)
    {
        const auto node = platform::nodeAt(path);
        return node ? node->info.device : 0;
    }

    QSet<quint64> m_devices;
};

/// Calls remove(path, report) for each path until a stop.
template <typename Remove>
DeletionReport each(const QStringList &paths, const Watch &watch, Remove remove)
{
    DeletionReport report;
    Progress progress;
    progress.total = paths.size();
    ReadOnlyDrives readOnly;
    for (const QString &given : paths) {
        const QString path = platform::withoutEndSeparator(given);
        report.wasStopped = report.wasStopped || watch.stop.stop_requested();
        if (report.wasStopped || readOnly.hold(path)) {
            report.notDone.append(path);
            continue;
        }
        progress.path = path;
        watch.report(progress);
        if (const Result<void> removed = remove(path, report); !removed) {
            report.failures.push_back({path, removed.error()});
            if (removed.error().code == ErrorCode::ReadOnlyDrive)
                readOnly.add(path);
        }
        ++progress.done;
    }
    watch.report(progress);
    return report;
}

} // namespace

QStringList withoutTrash(const QStringList &paths)
{
    QStringList found;
    for (const QString &given : paths) {
        const QString path = platform::withoutEndSeparator(given);
        if (platform::nodeAt(path) && !platform::hasTrash(path) && !platform::isOnReadOnlyDrive(path))
            found.append(given);
    }
    return found;
}

DeletionReport undeletable(const QStringList &paths)
{
    return each(paths, {}, [](const QString &path, DeletionReport &) -> Result<void> {
        if (const auto node = platform::nodeAt(path); !node)
            return tl::unexpected(node.error());
        if (platform::isOnReadOnlyDrive(path))
            return tl::unexpected(Error{ErrorCode::ReadOnlyDrive, path, {}});
        return {};
    });
}

DeletionReport putIntoTrash(const QStringList &paths, const Watch &watch, storage::Journal *journal)
{
    storage::Recorder recorder(platform::FileSystem::native(), journal);
    return each(paths, watch, [&](const QString &path, DeletionReport &report) -> Result<void> {
        if (const auto recovered = storage::recoverNamed(platform::FileSystem::native(), path); !recovered)
            return tl::unexpected(recovered.error());
        const auto ticket = recorder.begin(storage::ChangeKind::Trash, path);
        const auto trashed = platform::moveToTrash(path);
        if (!trashed) {
            recorder.failed(ticket, trashed.error());
            return tl::unexpected(trashed.error());
        }
        recorder.done(ticket, {}, false, *trashed);
        report.trashed.push_back(*trashed);
        return {};
    });
}

DeletionReport deleteForGood(
    platform::FileSystem &fileSystem, const QStringList &paths, const Watch &watch, storage::Journal *journal)
{
    storage::Recorder recorder(fileSystem, journal);
    return each(paths, watch, [&](const QString &path, DeletionReport &report) -> Result<void> {
        if (!platform::isPlainName(platform::nameOf(path))) // a whole drive
            return tl::unexpected(Error{ErrorCode::NoOwnName, path, {}});
        // Another link to the file may stay.
        if (const auto recovered = storage::recoverNamed(fileSystem, path); !recovered)
            return tl::unexpected(recovered.error());
        const auto ticket = recorder.begin(storage::ChangeKind::Delete, path);
        const auto removed = platform::placeAt(fileSystem, path).and_then([](const platform::Place &place) {
            return platform::removeTree(*place.folder, place.name);
        });
        if (!removed) {
            recorder.failed(ticket, removed.error());
            return removed;
        }
        recorder.done(ticket);
        report.deleted.append(path);
        return {};
    });
}

} // namespace ravlin
