// SPDX-License-Identifier: GPL-3.0-or-later
// The cost of safe writing: reading and saving through core/storage, compared with the bare system calls that any
// program needs for the same. The files are small and in the page cache, as in a batch over a collection.

#include "core/storage/safewrite.h"
#include "support/fakejournal.h"
#include "support/filesteps.h"

#include <benchmark/benchmark.h>

#include <QTemporaryDir>

#include <array>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace ravlin::platform;
using namespace ravlin::storage;

namespace {

constexpr qint64 FileSize = 64 * 1024;
constexpr qint64 LargeFileSize = 5 * 1024 * 1024;
constexpr qsizetype TagSize = 2048;

class SampleFile
{
public:
    explicit SampleFile(qint64 size) : m_path(m_folder.filePath(QStringLiteral("01 - Song.mp3")))
    {
        const auto file = ravlin::test::createNew(m_path).value();
        const QByteArray content(static_cast<qsizetype>(size), 'x');
        static_cast<void>(file->writeAt({content.constData(), static_cast<size_t>(size)}, 0));
    }
    const QString &path() const { return m_path; }
    QByteArray nativePath() const { return encodePath(m_path); }

private:
    QTemporaryDir m_folder;
    QString m_path;
};

void readHeaderBare(benchmark::State &state)
{
    const SampleFile file(FileSize);
    const QByteArray path = file.nativePath();
    std::array<char, 4096> buffer;
    for (auto _ : state) {
        const int descriptor = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
        struct stat status = {};
        benchmark::DoNotOptimize(::fstat(descriptor, &status));
        benchmark::DoNotOptimize(::pread(descriptor, buffer.data(), buffer.size(), 0));
        ::close(descriptor);
    }
}
BENCHMARK(readHeaderBare);

void readHeader(benchmark::State &state)
{
    const SampleFile sample(FileSize);
    std::array<char, 4096> buffer;
    for (auto _ : state) {
        const auto file = FileSystem::native().open(sample.path(), OpenMode::Read);
        benchmark::DoNotOptimize((*file)->info());
        benchmark::DoNotOptimize((*file)->readAt(buffer, 0));
    }
}
BENCHMARK(readHeader);

void saveInPlaceBare(benchmark::State &state)
{
    const SampleFile file(FileSize);
    const QByteArray path = file.nativePath();
    QByteArray tag(TagSize, 'a');
    QByteArray buffer(TagSize, Qt::Uninitialized);
    for (auto _ : state) {
        tag[10] = static_cast<char>(tag.at(10) ^ 1);
        const int descriptor = ::open(path.constData(), O_RDWR | O_CLOEXEC);
        struct stat status = {};
        benchmark::DoNotOptimize(::fstat(descriptor, &status));
        benchmark::DoNotOptimize(::pread(descriptor, buffer.data(), TagSize, 0));
        benchmark::DoNotOptimize(::pwrite(descriptor, tag.constData() + 10, 1, 10));
        benchmark::DoNotOptimize(::pread(descriptor, buffer.data(), 1, 10));
        ::close(descriptor);
    }
}
BENCHMARK(saveInPlaceBare);

/// Each round also reads the file's state, as a caller does that reads a tag before saving it.
void saveInPlace(benchmark::State &state)
{
    const SampleFile file(FileSize);
    FileSystem &native = FileSystem::native();
    QByteArray tag(TagSize, 'a');
    for (auto _ : state) {
        tag[10] = static_cast<char>(tag.at(10) ^ 1);
        state.PauseTiming();
        const FileInfo before = *native.info(file.path());
        state.ResumeTiming();
        const auto saved =
            rewriteFile(native, file.path(), before, {Segment::fresh(tag), Segment::kept(TagSize, FileSize - TagSize)});
        if (!saved || *saved != WriteOutcome::InPlace)
            state.SkipWithError("not saved in place");
    }
}
BENCHMARK(saveInPlace);

/// The same, recorded in a journal that costs nothing: what the record itself takes.
void saveInPlaceRecorded(benchmark::State &state)
{
    const SampleFile file(FileSize);
    FileSystem &native = FileSystem::native();
    QByteArray tag(TagSize, 'a');
    for (auto _ : state) {
        tag[10] = static_cast<char>(tag.at(10) ^ 1);
        state.PauseTiming();
        const FileInfo before = *native.info(file.path());
        ravlin::test::FakeJournal journal;
        state.ResumeTiming();
        const auto saved = rewriteFile(native, file.path(), before,
            {Segment::fresh(tag), Segment::kept(TagSize, FileSize - TagSize)}, {.journal = &journal});
        if (!saved || *saved != WriteOutcome::InPlace)
            state.SkipWithError("not saved in place");
    }
}
BENCHMARK(saveInPlaceRecorded);

/// A tag at either end, under a record: compare with replace, which such a change needs without one.
void patchBothEnds(benchmark::State &state)
{
    const SampleFile file(LargeFileSize);
    FileSystem &native = FileSystem::native();
    char letter = 'a';
    for (auto _ : state) {
        letter = letter == 'a' ? 'b' : 'a';
        const FileInfo before = *native.info(file.path());
        ravlin::test::FakeJournal journal;
        const auto saved = rewriteFile(native, file.path(), before,
            {Segment::fresh(QByteArray(TagSize, letter)), Segment::kept(TagSize, LargeFileSize - TagSize - 128),
                Segment::fresh(QByteArray(128, letter))},
            {.journal = &journal});
        if (!saved || *saved != WriteOutcome::InPlace)
            state.SkipWithError("not patched");
    }
}
BENCHMARK(patchBothEnds)->UseRealTime();

/// The bare form of the benchmark below: copy, sync, rename.
void replaceBare(benchmark::State &state)
{
    const SampleFile file(LargeFileSize);
    const QByteArray path = file.nativePath();
    const QByteArray temporary = path + ".tmp";
    for (auto _ : state) {
        const int from = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
        const int to = ::open(temporary.constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
        const QByteArray tag(TagSize, 'b');
        benchmark::DoNotOptimize(::pwrite(to, tag.constData(), TagSize, 0));
        off_t source = TagSize;
        off_t target = TagSize;
        while (::copy_file_range(from, &source, to, &target, LargeFileSize, 0) > 0) {
        }
        ::fsync(to);
        ::close(to);
        ::close(from);
        std::rename(temporary.constData(), path.constData());
    }
}
BENCHMARK(replaceBare)->UseRealTime();

void replace(benchmark::State &state)
{
    const SampleFile file(LargeFileSize);
    FileSystem &native = FileSystem::native();
    char letter = 'a';
    for (auto _ : state) {
        letter = letter == 'a' ? 'b' : 'a';
        const FileInfo before = *native.info(file.path());
        // Two changed blocks at the same size, as for a tag at either end.
        const auto saved = rewriteFile(native, file.path(), before,
            {Segment::fresh(QByteArray(TagSize, letter)), Segment::kept(TagSize, LargeFileSize - TagSize - 128),
                Segment::fresh(QByteArray(128, letter))});
        if (!saved || *saved != WriteOutcome::Replaced)
            state.SkipWithError("not replaced");
    }
}
BENCHMARK(replace)->UseRealTime();

void syncFolder(benchmark::State &state)
{
    const SampleFile file(FileSize);
    FileSystem &native = FileSystem::native();
    const QString folder = folderOf(file.path());
    for (auto _ : state) {
        state.PauseTiming();
        const QString made = folder + QStringLiteral("/made");
        static_cast<void>(ravlin::test::createNew(made));
        static_cast<void>(ravlin::test::replaceFile(made, file.path()));
        const auto held = native.openFolder(folder);
        state.ResumeTiming();
        benchmark::DoNotOptimize((*held)->sync());
    }
}
BENCHMARK(syncFolder)->UseRealTime();

void decodeAsciiName(benchmark::State &state)
{
    const QByteArray name("Artist/Album/01 - A Song with quite a usual name.mp3");
    for (auto _ : state)
        benchmark::DoNotOptimize(decodePath(name));
}
BENCHMARK(decodeAsciiName);

void decodeAccentedName(benchmark::State &state)
{
    const QByteArray name("Artist/Album/01 - Una canci\xC3\xB3n con un nombre como hay m\xC3\xA1s.mp3");
    for (auto _ : state)
        benchmark::DoNotOptimize(decodePath(name));
}
BENCHMARK(decodeAccentedName);

void encodeAsciiName(benchmark::State &state)
{
    const QString name = QStringLiteral("Artist/Album/01 - A Song with quite a usual name.mp3");
    for (auto _ : state)
        benchmark::DoNotOptimize(encodePath(name));
}
BENCHMARK(encodeAsciiName);

} // namespace

BENCHMARK_MAIN();
