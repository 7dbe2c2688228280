// SPDX-License-Identifier: GPL-3.0-or-later
// Ten thousand extractions from file names, compared with only writing the same tags, without reading a tag or a name.
// Compare the CPU times within one run; an extraction may cost at most 1.5 times its write.

#include "core/naming/extraction.h"
#include "core/naming/previewrows.h"
#include "support/tagfixture.h"

#include <benchmark/benchmark.h>

#include <QTemporaryDir>

#include <array>
#include <vector>

using namespace ravlin;

namespace {

constexpr int FileCount = 10000;

/// They swap title and artist, so that each run has something to write.
const std::array<QString, 2> &patterns()
{
    static const std::array<QString, 2> both{QStringLiteral("%4 - %1 - %3"), QStringLiteral("%4 - %3 - %1")};
    return both;
}

/// Files with a tag as another program might leave it, with room for the new texts.
class Files
{
public:
    Files()
    {
        using namespace test;
        const QByteArray content =
            id3v2(3,
                textFrame(3, "TIT2", QStringLiteral("Title")) + textFrame(3, "TPE1", QStringLiteral("Artist")) +
                    textFrame(3, "TALB", QStringLiteral("Album")) + textFrame(3, "TYER", QStringLiteral("1999")),
                {.padding = 1000}) +
            audio(10);
        for (int i = 0; i < FileCount; ++i) {
            const QString name = QStringLiteral("%1 - The Artist - A Title Number %2.mp3")
                                     .arg(i % 99 + 1, 2, 10, QLatin1Char('0'))
                                     .arg(i);
            paths += writeFile(m_folder.path(), name, content);
        }
    }
    QStringList paths;

private:
    QTemporaryDir m_folder;
};

/// The records that the extraction by a pattern saves.
std::vector<TagRecord> extracted(const QStringList &paths, const QString &pattern, const TagStore &store)
{
    std::vector<TagRecord> records;
    records.reserve(static_cast<std::size_t>(paths.size()));
    for (const QString &path : paths)
        records.push_back(prepareExtraction(path, pattern, store)->record);
    return records;
}

/// Whether the last file holds the tag saved last, which shows that the compared runs really write.
bool isSaved(const QString &path, const TagRecord &record)
{
    const TagRecord found = test::readRecord(path);
    return found.Title == record.Title && found.Artist == record.Artist;
}

void bareTagWrites(benchmark::State &state)
{
    const Files files;
    ProgramState program = test::roomyState();
    TagStore store(program, platform::FileSystem::native());
    const std::array<std::vector<TagRecord>, 2> records{
        extracted(files.paths, patterns()[0], store), extracted(files.paths, patterns()[1], store)};
    std::size_t turn = 0;
    for (auto _ : state) {
        turn = 1 - turn;
        for (qsizetype i = 0; i < files.paths.size(); ++i)
            benchmark::DoNotOptimize(store.SaveTag(files.paths[i], records[turn][static_cast<std::size_t>(i)]));
    }
    if (!isSaved(files.paths.last(), records[turn].back()))
        state.SkipWithError("the files were not written");
    state.SetItemsProcessed(state.iterations() * FileCount);
}
BENCHMARK(bareTagWrites)->Unit(benchmark::kMillisecond);

void extractions(benchmark::State &state)
{
    const Files files;
    ProgramState program = test::roomyState();
    TagStore store(program, platform::FileSystem::native());
    test::ProgressRecorder progress;
    std::size_t turn = 0;
    for (auto _ : state) {
        turn = 1 - turn;
        const ExtractionOutcome outcome = runExtraction(files.paths, patterns()[turn], store, program, progress);
        if (outcome.rows.doneCount() != FileCount)
            state.SkipWithError("not all files were written");
        progress.paths.clear();
    }
    if (!isSaved(files.paths.last(), prepareExtraction(files.paths.last(), patterns()[turn], store)->record))
        state.SkipWithError("the files were not written");
    state.SetItemsProcessed(state.iterations() * FileCount);
}
BENCHMARK(extractions)->Unit(benchmark::kMillisecond);

/// Building the names alone, as a preview of the renaming does.
void newNames(benchmark::State &state)
{
    const Files files;
    ProgramState program = test::roomyState();
    const TagStore store(program, platform::FileSystem::native());
    const NamingRule rule{NamingRule::Pattern, QStringLiteral("%4 - %1 - %3 [%2]"), {true, 2}, {true, 0}};
    for (auto _ : state) {
        for (const QString &path : files.paths)
            benchmark::DoNotOptimize(previewRenaming(path, rule, store));
    }
    state.SetItemsProcessed(state.iterations() * FileCount);
}
BENCHMARK(newNames)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
