// SPDX-License-Identifier: GPL-3.0-or-later
// Saving a tag. In place it is compared with the bare system calls that write one block; a tag that must grow is
// compared with a plain copy, synced and renamed. Compare the ratios within one run.

#include "core/platform/filesystem.h"
#include "core/tags/store/tagstore.h"
#include "support/mp3builder.h"

#include <benchmark/benchmark.h>

#include <QTemporaryDir>

#include <array>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#ifdef RAVLIN_HAVE_TAGLIB
#include <id3v2tag.h>
#include <mpegfile.h>
#endif

using namespace ravlin;

namespace {

constexpr int FileCount = 1000;
constexpr int LargeFileFrames = 12000; // 5 MB, two and a half minutes

QByteArray tagged(qint64 padding)
{
    using namespace test;
    return id3v2(3,
        textFrame(3, "TIT2", QStringLiteral("Title")) + textFrame(3, "TPE1", QStringLiteral("Artist")) +
            textFrame(3, "TALB", QStringLiteral("Album")) + textFrame(3, "TYER", QStringLiteral("1999")),
        {.padding = padding});
}

TagRecord record(int variant)
{
    TagRecord tag;
    tag.Title = QStringLiteral("A new title, number %1").arg(variant);
    tag.Artist = QStringLiteral("Artist");
    tag.Album = QStringLiteral("Album");
    tag.Year = QStringLiteral("1999");
    return tag;
}

/// Files that have room for the new title.
class Files
{
public:
    explicit Files(const QByteArray &content)
    {
        for (int i = 0; i < FileCount; ++i)
            paths += test::writeFile(m_folder.path(), QStringLiteral("%1.mp3").arg(i), content);
    }
    QStringList paths;

private:
    QTemporaryDir m_folder;
};

void bareInPlaceWrite(benchmark::State &state)
{
    const Files files(tagged(2000) + test::audio(50));
    std::array<char, 4096> buffer{};
    char variant = 0;
    for (auto _ : state) {
        ++variant;
        for (const QString &path : files.paths) {
            const int file = ::open(QFile::encodeName(path).constData(), O_RDWR);
            benchmark::DoNotOptimize(::pread(file, buffer.data(), buffer.size(), 0));
            buffer[30] = variant;
            benchmark::DoNotOptimize(::pwrite(file, buffer.data() + 20, 100, 20));
            ::close(file);
        }
    }
    state.SetItemsProcessed(state.iterations() * FileCount);
}
BENCHMARK(bareInPlaceWrite)->Unit(benchmark::kMillisecond);

void saveInPlace(benchmark::State &state)
{
    const Files files(tagged(2000) + test::audio(50));
    ProgramState program;
    program.freeMegabytes = 100000;
    TagStore store(program, platform::FileSystem::native());
    int variant = 0;
    for (auto _ : state) {
        const TagRecord tag = record(++variant);
        for (const QString &path : files.paths)
            benchmark::DoNotOptimize(store.SaveTag(path, tag));
    }
    state.SetItemsProcessed(state.iterations() * FileCount);
}
BENCHMARK(saveInPlace)->Unit(benchmark::kMillisecond);

#ifdef RAVLIN_HAVE_TAGLIB
void tagLibInPlace(benchmark::State &state)
{
    const Files files(tagged(2000) + test::audio(50));
    int variant = 0;
    for (auto _ : state) {
        const std::string title = record(++variant).Title.toStdString();
        for (const QString &path : files.paths) {
            TagLib::MPEG::File file(QFile::encodeName(path).constData(), false);
            file.ID3v2Tag(true)->setTitle(title);
            file.save(TagLib::MPEG::File::ID3v2, TagLib::File::StripNone, TagLib::ID3v2::v3);
        }
    }
    state.SetItemsProcessed(state.iterations() * FileCount);
}
BENCHMARK(tagLibInPlace)->Unit(benchmark::kMillisecond);
#endif

/// The least that rewriting a file without room costs: a copy within the kernel, synced and renamed.
void copySyncRename(benchmark::State &state)
{
    QTemporaryDir folder;
    const QByteArray path =
        QFile::encodeName(test::writeFile(folder.path(), QStringLiteral("a.mp3"), test::audio(LargeFileFrames)));
    const QByteArray copy = path + ".copy";
    for (auto _ : state) {
        const int from = ::open(path.constData(), O_RDONLY);
        const int to = ::open(copy.constData(), O_RDWR | O_CREAT | O_EXCL, 0644);
        loff_t size = test::audio(1).size() * LargeFileFrames;
        while (size > 0) {
            const ssize_t copied = ::copy_file_range(from, nullptr, to, nullptr, static_cast<size_t>(size), 0);
            if (copied <= 0)
                break;
            size -= copied;
        }
        ::fsync(to);
        ::close(to);
        ::close(from);
        ::rename(copy.constData(), path.constData());
    }
}
BENCHMARK(copySyncRename)->Unit(benchmark::kMillisecond)->UseRealTime();

void saveGrowing(benchmark::State &state)
{
    QTemporaryDir folder;
    const QString path = test::writeFile(folder.path(), QStringLiteral("a.mp3"), test::audio(LargeFileFrames));
    ProgramState program;
    program.freeMegabytes = 100000;
    TagStore store(program, platform::FileSystem::native());
    for (auto _ : state) {
        benchmark::DoNotOptimize(store.SaveTag(path, record(1)));
        state.PauseTiming();
        benchmark::DoNotOptimize(store.RemoveV2(path));
        state.ResumeTiming();
    }
}
BENCHMARK(saveGrowing)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

BENCHMARK_MAIN();
