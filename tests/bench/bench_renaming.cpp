// SPDX-License-Identifier: GPL-3.0-or-later
// Renaming a folder of files, plan and run together, compared with the bare system calls for the same names. One
// iteration renames every file once, there and back in turn; compare the CPU times within one run. RAVLIN_BENCH_FILES
// sets the number of files (default 10000).

#include "core/files/renaming/renamefromtags.h"
#include "core/platform/filesystem.h"

#include <benchmark/benchmark.h>

#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>

using namespace ravlin;
using namespace Qt::StringLiterals;

namespace {

int fileCount()
{
    bool valid = false;
    const int count = qEnvironmentVariableIntValue("RAVLIN_BENCH_FILES", &valid);
    return valid && count > 0 ? count : 10000;
}

/// Files that alternate between two names each.
class Collection
{
public:
    Collection()
    {
        for (int i = 0; i < fileCount(); ++i) {
            m_names[0] += m_folder.filePath(u"Track %1 of a folder.mp3"_s.arg(i));
            m_names[1] += m_folder.filePath(u"Artist %1 - Title number %2.mp3"_s.arg(i % 100).arg(i));
            QFile file(m_names[0].back());
            if (!file.open(QIODevice::WriteOnly))
                std::abort();
        }
    }
    const QStringList &from() const { return m_names[m_turn]; }
    const QStringList &to() const { return m_names[1 - m_turn]; }
    void turn() { m_turn = 1 - m_turn; }

private:
    QTemporaryDir m_folder;
    QStringList m_names[2];
    int m_turn = 0;
};

void ours(benchmark::State &state)
{
    Collection files;
    platform::FileSystem &native = platform::FileSystem::native();
    for (auto _ : state) {
        std::vector<RenameRow> rows;
        rows.reserve(static_cast<std::size_t>(files.from().size()));
        for (qsizetype i = 0; i < files.from().size(); ++i) {
            const QString &to = files.to()[i];
            rows.push_back(fileRename(files.from()[i], platform::nameOf(to)));
        }
        const RenamingPlan plan(native, std::move(rows));
        const RenamingOutcome outcome = runRenaming(native, plan);
        if (outcome.renames.size() != static_cast<std::size_t>(files.from().size()))
            state.SkipWithError("a file was not renamed");
        files.turn();
    }
    state.SetItemsProcessed(state.iterations() * fileCount());
}

void bareCalls(benchmark::State &state)
{
    Collection files;
    for (auto _ : state) {
        state.PauseTiming();
        std::vector<std::pair<QByteArray, QByteArray>> pairs;
        for (qsizetype i = 0; i < files.from().size(); ++i)
            pairs.emplace_back(platform::encodePath(files.from()[i]), platform::encodePath(files.to()[i]));
        state.ResumeTiming();
        for (const auto &[from, to] : pairs) {
            if (std::rename(from.constData(), to.constData()) != 0)
                state.SkipWithError("a file was not renamed");
        }
        files.turn();
    }
    state.SetItemsProcessed(state.iterations() * fileCount());
}

BENCHMARK(bareCalls)->Unit(benchmark::kMillisecond);
BENCHMARK(ours)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
