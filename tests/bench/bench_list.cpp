// SPDX-License-Identifier: GPL-3.0-or-later
// The file list with 10,000 and 100,000 files: the first listing, a refresh after one file has changed, sorting,
// selecting all rows, and the memory per row. A bare loop that calls stat on each file is the least that a refresh can
// cost. Compare the ratios within one run; the time per row should not grow with the number of rows.

#include "core/files/list/folderscan.h"
#include "core/files/list/tagcache.h"
#include "support/mp3builder.h"
#include "ui/files/filelist.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>

#include <dirent.h>
#include <fcntl.h>
#include <malloc.h>
#include <sys/stat.h>

#include <chrono>
#include <map>
#include <thread>

using namespace ravlin;

namespace {

constexpr int FewFiles = 10'000;
constexpr int ManyFiles = 100'000;
constexpr int FilesPerFolder = 10'000;

/// Albums of 12 tracks with ordinary tags, in folders of 10,000 files.
class Collection
{
public:
    explicit Collection(int count)
    {
        using namespace test;
        for (int i = 0; i < count; ++i) {
            const int album = i / 12;
            if (i % FilesPerFolder == 0)
                QDir(m_folder.path()).mkdir(folderOf(i));
            const QByteArray frames = textFrame(3, "TIT2", QStringLiteral("Title of the song %1").arg(i)) +
                                      textFrame(3, "TPE1", QStringLiteral("Artist %1").arg(album / 10)) +
                                      textFrame(3, "TALB", QStringLiteral("Álbum %1").arg(album)) +
                                      textFrame(3, "TYER", QString::number(1970 + album % 50)) +
                                      textFrame(3, "TRCK", QString::number(i % 12 + 1));
            writeFile(m_folder.path() + u'/' + folderOf(i),
                QStringLiteral("Artist %1 - Title of the song %2.mp3").arg(album / 10).arg(i), id3v2(3, frames));
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(200)); // the cache does not trust newer time stamps
    }
    QString path() const { return m_folder.path() + u'/'; }
    /// Changes the tag of one file.
    void changeOne() const
    {
        test::writeFile(m_folder.path() + u'/' + folderOf(0), QStringLiteral("Artist 0 - Title of the song 5.mp3"),
            test::id3v2(3, test::textFrame(3, "TIT2", QStringLiteral("Another title"))));
    }

private:
    static QString folderOf(int file) { return QString::number(file / FilesPerFolder); }

