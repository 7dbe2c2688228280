// SPDX-License-Identifier: GPL-3.0-or-later
// Playing times are measured on a thread of their own, in the order of the files. A file without one is reported with
// the reason. A cancelled run reports nothing more, and leave() makes nobody wait.

#include "core/online/cddb/playingtimes.h"
#include "support/cddbtest.h"
#include "support/gatedfilesystem.h"
#include "support/mp3builder.h"

#include <QPointer>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

class TestPlayingTimes : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    QStringList m_told;

    QString file(const QString &name, const QByteArray &content) { return writeFile(m_folder.path(), name, content); }
    void listenTo(PlayingTimes *times)
    {
        m_told.clear();
        connect(times, &PlayingTimes::measured, this, [this](int index, const PlayedAudio &played) {
            m_told << u"%1: %2 of %3"_s.arg(index).arg(played.samples).arg(played.sampleRate);
        });
        connect(times, &PlayingTimes::notMeasured, this, [this](int index, const Error &error) {
            m_told << u"%1: error %2"_s.arg(index).arg(static_cast<int>(error.code));
        });
        connect(times, &PlayingTimes::finished, this, [this] { m_told << u"finished"_s; });
    }

private Q_SLOTS:
    void everyFileIsToldOfInOrder()
    {
        PlayingTimes times;
        listenTo(&times);
        times.measure({file(u"a.mp3"_s, audio(10)), file(u"b.mp3"_s, audio(5))});
        QVERIFY(m_told.isEmpty()); // not within the call
        QTRY_COMPARE_WITH_TIMEOUT(
            m_told, (QStringList{u"0: 11520 of 44100"_s, u"1: 5760 of 44100"_s, u"finished"_s}), PatientWait);
    }

    void aFileThatHasNoneIsToldOfWithTheReason()
    {
        PlayingTimes times;
        listenTo(&times);
        times.measure({file(u"c.mp3"_s, "nothing"), m_folder.filePath(u"none.mp3"_s), file(u"d.mp3"_s, audio(1))});
        QTRY_COMPARE_WITH_TIMEOUT(m_told,
            (QStringList{u"0: error %1"_s.arg(static_cast<int>(ErrorCode::NoStream)),
                u"1: error %1"_s.arg(static_cast<int>(ErrorCode::NotFound)), u"2: 1152 of 44100"_s, u"finished"_s}),
            PatientWait);
    }

    void withoutFilesItIsFinished()
    {
        PlayingTimes times;
        listenTo(&times);
        times.measure({});
        QTRY_COMPARE_WITH_TIMEOUT(m_told, QStringList{u"finished"_s}, PatientWait);
    }

    void whatIsCancelledTellsNothingMore()
    {
        GatedFileSystem gate;
        PlayingTimes times(gate);
        listenTo(&times);
        const QString path = file(u"e.mp3"_s, audio(10));
        times.measure({path, path, path});
        gate.letThrough(1);
        QTRY_COMPARE_WITH_TIMEOUT(m_told.size(), 1, PatientWait);
        times.cancel();
        gate.letThrough(1); // the one being read
        times.measure({});  // ends after everything of the first run
        QTRY_COMPARE_WITH_TIMEOUT(m_told, (QStringList{u"0: 11520 of 44100"_s, u"finished"_s}), PatientWait);
    }

    void whatIsMeasuredAnewTakesThePlaceOfWhatWas()
    {
        GatedFileSystem gate;
        PlayingTimes times(gate);
        listenTo(&times);
        times.measure({file(u"f.mp3"_s, audio(10))});
        times.measure({file(u"g.mp3"_s, audio(5))});
        gate.letThrough(2);
        QTRY_COMPARE_WITH_TIMEOUT(m_told, (QStringList{u"0: 5760 of 44100"_s, u"finished"_s}), PatientWait);
    }

    void whoLeavesIsNotKeptWaiting()
    {
        GatedFileSystem gate;
        const QPointer<PlayingTimes> times = new PlayingTimes(gate, this);
        listenTo(times);
        times->measure({file(u"h.mp3"_s, audio(10))});
        times->leave(); // before the file is open
        QVERIFY(times != nullptr);
        gate.letThrough(1);
        QTRY_VERIFY_WITH_TIMEOUT(times == nullptr, PatientWait);
        QVERIFY(m_told.isEmpty());
    }

    void whoLeavesWithNothingUnderWayGoesAtOnce()
    {
        const QPointer<PlayingTimes> times = new PlayingTimes(platform::FileSystem::native(), this);
        times->leave();
        QTRY_VERIFY_WITH_TIMEOUT(times == nullptr, PatientWait);
    }
};

QTEST_GUILESS_MAIN(TestPlayingTimes)
#include "tst_playingtimes.moc"
