// SPDX-License-Identifier: GPL-3.0-or-later
// What the window saves: each file gets the track beside it, in the current tag-save mode; which values a file keeps;
// what it says if a file can't be written; and that the order is the user's.

#include "ui/online/lookupfixture.h"

#include <QFile>
#include <QListWidget>

#include <functional>

using namespace ravlin;
using namespace ravlin::test;

class TestFreedbSave : public LookupFixture
{
    Q_OBJECT

private:
    void save() const { saveButton()->click(); }
    /// Track and title of the files, in the order of their names.
    QStringList savedRows() const
    {
        QStringList rows;
        for (qsizetype number = 1; number <= m_owner.rows.size(); ++number) {
            const TagRecord record = tagOf(QString::number(number) + u".mp3"_s);
            rows << record.Track + u' ' + record.Title;
        }
        return rows;
    }
    /// The tag kinds of a file: "v1", "v2", "v1 v2" or nothing.
    QString kindsOf(const QString &name) const
    {
        const TagRecord record = tagOf(name);
        QStringList kinds;
        if (record.HasV1)
            kinds << u"v1"_s;
        if (record.HasV2)
            kinds << u"v2"_s;
        return kinds.join(u' ');
    }

private Q_SLOTS:
    void init() { startAfresh(); }
    void cleanup() { closeForm(); }

    void everyFileGetsTheTrackOfItsRowAndTheAlbum()
    {
        openFound(Hiver);
        save();
        for (int number = 1; number <= 9; ++number) {
            const TagRecord record = tagOf(QString::number(number) + u".mp3"_s);
            QCOMPARE(record.Track, QString::number(number));
            QCOMPARE(record.Title, disc(Hiver).titles.at(number - 1));
            QCOMPARE(record.Artist, u"Marie L'Été"_s);
            QCOMPARE(record.Album, u"Côte d'Hiver"_s);
            QCOMPARE(record.Year, u"2003"_s);
            QCOMPARE(record.Genre, u"Folk"_s);
        }
        QCOMPARE(bar()->value(), 100);
        QCOMPARE(status(), u"saved: 9"_s);
        QCOMPARE(m_owner.events, (QStringList{u"run"_s, u"refresh"_s}));
        QCOMPARE(m_owner.rowCounts, QList<qsizetype>{9});
        QCOMPARE(m_owner.advanced, m_owner.rows);
        QVERIFY(m_form->isVisible());
    }

    void theStatusSaysWhatTheModeLosesOrDoesNotShow()
    {
        m_state.tagSaveMode = 4;
        openFound(Harbour);
        const QString letters = u"characters outside Latin-1 (“???” or similar letters)"_s;
        field(u"talbum"_s)->setText(u"夜"_s);
        QTRY_VERIFY_WITH_TIMEOUT(status().contains(u"\nlost in ID3v1: "_s + letters), PatientWait);
        field(u"talbum"_s)->setText(u"Night"_s);
        QTRY_VERIFY_WITH_TIMEOUT(!status().contains(letters), PatientWait);
        TagRecord before;
        before.Title = u"old"_s;
        tag(u"3.mp3"_s, before);
        m_state.tagSaveMode = 1;
        field(u"talbum"_s)->setText(u"Noche"_s);
        QTRY_VERIFY_WITH_TIMEOUT(status().endsWith(u"\nID3v1 is written; the list shows ID3v2"_s), PatientWait);
    }

    void theRestOfTheTagAndTheAudioStay()
    {
        addTracks(disc(Harbour).marks);
        TagRecord before;
        before.Title = u"old"_s;
        before.Comment = u"mine"_s;
        tag(u"1.mp3"_s, before);
        const QByteArray sound = audioOf(at(u"1.mp3"_s));
        openForm();
        waitForTracks(3);
        save();
        QCOMPARE(tagOf(u"1.mp3"_s).Comment, u"mine"_s);
        QCOMPARE(tagOf(u"1.mp3"_s).Title, u"Ana Mar / Faro"_s);
        QVERIFY(audioOf(at(u"1.mp3"_s)) == sound);
    }

