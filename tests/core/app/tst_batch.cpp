// SPDX-License-Identifier: GPL-3.0-or-later
// A batch takes rows in list order, reports progress before each, treats a failure and the cancelled flag as its policy
// says, and returns the outcome of every row.

#include "core/app/batch.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;

namespace {

class Recorder
{
public:
    operator ProgressReport()
    {
        return [this](const Progress &now) { events << u"advance "_s + now.path; };
    }

    QStringList events;
};

Error failure(ErrorCode code, const QString &path)
{
    return {code, path, {}};
}

} // namespace

class TestBatch : public QObject
{
    Q_OBJECT

private:
    const QStringList m_paths{u"c"_s, u"a"_s, u"b"_s};

private Q_SLOTS:
    void rowsAreTakenInOrderAndToldBeforeTheirWork()
    {
        Recorder progress;
        const auto work = [&progress](const QString &path) -> Result<void> {
            progress.events << u"work "_s + path;
            return {};
        };
        const BatchOutcome outcome = runBatch(m_paths, ProgramState(), progress, work, TagWritingPolicy);
        QCOMPARE(progress.events,
            (QStringList{u"advance c"_s, u"work c"_s, u"advance a"_s, u"work a"_s, u"advance b"_s, u"work b"_s}));
        QCOMPARE(outcome.rowCount(), 3);
        QCOMPARE(outcome.doneCount(), 3);
        QCOMPARE(outcome.outcome(2), RowOutcome::Done);
        QVERIFY(!outcome.error(2));
    }

    void theFirstFailureEndsARunThatWritesTags()
    {
        Recorder progress;
        const auto work = [](const QString &path) -> Result<void> {
            if (path == u"a")
                return tl::unexpected(failure(ErrorCode::Io, path));
            return {};
        };
        const BatchOutcome outcome = runBatch(m_paths, ProgramState(), progress, work, TagWritingPolicy);
        QCOMPARE(outcome.outcome(0), RowOutcome::Done);
        QCOMPARE(outcome.outcome(1), RowOutcome::Failed);
        QCOMPARE(outcome.error(1)->path, u"a"_s);
        QCOMPARE(outcome.outcome(2), RowOutcome::NotTaken);
        QVERIFY(!outcome.error(2));
        QCOMPARE(outcome.takenCount(), 2);
        QCOMPARE(progress.events, (QStringList{u"advance c"_s, u"advance a"_s}));
    }

    void aRefusedFileEndsNoRun()
    {
        for (const ErrorCode code : {ErrorCode::NotMp3Name, ErrorCode::NotMp3Content}) {
            Recorder progress;
            const auto work = [code](const QString &path) -> Result<void> {
                if (path == u"a")
                    return tl::unexpected(failure(code, path));
                return {};
            };
            const BatchOutcome outcome = runBatch(m_paths, ProgramState(), progress, work, TagWritingPolicy);
            QCOMPARE(outcome.outcome(1), RowOutcome::Failed);
            QCOMPARE(outcome.error(1)->code, code);
            QCOMPARE(outcome.outcome(2), RowOutcome::Done);
            QVERIFY(outcome.hasError(code));
        }
    }

    void aRowThatFailsIsPassedOverWhereRowsAreMattersOfTheirOwn()
    {
        Recorder progress;
        const auto work = [](const QString &path) -> Result<void> {
            if (path == u"c")
                return tl::unexpected(failure(ErrorCode::ReadOnly, path));
            return {};
        };
        const BatchOutcome outcome = runBatch(m_paths, ProgramState(), progress, work, RowByRowPolicy);
        QCOMPARE(outcome.outcome(0), RowOutcome::Failed);
        QCOMPARE(outcome.outcome(1), RowOutcome::Done);
        QCOMPARE(outcome.outcome(2), RowOutcome::Done);
        QVERIFY(outcome.hasError(ErrorCode::ReadOnly));
        QVERIFY(!outcome.hasError(ErrorCode::LowSpace));
    }

    void noNewRowIsTakenOnceTheCancelledFlagIsSet()
    {
        Recorder progress;
        ProgramState state;
        const auto work = [&state](const QString &path) -> Result<void> {
            state.cancelled = path == u"a";
            return {};
        };
        constexpr BatchPolicy goesOnAfterFailures{OnFailure::GoOn, OnCancelled::StopTaking};
        const BatchOutcome outcome = runBatch(m_paths, state, progress, work, goesOnAfterFailures);
        QCOMPARE(outcome.takenCount(), 2);
        QCOMPARE(outcome.outcome(2), RowOutcome::NotTaken);
    }

    void aFlagSetBeforeLeavesNothingToTake()
    {
        Recorder progress;
        ProgramState state;
        state.cancelled = true;
        const auto work = [](const QString &) -> Result<void> { return {}; };
        QCOMPARE(runBatch(m_paths, state, progress, work, TagWritingPolicy).takenCount(), 0);
        QCOMPARE(progress.events, QStringList());
        // A run that writes no tags needs no space, so it ignores the flag.
        QCOMPARE(runBatch(m_paths, state, progress, work, RowByRowPolicy).doneCount(), 3);
    }

    void noRows()
    {
        Recorder progress;
        const auto work = [](const QString &) -> Result<void> { return {}; };
        const BatchOutcome outcome = runBatch({}, ProgramState(), progress, work, RowByRowPolicy);
        QCOMPARE(outcome.rowCount(), 0);
        QCOMPARE(outcome.doneCount(), 0);
    }
};

QTEST_GUILESS_MAIN(TestBatch)
#include "tst_batch.moc"
