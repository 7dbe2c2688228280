// SPDX-License-Identifier: GPL-3.0-or-later
// Contract of the questions and reports of file operations: each question names its subject, its default is the safe
// answer, and everything not done is listed with its reason.

#include "core/app/idiomas.h"
#include "ui/controls/busy.h"
#include "ui/controls/clashdialog.h"
#include "ui/controls/esperate.h"
#include "ui/files/operationdialogs.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <atomic>
#include <memory>

using namespace Qt::StringLiterals;
using namespace ravlin;

class TestOperationDialogs : public QObject
{
    Q_OBJECT

private:
    Captions m_captions;
    QWidget m_window;
    esperate *m_wait = new esperate(&m_window);
    Busy m_busy{*m_wait, &m_window};
    std::unique_ptr<OperationDialogs> m_dialogs;
    QStringList m_said;
    QString m_default; ///< text of the button that Enter presses

    /// Records the next question and answers it by that button.
    void answerNext(QMessageBox::StandardButton button)
    {
        auto *poll = new QTimer(this);
        connect(poll, &QTimer::timeout, this, [this, button, poll] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (box == nullptr)
                return;
            m_said = QStringList{box->text(), box->informativeText()};
            m_default = box->defaultButton()->text().remove(u'&');
            poll->deleteLater();
            box->button(button)->click();
        });
        poll->start(10);
    }
    static QString native(const QString &path) { return QDir::toNativeSeparators(path); }
    static Clash clash()
    {
        Clash clash;
        clash.source = native(u"/from/a.mp3"_s);
        clash.target = native(u"/somewhere/to/a.mp3"_s);
        clash.sourceNode.kind = platform::NodeKind::File;
        clash.sourceNode.info.size = 2048;
        clash.targetNode.kind = platform::NodeKind::File;
        clash.targetNode.info.size = 100;
        return clash;
    }