    void emptyYearBoxTheFilesKeepTheirOwnYear()
    {
        addTracks(disc(Harbour).marks);
        TagRecord before;
        before.Year = u"1990"_s;
        before.Genre = u"Jazz"_s;
        tag(u"1.mp3"_s, before);
        openForm();
        waitForTracks(3);
        field(u"ta_o"_s)->clear();
        save();
        QCOMPARE(tagOf(u"1.mp3"_s).Year, u"1990"_s);
        QCOMPARE(tagOf(u"1.mp3"_s).Genre, u"Pop"_s);
        QCOMPARE(tagOf(u"2.mp3"_s).Year, QString());
        field(u"testilo"_s)->clear();
        tag(u"1.mp3"_s, before);
        save();
        QCOMPARE(tagOf(u"1.mp3"_s).Genre, u"Jazz"_s);
    }

    void editedBoxesAndTitlesAreSaved()
    {
        openFound(Harbour);
        field(u"tartista"_s)->setText(u"Ana"_s);
        field(u"talbum"_s)->setText(u"Live"_s);
        field(u"ta_o"_s)->setText(u"1988"_s);
        field(u"testilo"_s)->setText(u"rock"_s);
        const QModelIndex title = tracks()->model()->index(2, 1);
        tracks()->setFocus();
        tracks()->setCurrentIndex(title);
        QTest::keyClick(tracks(), Qt::Key_F2);
        auto *editor = tracks()->viewport()->findChild<QLineEdit *>();
        QVERIFY(editor != nullptr);
        editor->setText(u"Intermezzo"_s);
        QTest::keyClick(editor, Qt::Key_Return);
        QTRY_COMPARE_WITH_TIMEOUT(titles().at(2), u"Intermezzo"_s, PatientWait);
        QVERIFY(m_owner.events.isEmpty()); // Enter in the list has saved nothing
        save();
        const TagRecord record = tagOf(u"3.mp3"_s);
        QCOMPARE(record.Artist, u"Ana"_s);
        QCOMPARE(record.Album, u"Live"_s);
        QCOMPARE(record.Year, u"1988"_s);
        QCOMPARE(record.Genre, u"Rock"_s);
        QCOMPARE(record.Title, u"Intermezzo"_s);
        QCOMPARE(record.Track, u"3"_s);
    }

    void onlySelectedRowsAreSavedAndKeepTheirTracks()
    {
        openFound(Harbour);
        auto *sel = control<QCheckBox>(u"sel"_s);
        sel->click();
        QVERIFY(!saveButton()->isEnabled()); // nothing is selected
        clickRow(files(), 1);
        clickRow(files(), 2, Qt::ControlModifier);
        QVERIFY(saveButton()->isEnabled());
        save();
        QCOMPARE(savedRows(), (QStringList{u" "_s, u"2 Les Marées / Phare"_s, u"3 Interlude"_s}));
        QCOMPARE(m_owner.rowCounts, QList<qsizetype>{2});
        QCOMPARE(kindsOf(u"1.mp3"_s), QString());
    }

    void withoutTheTickTheSelectionIsOfNoAccount()
    {
        openFound(Harbour);
        clickRow(files(), 1);
        save();
        QCOMPARE(m_owner.rowCounts, QList<qsizetype>{3});
    }

    void moreFilesThanTracksGetAnEmptyTrackAndTitle()
    {
        addTracks(disc(Harbour).marks);
        TagRecord before;
        before.Title = u"old"_s;
        before.Track = u"7"_s;
        tag(u"3.mp3"_s, before);
        openForm();
        waitForTracks(3);
        searchFor(u"夜の図書館"_s);
        waitForTracks(2);
        save();
        QCOMPARE(savedRows(), (QStringList{u"1 序"_s, u"2 終わり"_s, u" "_s}));
        QCOMPARE(tagOf(u"3.mp3"_s).Album, u"静かな海"_s);
    }

    void tracksWithoutAFileAreLeftOut()
    {
        openFound(Japanese);
        searchFor(u"Marie L'Été"_s);
        waitForTracks(9);
        save();
        QCOMPARE(savedRows(), (QStringList{u"1 Départ"_s, u"2 Où es-tu"_s}));
    }

    void theOrderOfTheFilesIsTheUsers()
    {
        openFound(Harbour);
        dragRow(files(), 0, 2);
        QCOMPARE(fileNames(), (QStringList{u"2.mp3"_s, u"1.mp3"_s, u"3.mp3"_s}));
        save();
        QCOMPARE(savedRows(), (QStringList{u"2 Les Marées / Phare"_s, u"1 Ana Mar / Faro"_s, u"3 Interlude"_s}));
    }

