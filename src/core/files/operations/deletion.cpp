// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/operations/deletion.h"

#include "core/platform/fileio.h"
#include "core/platform/path.h"

#include <algorithm>
#include <iterator>

namespace ravlin {

namespace {

/// Calls remove(path, report) for each path until a stop.
template <typename Remove>
DeletionReport each(const QStringList &paths, const Watch &watch, Remove remove)
{
    DeletionReport report;
    Progress progress;
    progress.total = paths.size();
    for (const QString &given : paths) {
        const QString path = platform::withoutEndSeparator(given);
        if (watch.stop.stop_requested()) {
            report.notDone.append(path);
            continue;
        }
        progress.path = path;
        watch.report(progress);
        if (const Result<void> removed = remove(path, report); !removed)
            report.failures.push_back({path, removed.error()});
        ++progress.done;
    }
    watch.report(progress);
    report.wasStopped = !report.notDone.isEmpty();
    return report;
}

} // namespace

QStringList withoutTrash(const QStringList &paths)
{
    QStringList found;
    std::copy_if(paths.begin(), paths.end(), std::back_inserter(found),
        [](const QString &path) { return !platform::hasTrash(platform::withoutEndSeparator(path)); });
    return found;
}

DeletionReport putIntoTrash(const QStringList &paths, const Watch &watch)
{
    return each(paths, watch, [](const QString &path, DeletionReport &report) {
        return platform::moveToTrash(path).map(
            [&](const platform::TrashedItem &item) { report.trashed.push_back(item); });
    });
}

DeletionReport deleteForGood(platform::FileSystem &fileSystem, const QStringList &paths, const Watch &watch)
{
    return each(paths, watch, [&](const QString &path, DeletionReport &report) -> Result<void> {
        if (!platform::isPlainName(platform::nameOf(path))) // a whole drive
            return tl::unexpected(
                Error{ErrorCode::InvalidArgument, path, QStringLiteral("this has no name of its own")});
        return platform::placeAt(fileSystem, path)
            .and_then([](const platform::Place &place) { return platform::removeTree(*place.folder, place.name); })
            .map([&] { report.deleted.append(path); });
    });
}

} // namespace ravlin
