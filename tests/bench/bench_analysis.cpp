// SPDX-License-Identifier: GPL-3.0-or-later
// Speed of the stream analysis, compared with a bare walk over the frame headers of mapped files, the same walk over
// files read in blocks, and reading the bytes alone. The files are in the page cache; times are CPU times.
//
// By default it makes 24 files of about 5 MB. RAVLIN_BENCH_FOLDER names a folder of other files, which must be MPEG-1
// Layer III without tags in front, since the bare walks understand nothing else.
#include "core/tags/mpeg/xanalyze.h"
#include "support/mpegbuilder.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <array>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace ravlin;

namespace {

QByteArray variableStream()
{
    constexpr int Frames = 8000;
    constexpr std::array BitRates{128, 160, 192, 224, 256, 192, 320, 160};
    test::MpegBuilder builder;
    builder.xing({.mark = "Xing", .frames = Frames, .delay = 576, .padding = 1000});
    for (int i = 0; i < Frames; ++i)
        builder.frames(1, {.bitRate = BitRates[size_t(i * 7 + i / 5) % BitRates.size()], .padded = i % 3 == 0});
    return builder.data();
}

class Collection
{
public:
    Collection()
    {
        const QString other = qEnvironmentVariable("RAVLIN_BENCH_FOLDER");
        if (other.isEmpty())
            make(24);
        const QDir folder(other.isEmpty() ? m_folder.path() : other);
        const QFileInfoList files = folder.entryInfoList(QDir::Files);
        for (const QFileInfo &file : files) {
            paths.push_back(file.absoluteFilePath());
            names.push_back(QFile::encodeName(file.absoluteFilePath()));
            bytes += file.size();
        }
    }

    std::vector<QString> paths;
    std::vector<QByteArray> names;
    qint64 bytes = 0;

private:
    void make(int count)
    {
        const QByteArray stream = variableStream();
        for (int i = 0; i < count; ++i) {
            QFile file(m_folder.filePath(QStringLiteral("%1.mp3").arg(i)));
            if (!file.open(QIODevice::WriteOnly) || file.write(stream) != stream.size())
                qFatal("cannot write the files");
        }
    }

    QTemporaryDir m_folder;
};

const Collection &collection()
{
    static const Collection collection;
    return collection;
}

/// Length in bytes of an MPEG-1 Layer III frame at 44,100 Hz, 0 if the bytes are not its header.
int frameLength(const uchar *bytes)
{
    static constexpr int Rates[16] = {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 0};
    if (bytes[0] != 0xFF || (bytes[1] & 0xFE) != 0xFA)
        return 0;
    return 144'000 * Rates[bytes[2] >> 4] / 44'100 + ((bytes[2] >> 1) & 1);
}

/// An open file for the bare readers.
struct Descriptor
{
    explicit Descriptor(const QByteArray &name) : number(::open(name.constData(), O_RDONLY | O_CLOEXEC))
    {
        struct stat status = {};
        size = ::fstat(number, &status) == 0 ? status.st_size : 0;
    }
    ~Descriptor() { ::close(number); }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    int number;
    qint64 size = 0;
};

qint64 walkMapped(const QByteArray &name)
{
    const Descriptor file(name);
    void *memory = ::mmap(nullptr, size_t(file.size), PROT_READ, MAP_SHARED, file.number, 0);
    if (memory == MAP_FAILED)
        return 0;
    const auto *bytes = static_cast<const uchar *>(memory);
    qint64 frames = 0;
    for (qint64 offset = 0; offset + 4 <= file.size;) {
        const int length = frameLength(bytes + offset);
        if (length == 0)
            break;
        offset += length;
        ++frames;
    }
    ::munmap(memory, size_t(file.size));
    return frames;
}

qint64 walkBlocks(const QByteArray &name, std::vector<char> &buffer)
{
    const Descriptor file(name);
    qint64 frames = 0;
    qint64 start = 0;
    qint64 length = 0;
    for (qint64 offset = 0; offset + 4 <= file.size; ++frames) {
        if (offset + 4 > start + length) {
            start = offset;
            length = ::pread(file.number, buffer.data(), buffer.size(), offset);
            if (length < 4)
                break;
        }
        const int step = frameLength(reinterpret_cast<const uchar *>(buffer.data()) + (offset - start));
        if (step == 0)
            break;
        offset += step;
    }
    return frames;
}

qint64 readBlocks(const QByteArray &name, std::vector<char> &buffer)
{
    const Descriptor file(name);
    qint64 done = 0;
    while (const qint64 length = ::pread(file.number, buffer.data(), buffer.size(), done)) {
        if (length < 0)
            break;
        done += length;
    }
    return done;
}

template <typename Work>
void overCollection(benchmark::State &state, const Work &work)
{
    const Collection &files = collection();
    qint64 result = 0;
    for ([[maybe_unused]] auto round : state) {
        result = 0;
        for (size_t i = 0; i < files.paths.size(); ++i)
            result += work(i);
        benchmark::DoNotOptimize(result);
    }
    state.SetBytesProcessed(state.iterations() * files.bytes);
    state.counters["result"] = double(result);
}

void bareWalkMapped(benchmark::State &state)
{
    overCollection(state, [](size_t i) { return walkMapped(collection().names[i]); });
}

void bareWalkBlocks(benchmark::State &state)
{
    std::vector<char> buffer(size_t(state.range(0)) * 1024);
    overCollection(state, [&](size_t i) { return walkBlocks(collection().names[i], buffer); });
}

void readingOnly(benchmark::State &state)
{
    std::vector<char> buffer(size_t(state.range(0)) * 1024);
    overCollection(state, [&](size_t i) { return readBlocks(collection().names[i], buffer); });
}

void analysis(benchmark::State &state)
{
    XAnalyzer analyzer(platform::FileSystem::native());
    overCollection(state, [&](size_t i) { return analyzer.analyse(collection().paths[i]).stream.frames; });
}

BENCHMARK(bareWalkMapped)->Unit(benchmark::kMillisecond);
BENCHMARK(bareWalkBlocks)->RangeMultiplier(2)->Range(16, 1024)->Unit(benchmark::kMillisecond);
BENCHMARK(readingOnly)->Arg(128)->Arg(1024)->Unit(benchmark::kMillisecond);
BENCHMARK(analysis)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
