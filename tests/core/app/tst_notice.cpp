// SPDX-License-Identifier: GPL-3.0-or-later
// Contract of the notice's words: what was done and how often, which fields are gone, what failed, in the right number
// in each language; silence where nothing happened.

#include "core/app/idiomas.h"
#include "core/app/notice.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;
using history::FileRecord;
using history::FileState;
using history::Kind;
using history::Summary;
using storage::ChangeKind;

class TestNotice : public QObject
{
    Q_OBJECT

private:
    Captions m_captions;

    void speak(const QString &language)
    {
        m_captions.setLanguageName(language);
        m_captions.fill();
    }
    static void add(
        Summary &summary, int count, ChangeKind change, const std::vector<storage::ValueChange> &values = {})
    {
        for (int i = 0; i < count; ++i)
            summary.files.push_back({.change = change, .path = u"/m/%1.mp3"_s.arg(i), .values = values});
        summary.doneCount += count;
    }
    static Summary summaryOf(Kind kind, int count, ChangeKind change)
    {
        Summary summary;
        summary.entry.kind = kind;
        add(summary, count, change);
        return summary;
    }
    QString text(const Summary &summary, SummaryOf what = SummaryOf::Change) const
    {
        return noticeText(m_captions, summary, what);
    }

private Q_SLOTS:
    void init() { speak(u"english"_s); }

    void everythingStandsInOneLine()
    {
        Summary summary;
        summary.entry.kind = Kind::Multi;
        add(summary, 12, ChangeKind::Content, {{u"genre"_s, u"Blues"_s, {}}, {u"artist"_s, u"a"_s, u"b"_s}});
        add(summary, 2, ChangeKind::Content, {{u"artist"_s, {}, u"b"_s}});
        summary.failedCount = 1;
        QCOMPARE(text(summary), u"14 files written · the genre of 12 removed · 1 failed"_s);
        summary.notTriedCount = 3;
        summary.changedByOthers = {u"/m/1.mp3"_s};
        summary.problem = Error{ErrorCode::NoSpace, {}, {}};
        QCOMPARE(text(summary),
            u"14 files written · the genre of 12 removed · 1 failed · 3 not tried · another program had changed 1 file "
            u"meanwhile · this can't be taken back: the disk is full"_s);
    }

