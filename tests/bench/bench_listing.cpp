// SPDX-License-Identifier: GPL-3.0-or-later
// Reading a folder of MP3 files for the list, on one core and on all cores, compared with TagLib reading the same
// fields and with a bare reader that opens each file, reads 4 KiB, walks the frame headers, reads the last 128 bytes
// and closes. One iteration reads the whole folder; compare the ratios within one run. RAVLIN_BENCH_FILES sets the
// number of files (default 10000). Then tags that are made to eat time and memory: milliseconds a file on one core.

#include "core/files/list/folderscan.h"
#include "core/platform/folder.h"
#include "core/tags/id3/id3v2.h"
#include "core/tags/store/listreader.h"
#include "core/tags/store/tagstore.h"
#include "support/tagbombs.h"

#include <benchmark/benchmark.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#ifdef RAVLIN_HAVE_TAGLIB
#include <id3v1tag.h>
#include <id3v2tag.h>
#include <mpegfile.h>
#endif

using namespace ravlin;

namespace {

int fileCount()
{
    bool valid = false;
    const int count = qEnvironmentVariableIntValue("RAVLIN_BENCH_FILES", &valid);
    return valid && count > 0 ? count : 10000;
}

/// A folder like those of real collections: most files have padding, a quarter a picture, a fifth UTF-16 texts, half an
/// ID3v1 tag as well.
class Collection
{
public:
    Collection()
    {
        using namespace test;
        const QByteArray stream = audio(20);
        for (int i = 0; i < fileCount(); ++i) {
            const int encoding = i % 5 == 0 ? 1 : 0;
            QByteArray frames = textFrame(3, "TIT2", QStringLiteral("Title number %1").arg(i), encoding) +
                                textFrame(3, "TPE1", QStringLiteral("Artist %1").arg(i % 100), encoding) +
                                textFrame(3, "TALB", QStringLiteral("Album %1").arg(i % 500), encoding) +
                                textFrame(3, "TYER", QStringLiteral("1999")) +
                                textFrame(3, "TRCK", QStringLiteral("%1/20").arg(i % 20 + 1)) +
                                textFrame(3, "TCON", QStringLiteral("(17)")) +
                                commentFrame(3, QStringLiteral("some comment"));
            if (i % 4 == 0)
                frames += pictureFrame(3, 30000);
            writeFile(m_folder.path(), QStringLiteral("Artist %1 - Title number %2.mp3").arg(i % 100).arg(i),
                id3v2(3, frames, {.padding = 1500}) + stream +
                    (i % 2 == 0 ? id3v1({.title = "Title", .artist = "Artist"}) : QByteArray()));
        }
    }
    QString path() const { return m_folder.path() + u'/'; }

private:
    QTemporaryDir m_folder;
};

const Collection &collection()
{
    static const Collection Made;
    return Made;
}

QStringList names()
{
    return QDir(collection().path()).entryList(QDir::Files, QDir::Unsorted);
}

void count(benchmark::State &state)
{
    state.SetItemsProcessed(state.iterations() * fileCount());
}

/// Walks the frame headers in a buffer. Returns the number of text frames.
int walkFrames(const unsigned char *buffer, ssize_t size)
{
    if (size < 10 || buffer[0] != 'I')
        return 0;
    const ssize_t end = 10 + ((buffer[6] << 21) | (buffer[7] << 14) | (buffer[8] << 7) | buffer[9]);
    int texts = 0;
    for (ssize_t at = 10; at + 10 <= end && at + 10 <= size && buffer[at] != 0;) {
        texts += buffer[at] == 'T' ? 1 : 0;
        at += 10 + ((buffer[at + 4] << 24) | (buffer[at + 5] << 16) | (buffer[at + 6] << 8) | buffer[at + 7]);
    }
    return texts;
}

void bareReader(benchmark::State &state)
{
    const QStringList files = names();
    const QByteArray folder = QFile::encodeName(collection().path());
    for (auto _ : state) {
        const int directory = ::open(folder.constData(), O_RDONLY | O_DIRECTORY);
        for (const QString &name : files) {
            const int file = ::openat(directory, QFile::encodeName(name).constData(), O_RDONLY);
            struct stat status
            {
            };
            ::fstat(file, &status);
            unsigned char buffer[4096];
            benchmark::DoNotOptimize(walkFrames(buffer, ::pread(file, buffer, sizeof buffer, 0)));
            benchmark::DoNotOptimize(::pread(file, buffer, 128, status.st_size - 128));
            ::close(file);
        }
        ::close(directory);
    }
    count(state);
}
BENCHMARK(bareReader)->Unit(benchmark::kMillisecond);

void readListFieldsOneCore(benchmark::State &state)
{
    const QStringList files = names();
    const auto folder = platform::Folder::open(collection().path());
    for (auto _ : state) {
        for (const QString &name : files) {
            const auto file = folder->openFile(name);
            benchmark::DoNotOptimize(readListFields(**file));
        }
    }
    count(state);
}
BENCHMARK(readListFieldsOneCore)->Unit(benchmark::kMillisecond);

void listFolderAllCores(benchmark::State &state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(ListFolder(collection().path(), QString()));
    count(state);
}
BENCHMARK(listFolderAllCores)->Unit(benchmark::kMillisecond)->UseRealTime()->MeasureProcessCPUTime();

#ifdef RAVLIN_HAVE_TAGLIB
void tagLibOneCore(benchmark::State &state)
{
    const QStringList files = names();
    for (auto _ : state) {
        for (const QString &name : files) {
            TagLib::MPEG::File file(QFile::encodeName(collection().path() + name).constData(), false);
            const TagLib::Tag *tag = file.tag();
            benchmark::DoNotOptimize(tag->title());
            benchmark::DoNotOptimize(tag->artist());
            benchmark::DoNotOptimize(tag->album());
            benchmark::DoNotOptimize(tag->year());
            benchmark::DoNotOptimize(tag->track());
            benchmark::DoNotOptimize(file.hasID3v1Tag());
        }
    }
    count(state);
}
BENCHMARK(tagLibOneCore)->Unit(benchmark::kMillisecond);
#endif

/// The hostile files by number: 65,000 compressed frames of 1 MiB zeros; unsynchronised tags of 256 MB, sparse and full
/// of 0xFF; a mebibyte of separators in each frame; plain text frames; millions of frames.
QByteArray hostileContent(int number)
{
    using namespace test;
    const QByteArray endless = tagHeader(3, 0x80, id3::MaximumBodySize) + QByteArray("APIC\x0A\0\0\0\0\0", 10);
    switch (number) {
    case 0:
        return bombFile(3, "TIT2", 65000);
    case 1:
        return bombFile(4, "PRIV", 65000);
    case 2:
        return endless;
    case 3:
        return endless + QByteArray(100'000'000, '\xFF');
    case 4:
        return id3v2(3, compressedFrame(3, "TALB", QByteArray("\0A", 2) + zeros().chopped(3) + "B").repeated(1000));
    case 5:
        return id3v2(3, frame(3, "TIT2", zeros()).repeated(100));
    default:
        return id3v2(3, frame(3, "TRCK", QByteArray(1, '\0')).repeated(1'000'000));
    }
}

QString hostileFile(const QTemporaryDir &folder, int number)
{
    const QString path = test::writeFile(folder.path(), QStringLiteral("a.mp3"), hostileContent(number));
    if (number == 2)
        QFile::resize(path, id3::TagHeaderSize + id3::MaximumBodySize);
    return path;
}

void listHostileFile(benchmark::State &state)
{
    const QTemporaryDir folder;
    const QString path = hostileFile(folder, static_cast<int>(state.range(0)));
    for (auto _ : state) {
        const auto file = platform::FileSystem::native().open(path, platform::OpenMode::Read);
        benchmark::DoNotOptimize(readListFields(**file));
    }
}
BENCHMARK(listHostileFile)->DenseRange(0, 6)->Unit(benchmark::kMillisecond);

void showHostileFile(benchmark::State &state)
{
    const QTemporaryDir folder;
    const QString path = hostileFile(folder, static_cast<int>(state.range(0)));
    ProgramState program;
    const TagStore store(program, platform::FileSystem::native());
    for (auto _ : state) {
        TagRecord record;
        benchmark::DoNotOptimize(store.ReadTag(path, record));
    }
}
BENCHMARK(showHostileFile)->DenseRange(0, 6)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