    QTemporaryDir m_folder;
};

const Collection &collection(benchmark::State &state)
{
    static std::map<qint64, Collection> made;
    const auto count = static_cast<int>(state.range(0));
    return made.try_emplace(count, count).first->second;
}

Listing listed(const Collection &files, TagCache *cache)
{
    return ListFolderTree(files.path(), {.cache = cache}).value();
}

void count(benchmark::State &state)
{
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void firstListing(benchmark::State &state)
{
    const Collection &files = collection(state);
    for (auto _ : state) {
        TagCache cache;
        benchmark::DoNotOptimize(listed(files, &cache));
    }
    count(state);
}

void listingAfterOneChange(benchmark::State &state)
{
    const Collection &files = collection(state);
    TagCache cache;
    listed(files, &cache);
    std::size_t filesRead = 0;
    for (auto _ : state) {
        state.PauseTiming();
        files.changeOne();
        state.ResumeTiming();
        filesRead = listed(files, &cache).filesRead;
    }
    state.counters["filesRead"] = static_cast<double>(filesRead);
    count(state);
}

/// Runs on one core, so compare the CPU time, not the wall-clock time.
void bareStates(benchmark::State &state)
{
    const Collection &files = collection(state);
    const QStringList folders = QDir(files.path()).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (auto _ : state) {
        for (const QString &folder : folders) {
            DIR *stream = ::opendir(QFile::encodeName(files.path() + folder).constData());
            while (const dirent *entry = ::readdir(stream)) {
                struct stat status
                {
                };
                benchmark::DoNotOptimize(::fstatat(::dirfd(stream), entry->d_name, &status, 0));
            }
            ::closedir(stream);
        }
    }
    count(state);
}

void showRows(benchmark::State &state)
{
    const Listing listing = listed(collection(state), nullptr);
    for (auto _ : state) {
        state.PauseTiming();
        FileList list; // a used list would keep the order of its former rows
        std::vector<ListRow> rows = listing.rows;
        state.ResumeTiming();
        list.setRows(std::move(rows));
        list.selectAllRows();
        benchmark::DoNotOptimize(list.visualRect(list.model()->index(0, 0))); // lays the rows out
    }
    count(state);
}

/// Shows the rows of a refresh after one change.
void showRowsAgain(benchmark::State &state)
{
    const Collection &files = collection(state);
    TagCache cache;
    FileList list;
    list.setRows(listed(files, &cache).rows);
    for (auto _ : state) {
        state.PauseTiming();
        files.changeOne();
        std::vector<ListRow> rows = listed(files, &cache).rows;
        state.ResumeTiming();
        list.setRows(std::move(rows));
        list.selectAllRows();
        benchmark::DoNotOptimize(list.visualRect(list.model()->index(0, 0))); // lays the rows out
    }
    count(state);
}

void sortByTitle(benchmark::State &state)
{
    FileList list;
    list.setRows(listed(collection(state), nullptr).rows);
    for (auto _ : state)
        list.sortByHeader(static_cast<int>(ListColumn::Title));
    count(state);
}

void sortBackHalfSelected(benchmark::State &state)
{
    FileList list;
    list.setRows(listed(collection(state), nullptr).rows);
    const QItemSelection half(
        list.model()->index(0, 0), list.model()->index(static_cast<int>(state.range(0)) / 2, ListColumnCount - 1));
    for (auto _ : state) {
        state.PauseTiming();
        list.selectionModel()->select(half, QItemSelectionModel::ClearAndSelect);
        state.ResumeTiming();
        list.sortByHeader(static_cast<int>(ListColumn::Track));
    }
    count(state);
}

void selectAll(benchmark::State &state)
{
    FileList list;
    list.setRows(listed(collection(state), nullptr).rows);
    for (auto _ : state) {
        list.selectNone();
        list.selectAllRows();
        benchmark::DoNotOptimize(list.selectedRows());
    }
    count(state);
}

/// Memory of rows, cache and view together, as the allocator counts it.
void memoryOfARow(benchmark::State &state)
{
    const Collection &files = collection(state);
    for (auto _ : state) {
        const struct mallinfo2 before = ::mallinfo2();
        TagCache cache;
        FileList list;
        list.setRows(listed(files, &cache).rows);
        list.selectAllRows();
        benchmark::DoNotOptimize(list.visualRect(list.model()->index(0, 0)));
        const struct mallinfo2 after = ::mallinfo2();
        const auto bytes = static_cast<double>((after.uordblks + after.hblkhd) - (before.uordblks + before.hblkhd));
        state.counters["bytesPerRow"] = bytes / static_cast<double>(state.range(0));
    }
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    using Function = void (*)(benchmark::State &);
    const std::vector<std::pair<const char *, Function>> all{{"firstListing", firstListing},
        {"listingAfterOneChange", listingAfterOneChange}, {"bareStates", bareStates}, {"showRows", showRows},
        {"showRowsAgain", showRowsAgain}, {"sortByTitle", sortByTitle}, {"sortBackHalfSelected", sortBackHalfSelected},
        {"selectAll", selectAll}, {"memoryOfARow", memoryOfARow}};
    for (const auto &[name, function] : all) {
        benchmark::RegisterBenchmark(name, function)
            ->Arg(FewFiles)
            ->Arg(ManyFiles)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime()
            ->MeasureProcessCPUTime();
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