private Q_SLOTS:
    void init()
    {
        m_captions.fill();
        m_dialogs = std::make_unique<OperationDialogs>(m_captions, m_busy, &m_window);
        m_said.clear();
    }

    void aQuestionNamesWhatItIsAbout()
    {
        const QTemporaryDir folder;
        answerNext(QMessageBox::Yes);
        QVERIFY(m_dialogs->confirmTrash({native(u"/music/a.mp3"_s)}));
        QCOMPARE(m_said, (QStringList{u"put “a.mp3” into the trash?"_s, QString()}));
        answerNext(QMessageBox::No);
        QVERIFY(!m_dialogs->confirmTrash({native(folder.path())}));
        QCOMPARE(m_said.front(),
            u"put the folder “%1” into the trash, with all that is in it?"_s.arg(QDir(folder.path()).dirName()));
        QStringList many;
        for (int i = 1; i <= 10; ++i)
            many << native(u"/music/%1.mp3"_s.arg(i));
        answerNext(QMessageBox::Yes);
        QVERIFY(m_dialogs->confirmTrash(many));
        QCOMPARE(m_said.front(), u"put 10 files into the trash?"_s);
        QCOMPARE(m_said.back(), u"1.mp3\n2.mp3\n3.mp3\n4.mp3\n5.mp3\n6.mp3\n7.mp3\n8.mp3\nand 2 more"_s);
    }

    void aNameIsShownAsItIs()
    {
        answerNext(QMessageBox::No);
        m_dialogs->confirmTrash({native(u"/music/<b>%1<br>.mp3"_s)});
        QCOMPARE(m_said.front(), u"put “<b>%1<br>.mp3” into the trash?"_s);
    }

    void enterPutsIntoTheTrashButDeletesNothingForGood()
    {
        answerNext(QMessageBox::Yes);
        QVERIFY(m_dialogs->confirmTrash({native(u"/music/a.mp3"_s)}));
        QCOMPARE(m_default, u"Yes"_s);
        answerNext(QMessageBox::Yes);
        QVERIFY(m_dialogs->confirmDeleteForGood({native(u"/music/a.mp3"_s)}, NoWayBack::NoTrash));
        QCOMPARE(m_default, u"No"_s);
        QCOMPARE(m_said.front(), u"this drive has no trash. delete “a.mp3” for good?"_s);
        answerNext(QMessageBox::No);
        QVERIFY(!m_dialogs->confirmDeleteForGood({u"/a"_s, u"/b"_s}, NoWayBack::NoTrash));
        QCOMPARE(m_said.front(), u"this drive has no trash. delete 2 files for good?"_s);
        answerNext(QMessageBox::No);
        QVERIFY(!m_dialogs->confirmDeleteForGood({native(u"/music/a.mp3"_s)}, NoWayBack::TrashFull));
        QCOMPARE(m_said.front(), u"the drive is full, and the trash has no room. delete “a.mp3” for good?"_s);
        QCOMPARE(m_default, u"No"_s);
    }

    void theQuestionAboutATakenNameTellsBothFiles()
    {
        ClashDialog dialog(m_captions, clash(), nullptr);
        const QString text = dialog.findChild<QLabel *>(u"takenNameQuestion"_s)->text();
        QVERIFY2(text.startsWith(u"“a.mp3” exists already in “to”"_s), qPrintable(text));
        QVERIFY2(text.contains(u"in place: "_s + QLocale().formattedDataSize(100)), qPrintable(text));
        QVERIFY2(text.contains(u"coming: "_s + QLocale().formattedDataSize(2048)), qPrintable(text));
        QVERIFY2(text.endsWith(u"a replaced file goes into the trash"_s), qPrintable(text));
        QVERIFY(dialog.findChild<QPushButton *>(u"takenNameSkip"_s)->isDefault());
        Clash lasting = clash();
        lasting.hasTrash = false;
        const ClashDialog warning(m_captions, lasting, nullptr);
        QVERIFY(warning.findChild<QLabel *>(u"takenNameQuestion"_s)
                    ->text()
                    .endsWith(u"this drive has no trash: a replaced file is lost"_s));
    }

    void foldersAreMergedAndWhatCanNotBeReplacedIsNotOffered()
    {
        Clash folders = clash();
        folders.isMerge = true;
        const ClashDialog merging(m_captions, folders, nullptr);
        QCOMPARE(merging.findChild<QPushButton *>(u"takenNameReplace"_s)->text(), u"&merge"_s);
        folders.canReplace = false;
        const ClashDialog neither(m_captions, folders, nullptr);
        QVERIFY(neither.findChild<QPushButton *>(u"takenNameReplace"_s) == nullptr);
    }

    void anAnswerIsWhatTheButtonSays_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<int>("answer");
        QTest::newRow("replace") << u"takenNameReplace"_s << static_cast<int>(ClashAnswer::Replace);
        QTest::newRow("skip") << u"takenNameSkip"_s << static_cast<int>(ClashAnswer::Skip);
        QTest::newRow("keep both") << u"takenNameKeepBoth"_s << static_cast<int>(ClashAnswer::KeepBoth);
        QTest::newRow("cancel") << u"takenNameCancel"_s << static_cast<int>(ClashAnswer::Stop);
    }
    void anAnswerIsWhatTheButtonSays()
    {
        QFETCH(QString, button);
        QFETCH(int, answer);
        ClashDialog dialog(m_captions, clash(), nullptr);
        QTimer::singleShot(0, &dialog, [&] {
            dialog.findChild<QCheckBox *>(u"takenNameForAll"_s)->setChecked(true);
            dialog.findChild<QPushButton *>(button)->click();
        });
        const ClashDecision decision = dialog.decide();
        QCOMPARE(static_cast<int>(decision.answer), answer);
        QVERIFY(decision.forAll);
    }

    void everythingThatWasNotDoneIsToldWithItsReason()
    {
        OperationReport report;
        report.kind = OperationKind::Move;
        report.doneCount = 3;
        report.failures.push_back({u"/m/full.mp3"_s, Error{ErrorCode::NoSpace, u"/m/full.mp3"_s, {}}});
        report.failures.push_back({u"/m/cd"_s, Error{ErrorCode::AccessDenied, u"/m/cd/secret.mp3"_s, {}}});
        report.notDone = QStringList{u"/m/later.mp3"_s};
        report.skipped = QStringList{u"/m/there.mp3"_s};
        report.lost = QStringList{u"/m/lost.mp3"_s};
        report.inBothPlaces.push_back({u"/m/both.mp3"_s, Error{ErrorCode::ReadOnlyDrive, u"/m/both.mp3"_s, {}}});
        report.inBothPlaces.push_back({u"/m/more.mp3"_s, Error{ErrorCode::ReadOnlyDrive, u"/m/more.mp3"_s, {}}});
        report.failures.push_back({u"/m/gone.mp3"_s, Error{ErrorCode::NotFound, u"/m/gone.mp3"_s, {}}});
        QCOMPARE(outcomeHeadline(report, m_captions), u"moved: 3; not moved: 7"_s);
        QCOMPARE(outcomeLines(report, m_captions),
            (QStringList{u"/m/full.mp3: the disk is full"_s,
                u"/m/cd: the system refuses access to the file (/m/cd/secret.mp3)"_s,
                u"/m/gone.mp3: it is gone: it was moved or deleted meanwhile"_s,
                u"/m/later.mp3: not begun, it is as it was"_s, u"/m/there.mp3: skipped"_s,
                u"/m/both.mp3: copied in full, but the original is still there: it is now in both places (the drive is "
                "read-only)"_s,
                u"/m/more.mp3: copied in full, but the original is still there: it is now in both places"_s,
                u"/m/lost.mp3: replaced; the trash had no room for the former file, which is lost"_s}));
        report.wasStopped = true;
        QVERIFY(outcomeLines(report, m_captions).contains(u"/m/later.mp3: stopped before it was done"_s));
    }

    void whatCanNotBeUndoneForAllTimeSaysSo()
    {
        OperationReport report;
        report.kind = OperationKind::Undo;
        report.lost = QStringList{u"/m/lost.mp3"_s};
        QCOMPARE(outcomeLines(report, m_captions),
            QStringList{u"/m/lost.mp3: moved back; the file that it had replaced is lost"_s});
        report.lost.clear();
        report.failures.push_back({u"/m/a.mp3"_s, Error{ErrorCode::Unsupported, u"/m/a.mp3"_s, {}}});
        QCOMPARE(outcomeLines(report, m_captions),
            QStringList{u"/m/a.mp3: it was deleted for good or has replaced another file"_s});
    }

    void longWorkShowsBytesAndCanBeStopped()
    {
        QTimer poll;
        QString count;
        poll.callOnTimeout([&] {
            if (!m_wait->isVisible())
                return;
            count = m_wait->findChild<QLabel *>(u"count"_s)->text();
            m_wait->findChild<QPushButton *>(u"stop"_s)->click();
        });
        poll.start(10);
        bool stopped = false;
        QVERIFY(m_dialogs->runLong(OperationKind::Copy, [&](const Watch &watch) {
            watch.progress({0, 1, u"/m/a.mp3"_s, 1024, 4096});
            for (int i = 0; i < 15000 && !watch.stop.stop_requested(); ++i)
                QThread::msleep(2);
            stopped = watch.stop.stop_requested();
        }));
        QVERIFY(stopped);
        QVERIFY2(count.contains(u" / "_s), qPrintable(count));
        QVERIFY(m_dialogs->takeHasWorked());
        QVERIFY(!m_dialogs->takeHasWorked());
    }

    void noWorkBeginsWhileOtherWorkIsUnderWay()
    {
        bool began = false;
        bool ran = true;
        std::atomic<bool> tried{false};
        QTimer::singleShot(0, this, [&] {
            ran = m_dialogs->runLong(OperationKind::Move, [&](const Watch &) { began = true; });
            tried = true;
        });
        QVERIFY(m_busy.run(1, [&](const ProgressReport &) {
            while (!tried)
                QThread::msleep(1);
        }));
        QVERIFY(!ran && !began);
        QVERIFY(!m_dialogs->takeHasWorked());
    }
};

QTEST_MAIN(TestOperationDialogs)
#include "tst_operationdialogs.moc"
