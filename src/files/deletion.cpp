#include "files/deletion.h"

#include "platform/removetree.h"

#include <algorithm>
#include <iterator>

namespace ravlin {

namespace {

QString withoutSeparator(QString path)
{
    while (path.size() > 1 && path.endsWith(platform::Separator))
        path.chop(1);
    return path;
}

/// Calls remove(path, report) for each path until a stop.
template <typename Remove>
DeletionReport each(const QStringList &paths, const TransferOptions &options, Remove remove)
{
    DeletionReport report;
    TransferProgress progress;
    progress.itemsTotal = paths.size();
    for (const QString &given : paths) {
        const QString path = withoutSeparator(given);
        if (options.stop.stop_requested()) {
            report.notDone.append(path);
            continue;
        }
        progress.path = path;
        if (options.progress)
            options.progress(progress);
        if (const Result<void> removed = remove(path, report); !removed)
            report.failures.push_back({path, removed.error()});
        ++progress.itemsDone;
    }
    if (options.progress)
        options.progress(progress);
    report.wasStopped = !report.notDone.isEmpty();
    return report;
}

} // namespace

QStringList withoutTrash(const QStringList &paths)
{
    QStringList found;
    std::copy_if(paths.begin(), paths.end(), std::back_inserter(found),
        [](const QString &path) { return !platform::hasTrash(withoutSeparator(path)); });
    return found;
}

DeletionReport putIntoTrash(const QStringList &paths, const TransferOptions &options)
{
    return each(paths, options, [](const QString &path, DeletionReport &report) {
        return platform::moveToTrash(path).map(
            [&](const platform::TrashedItem &item) { report.trashed.push_back(item); });
    });
}

DeletionReport deleteForGood(platform::FileSystem &fileSystem, const QStringList &paths, const TransferOptions &options)
{
    return each(paths, options, [&](const QString &path, DeletionReport &report) {
        return platform::removeTree(fileSystem, path).map([&] { report.deleted.append(path); });
    });
}

} // namespace ravlin