    void theOrderOfTheTracksIsTheUsers()
    {
        openFound(Harbour);
        dragRow(tracks(), 2, 0);
        QCOMPARE(titles(), (QStringList{u"Interlude"_s, u"Ana Mar / Faro"_s, u"Les Marées / Phare"_s}));
        save();
        QCOMPARE(savedRows(), (QStringList{u"3 Interlude"_s, u"1 Ana Mar / Faro"_s, u"2 Les Marées / Phare"_s}));
    }

    void theOrderCanBeChangedByKeys()
    {
        openFound(Harbour);
        files()->setCurrentIndex(files()->model()->index(2, 0));
        QTest::keyClick(files(), Qt::Key_Up, Qt::AltModifier);
        tracks()->setCurrentIndex(tracks()->model()->index(0, 0));
        QTest::keyClick(tracks(), Qt::Key_Down, Qt::AltModifier);
        save();
        QCOMPARE(fileNames(), (QStringList{u"1.mp3"_s, u"3.mp3"_s, u"2.mp3"_s}));
        QCOMPARE(savedRows(), (QStringList{u"2 Les Marées / Phare"_s, u"3 Interlude"_s, u"1 Ana Mar / Faro"_s}));
    }

    void theModeIsTheOneOfNow_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("kinds");
        QTest::newRow("1") << 1 << u"v1"_s;
        QTest::newRow("2") << 2 << u"v2"_s;
        QTest::newRow("3") << 3 << u"v1 v2"_s;
        QTest::newRow("4") << 4 << u"v1"_s;
        QTest::newRow("5") << 5 << u"v2"_s;
    }
    void theModeIsTheOneOfNow()
    {
        QFETCH(int, mode);
        QFETCH(QString, kinds);
        openFound(Japanese);
        m_state.tagSaveMode = mode; // after the window was opened
        save();
        QCOMPARE(kindsOf(u"1.mp3"_s), kinds);
    }

    void aFileThatCanNotBeSavedIsNamedAndTheOthersAreSaved()
    {
        openFound(Harbour);
        QVERIFY(QFile::remove(at(u"2.mp3"_s)));
        save();
        auto *box = waitForWindow(u"outcome"_s);
        QCOMPARE(box->findChild<QLabel *>(u"outcomeHeadline"_s)->text(), u"saved: 2; not saved: 1"_s);
        auto *lines = box->findChild<QListWidget *>(u"outcomeLines"_s);
        QCOMPARE(lines->count(), 1);
        QCOMPARE(lines->item(0)->text(), at(u"2.mp3"_s) + u": the file or folder does not exist"_s);
        QCOMPARE(tagOf(u"3.mp3"_s).Title, u"Interlude"_s);
        QCOMPARE(bar()->value(), 100);
        QVERIFY(m_owner.events.contains(u"refresh"_s));
        box->close();
    }

    void tooLittleRoomOnTheDiskIsSaidAndNothingIsWritten()
    {
        openFound(Harbour);
        m_state.freeMegabytes = 1;
        save();
        auto *box = waitForWindow<QMessageBox>(u"error"_s);
        QCOMPARE(box->text(), u"low disk space, operation cancelled"_s);
        QCOMPARE(box->informativeText(), u"saved: 0; not saved: 3"_s);
        QVERIFY(m_state.cancelled);
        QCOMPARE(kindsOf(u"1.mp3"_s), QString());
        box->close();
    }

    void whileOtherWorkIsUnderWayNothingIsSaved()
    {
        openFound(Harbour);
        m_owner.isBusy = true;
        save();
        QVERIFY(m_owner.events.isEmpty());
        QCOMPARE(status(), u"disc found, tracks: 3"_s);
        QVERIFY(saveButton()->isEnabled());
    }

    void itStaysOpenWhileItSaves()
    {
        openFound(Harbour);
        bool wasVisible = false;
        m_owner.onRefresh = [&] { wasVisible = m_form->isVisible(); };
        save();
        QVERIFY(wasVisible);
        m_form->close();
        QVERIFY(!m_form->isVisible());
    }

    void closingDiscardsWhatWasNotSaved()
    {
        openFound(Harbour);
        field(u"talbum"_s)->setText(u"edited"_s);
        m_form->close();
        QVERIFY(m_owner.events.isEmpty());
        QCOMPARE(kindsOf(u"1.mp3"_s), QString());
    }
};

QTEST_MAIN(TestFreedbSave)
#include "tst_freedbsave.moc"