    void numbersAreSpoken_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QString>("one");
        QTest::addColumn<QString>("many");
        QTest::newRow("english") << u"english"_s << u"1 file written · the title removed · 1 failed"_s
                                 << u"2 files written · the title of 2 removed · 2 failed"_s;
        QTest::newRow("spanish") << u"spanish"_s << u"1 archivo escrito · se quitó el título · 1 falló"_s
                                 << u"2 archivos escritos · se quitó el título de 2 archivos · 2 fallaron"_s;
        QTest::newRow("french") << u"french"_s << u"1 fichier écrit · retiré\u00a0: le titre · 1 échec"_s
                                << u"2 fichiers écrits · retiré\u00a0: le titre de 2 fichiers · 2 échecs"_s;
    }
    void numbersAreSpoken()
    {
        QFETCH(QString, language);
        QFETCH(QString, one);
        QFETCH(QString, many);
        speak(language);
        for (const int count : {1, 2}) {
            Summary summary;
            add(summary, count, ChangeKind::Content, {{u"title"_s, u"x"_s, {}}});
            summary.failedCount = count;
            QCOMPARE(text(summary), count == 1 ? one : many);
        }
    }

    void everyKindHasItsWord_data()
    {
        QTest::addColumn<Kind>("kind");
        QTest::addColumn<ChangeKind>("change");
        QTest::addColumn<QString>("one");
        QTest::addColumn<QString>("many");
        const auto row = [](const char *name, Kind kind, ChangeKind change, const QString &one, const QString &many) {
            QTest::newRow(name) << kind << change << one << many;
        };
        row("removal", Kind::RemoveTags, ChangeKind::Content, u"the tag of 1 file removed"_s,
            u"the tags of 3 files removed"_s);
        row("renaming", Kind::Rename, ChangeKind::Move, u"1 file renamed"_s, u"3 files renamed"_s);
        row("folder", Kind::RenameFolder, ChangeKind::Move, u"the folder renamed"_s, u"3 files renamed"_s);
        row("copy", Kind::Copy, ChangeKind::Copy, u"1 copied"_s, u"3 copied"_s);
        row("move", Kind::Move, ChangeKind::Move, u"1 moved"_s, u"3 moved"_s);
        row("trash", Kind::Trash, ChangeKind::Trash, u"1 put into the trash"_s, u"3 put into the trash"_s);
        row("for good", Kind::Delete, ChangeKind::Delete, u"1 deleted for good"_s, u"3 deleted for good"_s);
        row("playlist", Kind::Playlist, ChangeKind::Create, u"the playlist written"_s, u"the playlist written"_s);
        row("folders on the way", Kind::Rename, ChangeKind::Create, QString(), QString());
    }
    void everyKindHasItsWord()
    {
        QFETCH(Kind, kind);
        QFETCH(ChangeKind, change);
        QFETCH(QString, one);
        QFETCH(QString, many);
        QCOMPARE(text(summaryOf(kind, 1, change)), one);
        QCOMPARE(text(summaryOf(kind, 3, change)), many);
    }

    void aRemovedTagIsNotToldByItsFields()
    {
        Summary summary;
        summary.entry.kind = Kind::RemoveTags;
        add(summary, 1, ChangeKind::Content, {{u"title"_s, u"x"_s, {}}});
        QCOMPARE(text(summary), u"the tag of 1 file removed"_s);
    }

    void filesBeyondTheListedOnesCount()
    {
        Summary summary = summaryOf(Kind::Single, 2, ChangeKind::Content);
        summary.doneCount = 30'000;
        QCOMPARE(text(summary), u"30,000 files written"_s);
    }

    void aFailedFileIsNoLoss()
    {
        Summary summary;
        summary.files.push_back(
            {.state = FileState::Failed, .path = u"/m/a.mp3"_s, .values = {{u"genre"_s, u"Blues"_s, {}}}});
        summary.failedCount = 1;
        QCOMPARE(text(summary), u"1 failed"_s);
    }

    void undoAndRedoSayWhatTheyAre()
    {
        Summary summary = summaryOf(Kind::Single, 1, ChangeKind::Content);
        QCOMPARE(text(summary, SummaryOf::Undo), u"1 change taken back"_s);
        QCOMPARE(text(summary, SummaryOf::Redo), u"1 change made again"_s);
        add(summary, 1, ChangeKind::Content);
        summary.failedCount = 2;
        QCOMPARE(text(summary, SummaryOf::Undo), u"2 changes taken back · 2 failed"_s);
        QCOMPARE(text(summary, SummaryOf::Redo), u"2 changes made again · 2 failed"_s);
    }

    void recoveryIsCounted()
    {
        history::Recovery recovery;
        QCOMPARE(noticeText(m_captions, recovery), QString());
        recovery.temporaryFiles = 3;
        QCOMPARE(noticeText(m_captions, recovery), QString());
        recovery.completed = {u"/m/a.mp3"_s};
        QCOMPARE(noticeText(m_captions, recovery), u"an interrupted change of 1 file was finished"_s);
        recovery.rolledBack = {u"/m/b.mp3"_s};
        recovery.left = {Error{ErrorCode::NotFound, u"/m/c.mp3"_s, {}}};
        QCOMPARE(noticeText(m_captions, recovery),
            u"interrupted changes of 2 files were finished · an interrupted change of 1 file can't be finished now"_s);
    }

    void nothingIsToldOfNothing()
    {
        QVERIFY(!isWorthTelling({}));
        QCOMPARE(text({}), QString());
        Summary stopped;
        stopped.notTriedCount = 1;
        QVERIFY(isWorthTelling(stopped));
        QCOMPARE(text(stopped), u"1 not tried"_s);
    }
};

QTEST_APPLESS_MAIN(TestNotice)
#include "tst_notice.moc"
