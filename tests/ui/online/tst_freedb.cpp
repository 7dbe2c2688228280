// SPDX-License-Identifier: GPL-3.0-or-later
// The window that looks up the album of files: what it asks, and that it asks once shown; what it shows of a disc; what
// it says without a disc, with several and when the server fails; searching again; and closing it at any moment.

#include "core/online/cddb/playingtimes.h"
#include "support/gatedfilesystem.h"
#include "ui/online/lookupfixture.h"

#include <QSignalSpy>

using namespace ravlin;
using namespace ravlin::test;

class TestFreedb : public LookupFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { startAfresh(); }
    void cleanup() { closeForm(); }

    // The query

    void theFilesStandInTheMainListsOrderWithTheirPlayingTimes()
    {
        addFile(u"b.mp3"_s, cdTrack(4500));
        addFile(u"a.mp3"_s, cdTrack(788));
        openForm();
        QCOMPARE(fileNames(), (QStringList{u"b.mp3"_s, u"a.mp3"_s}));
        QTRY_COMPARE_WITH_TIMEOUT(column(files(), 1), (QStringList{u"01:00.0"_s, u"00:10.5"_s}), PatientWait);
    }

    void theQueryStartsOnceTheWindowIsOnTheScreen()
    {
        addTracks({0, 4500});
        makeForm();
        QVERIFY(!timer()->isActive());
        m_form->show();
        QVERIFY(timer()->isActive());
        QTRY_COMPARE_WITH_TIMEOUT(m_server->commands(), QByteArrayList{"cddb query 02003c01 1 150 62"}, PatientWait);
        waitForWindow<QMessageBox>(u"notFound"_s);
        QCOMPARE(m_server->commands().size(), 1); // once
    }

    void theServerIsToldTheProgramItsVersionAndTheUsersAddress()
    {
        openFound(Harbour);
        const QString version = QString::fromLatin1(RAVLIN_VERSION).section(u'.', 0, 1);
        const QByteArray hello = "hello=ana+mail.example+ravlin+" + version.toLatin1() + '&';
        QVERIFY2(m_server->requests().constFirst().contains(hello), m_server->requests().constFirst().constData());
    }

    void withoutAServerAndAnAddressOfTheUsersThereAreDefaults()
    {
        m_settings->write(settingskey::Servidor, {});
        m_settings->write(settingskey::Correo, {});
        QCOMPARE(cdServer(*m_settings), defaults::Server);
        QCOMPARE(cdMail(*m_settings), defaults::Mail);
    }

    void aDiscFillsTheBoxesAndTheList()
    {
        openFound(Harbour);
        QCOMPARE(fields(), (QStringList{u"Various"_s, u"Harbour Songs"_s, u"1987"_s, u"Pop"_s}));
        QCOMPARE(column(tracks(), 0), (QStringList{u"1"_s, u"2"_s, u"3"_s}));
        QCOMPARE(titles(), (QStringList{u"Ana Mar / Faro"_s, u"Les Marées / Phare"_s, u"Interlude"_s}));
        QCOMPARE(column(tracks(), 2), (QStringList{u"04:24.6"_s, u"04:26.6"_s, u"04:26.6"_s}));
        QVERIFY(saveButton()->isEnabled());
        QCOMPARE(status(), u"disc found, tracks: 3"_s);
        QVERIFY(!timer()->isActive());
        QCOMPARE(bar()->value(), 0);
    }

    void captionsInThreeLanguages_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QStringList>("texts");
        QTest::newRow("english") << u"english"_s
                                 << QStringList{u"artist"_s, u"album"_s, u"year"_s, u"genre"_s, u"file"_s, u"track"_s,
                                        u"title"_s, u"time:"_s, u"only selected"_s, u"&save id3"_s, u"search again"_s};
        QTest::newRow("spanish") << u"spanish"_s
                                 << QStringList{u"artista"_s, u"album"_s, u"año"_s, u"estilo"_s, u"fichero"_s,
                                        u"pista"_s, u"título"_s, u"duración:"_s, u"solo seleccionados"_s,
                                        u"g&uardar id3"_s, u"buscar de nuevo"_s};
        QTest::newRow("french") << u"french"_s
                                << QStringList{u"artiste"_s, u"album"_s, u"années"_s, u"genre"_s, u"fichier"_s,
                                       u"piste"_s, u"titre"_s, u"durée:"_s, u"selectionnés uniquement"_s,
                                       u"&sauvegarder id3"_s, u"chercher à nouveau"_s};
    }
    void captionsInThreeLanguages()
    {
        QFETCH(QString, language);
        QFETCH(QStringList, texts);
        speak(language);
        makeForm();
        QStringList shown;
        for (const QString &name : {u"label1"_s, u"label2"_s, u"Label5"_s, u"Label6"_s})
            shown << control<QLabel>(name)->text();
        shown << files()->model()->headerData(0, Qt::Horizontal).toString();
        for (int column = 0; column < 3; ++column)
            shown << tracks()->model()->headerData(column, Qt::Horizontal).toString();
        shown << control<QCheckBox>(u"sel"_s)->text() << saveButton()->text() << control<QPushButton>(u"Pic"_s)->text();
        QCOMPARE(shown, texts);
    }

    void theProgressStartsAgainAtNothingWhenItIsFull()
    {
        m_server->setFault(Fault::Silence);
        addTracks({0, 750});
        openForm();
        QVERIFY(waitUntil([&] { return !m_server->requests().isEmpty(); }));
        QList<int> values;
        connect(bar(), &QProgressBar::valueChanged, m_form.get(), [&values](int value) { values << value; });
        timer()->setInterval(1);
        QVERIFY(waitUntil([&] { return values.contains(100) && values.indexOf(0, values.indexOf(100)) > 0; }));
        QVERIFY(status().contains(m_server->hostAndPort()));
        QVERIFY(!saveButton()->isEnabled());
    }

    void withoutFilesNothingIsAskedFor()
    {
        openForm();
        QTRY_COMPARE_WITH_TIMEOUT(status(), u"no file is selected"_s, PatientWait);
        QVERIFY(!timer()->isActive());
        QVERIFY(!saveButton()->isEnabled());
    }

    void moreFilesThanADiscHasTracksAreNotAskedFor()
    {
        for (int i = 0; i < 100; ++i)
            addFile(QString::number(i) + u".mp3"_s, audio(1));
        openForm();
        QVERIFY(waitUntil([&] { return status().startsWith(u"these files do not make up a disc"_s); }));
        QVERIFY(m_server->requests().isEmpty());
        QVERIFY(!saveButton()->isEnabled());
    }

    void aFileWithoutAudioIsNamed()
    {
        addFile(u"good.mp3"_s, cdTrack(750));
        addFile(u"bad.mp3"_s, "nothing");
        openForm();
        QTRY_COMPARE_WITH_TIMEOUT(status(),
            u"these files do not make up a disc (bad.mp3: no mpeg audio was found in the file)"_s, PatientWait);
        QCOMPARE(files()->rows().lines()[1].remark, u"no mpeg audio was found in the file"_s);
        QVERIFY(m_server->requests().isEmpty());
    }

    // No disc

    void whenNoDiscMatchesNothingCanBeSaved_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QString>("notice");
        QTest::newRow("english") << u"english"_s << u"freedb: disc not found"_s;
        QTest::newRow("spanish") << u"spanish"_s << u"freedb: disco no encontrado"_s;
        QTest::newRow("french") << u"french"_s << u"freedb: disque introuvable"_s;
    }
    void whenNoDiscMatchesNothingCanBeSaved()
    {
        QFETCH(QString, language);
        QFETCH(QString, notice);
        speak(language);
        addTracks({0, 750});
        openForm();
        QCOMPARE(answerBox(u"notFound"_s), notice);
        QVERIFY(!saveButton()->isEnabled());
        QVERIFY(!timer()->isActive());
        QCOMPARE(tracks()->rows().rowCount(), 0);
    }

    void filesThatDoNotTellTheirDelayAreAskedForOnceMore()
    {
        addFile(u"a.mp3"_s, audio(1000));
        openForm();
        answerBox(u"notFound"_s);
        QCOMPARE(m_server->commands().size(), 2);
    }

    void everyFailureOfTheNetworkIsAStatusLineAndNothingElse_data()
    {
        QTest::addColumn<int>("fault");
        QTest::addColumn<QString>("says");
        const auto row = [](const char *name, Fault fault, const QString &says) {
            QTest::newRow(name) << static_cast<int>(fault) << says;
        };
        row("no answer", Fault::Silence, u"the server did not answer in time"_s);
        row("web page", Fault::WebPage, u"the server's answer makes no sense"_s);
        row("cut list", Fault::HalfSent, u"the server's answer is not complete"_s);
        row("too long", Fault::TooLong, u"the server's answer is too long"_s);
        row("redirects", Fault::RedirectLoop, u"the server keeps sending us to another address"_s);
        row("server error", Fault::HttpRefused, u"the web server refused the request"_s);
        row("database trouble", Fault::Code402, u"the server has a problem; try again later"_s);
        row("no hello", Fault::Code409, u"the server does not accept the e-mail address given in the options"_s);
    }
    void everyFailureOfTheNetworkIsAStatusLineAndNothingElse()
    {
        QFETCH(int, fault);
        QFETCH(QString, says);
        m_server->setFault(static_cast<Fault>(fault));
        addTracks({0, 750});
        makeForm();
        if (static_cast<Fault>(fault) == Fault::Silence)
            database()->setTimeLimit(1);
        m_form->show();
        QTRY_VERIFY2_WITH_TIMEOUT(status().startsWith(says), qPrintable(status()), PatientWait);
        QVERIFY(!saveButton()->isEnabled());
        QVERIFY(!timer()->isActive());
        QVERIFY(QApplication::activeModalWidget() == nullptr || QApplication::activeModalWidget() == m_form.get());
    }

    // Searching again

    void searchAgainBeginsWithTheFirstRowsArtist()
    {
        m_firstArtist = u"Marie L'Été"_s;
        openFound(Harbour);
        control<QPushButton>(u"Pic"_s)->click();
        auto *box = waitForWindow(u"buscaweb"_s)->findChild<QLineEdit *>(u"busca"_s);
        QCOMPARE(box->text(), m_firstArtist);
        QCOMPARE(box->selectedText(), m_firstArtist);
        waitForWindow(u"buscaweb"_s)->findChild<QPushButton *>(u"buscar"_s)->click();
        waitForTracks(9);
        QCOMPARE(fields(), (QStringList{u"Marie L'Été"_s, u"Côte d'Hiver"_s, u"2003"_s, u"Folk"_s}));
        QVERIFY(saveButton()->isEnabled());
    }

    void afterADiscThatWasNotFoundASearchEnablesTheSaving()
    {
        addTracks({0, 750});
        openForm();
        answerBox(u"notFound"_s);
        searchFor(u"Las Gaviotas / Mareas Lentas"_s);
        waitForTracks(10);
        QVERIFY(saveButton()->isEnabled());
    }

    void aFailedSearchKeepsTheContents()
    {
        openFound(Harbour);
        const QStringList before = fields() + titles();
        searchFor(u"nobody / nothing"_s);
        QCOMPARE(answerBox(u"notFound"_s), u"freedb: disc not found"_s);
        QCOMPARE(fields() + titles(), before);
        QVERIFY(saveButton()->isEnabled());
    }

    void aServerThatFailsInASearchKeepsTheContents()
    {
        openFound(Harbour);
        const QStringList before = fields() + titles();
        m_server->setFault(Fault::Code402);
        searchFor(u"Marie L'Été"_s);
        QVERIFY(waitUntil([&] { return status().startsWith(u"the server has a problem"_s); }));
        QCOMPARE(fields() + titles(), before);
        QVERIFY(saveButton()->isEnabled());
    }

    void anEmptyTextIsIgnored_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << QString();
        QTest::newRow("blanks") << u"  "_s;
        QTest::newRow("slash") << u" / "_s;
    }
    void anEmptyTextIsIgnored()
    {
        QFETCH(QString, text);
        openFound(Harbour);
        const qsizetype asked = m_server->requests().size();
        const QString before = status();
        searchFor(text);
        QVERIFY(window(u"buscaweb"_s) == nullptr);
        QVERIFY(!database()->isBusy());
        QCOMPARE(m_server->requests().size(), asked);
        QCOMPARE(status(), before);
        QVERIFY(saveButton()->isEnabled());
    }

    void whileASearchRunsNothingCanBeSavedAndTheRestCanBeUsed()
    {
        openFound(Harbour);
        m_server->setFault(Fault::Silence);
        searchFor(u"Marie L'Été"_s);
        QTRY_COMPARE_WITH_TIMEOUT(m_server->openConnections(), 1, PatientWait);
        QVERIFY(!saveButton()->isEnabled());
        tracks()->setCurrentIndex(tracks()->model()->index(0, 0));
        QTest::keyClick(tracks(), Qt::Key_Down, Qt::AltModifier);
        QCOMPARE(column(tracks(), 0), (QStringList{u"2"_s, u"1"_s, u"3"_s}));
        QTest::keyClicks(field(u"talbum"_s), u" 2"_s);
        QVERIFY(field(u"talbum"_s)->text().contains(u'2'));
        // Another search replaces the one that hangs.
        m_server->setFault(Fault::None);
        searchFor(u"Marie L'Été"_s);
        waitForTracks(9);
    }

    void aSearchBeforeTheQueryTakesItsPlace()
    {
        addTracks(disc(Harbour).marks);
        openForm();
        searchFor(u"Marie L'Été"_s);
        waitForTracks(9);
        QVERIFY(waitUntil([&] { return !column(files(), 1).contains(QString()); })); // measured all the same
        for (const QByteArray &command : m_server->commands())
            QVERIFY2(!command.startsWith("cddb query"), command.constData());
    }

    // What stands side by side

    void tracksThatPlayLongerOrShorterThanTheirFilesArePointedOut()
    {
        openFound(Harbour);
        QVERIFY(tracks()->rows().lines()[0].remark.isEmpty());
        searchFor(u"The Quiet Three / First Take (reissue)"_s);
        QTRY_COMPARE_WITH_TIMEOUT(field(u"ta_o"_s)->text(), u"1999"_s, PatientWait);
        QCOMPARE(tracks()->rows().lines()[0].remark, u"the file is 66.7 s longer than the track"_s);
        QVERIFY(status().contains(u"files that do not play as long as the track beside them: 3"_s));
        QVERIFY(tracks()->model()->index(0, 0).data(Qt::AccessibleTextRole).toString().contains(u"longer"_s));
    }

    void theRemarksFollowTheOrder()
    {
        addFile(u"long.mp3"_s, cdTrack(24000));
        addFile(u"short.mp3"_s, cdTrack(8850));
        openForm();
        answerBox(u"notFound"_s);
        searchFor(u"夜の図書館"_s);
        waitForTracks(2);
        QCOMPARE(tracks()->rows().lines()[0].remark, u"the file is 202.0 s longer than the track"_s);
        QCOMPARE(tracks()->rows().lines()[1].remark, u"the file is 202.0 s shorter than the track"_s);
        files()->moveRowTo(1, 0);
        QVERIFY(tracks()->rows().lines()[0].remark.isEmpty());
        QVERIFY(tracks()->rows().lines()[1].remark.isEmpty());
        QCOMPARE(status(), u"disc found, tracks: 2"_s);
    }

    void aNumberOfRowsThatDiffersIsPointedOut()
    {
        openFound(Harbour);
        searchFor(u"夜の図書館"_s);
        waitForTracks(2);
        QVERIFY(status().contains(
            u"files: 3, tracks: 2; the files left over lose their track number and title when saved"_s));
        searchFor(u"Marie L'Été"_s);
        waitForTracks(9);
        QVERIFY(status().contains(u"files: 3, tracks: 9; the tracks left over are not used"_s));
    }

    void valuesThatAreNotSavedArePointedOut()
    {
        openFound(Harbour);
        field(u"ta_o"_s)->setText(u"87"_s);
        QVERIFY(status().contains(u"a year without four digits is not saved"_s));
        field(u"ta_o"_s)->clear();
        QCOMPARE(status(), u"disc found, tracks: 3"_s);
        field(u"testilo"_s)->setText(u"Synthpop"_s);
        QVERIFY(status().contains(u"the genre “Synthpop” is not in the table"_s));
        field(u"testilo"_s)->clear();
        QCOMPARE(status(), u"disc found, tracks: 3"_s);
    }

    // Closing

    void itCanBeClosedWhileTheServerHangs()
    {
        m_server->setFault(Fault::Silence);
        addTracks({0, 750});
        openForm();
        QTRY_COMPARE_WITH_TIMEOUT(m_server->openConnections(), 1, PatientWait);
        QTest::keyClick(m_form.get(), Qt::Key_Escape);
        QVERIFY(!m_form->isVisible());
        QVERIFY(!database()->isBusy());
        QVERIFY(!timer()->isActive());
        m_form.reset();
        QTRY_COMPARE_WITH_TIMEOUT(m_server->openConnections(), 0, PatientWait);
    }

    void itCanBeClosedWhileTheFilesAreMeasured()
    {
        GatedFileSystem gate;
        m_fileSystem = &gate;
        addTracks(disc(Harbour).marks);
        openForm();
        gate.letThrough(1);
        QTRY_COMPARE_WITH_TIMEOUT(status(), u"measuring the playing times: 1 of 3"_s, PatientWait);
        QCOMPARE(bar()->value(), 33);
        const QPointer<PlayingTimes> times = control<PlayingTimes>({});
        m_form->close();
        m_form.reset(); // while a file is being read
        QVERIFY(times != nullptr);
        gate.letThrough(1);
        QVERIFY(waitUntil([&] { return times == nullptr; }));
        QVERIFY(m_server->requests().isEmpty());
    }

    void itCanBeClosedBeforeItHasBegun()
    {
        addTracks({0, 750});
        openForm();
        m_form->close();
        QVERIFY(!timer()->isActive());
        m_form.reset();
        QVERIFY(m_server->requests().isEmpty());
    }

    void itsPlaceAndTheSplittersAreRemembered()
    {
        openFound(Harbour);
        m_form->resize(700, 480);
        auto *sp = control<QWidget>(u"sp"_s);
        sp->setProperty("Position", 4500);
        control<QPushButton>(u"cancel"_s)->click();
        QVERIFY(!m_form->isVisible());
        m_settings = std::make_unique<Settings>(m_settings->path()); // a later start of the program
        openForm();
        QCOMPARE(m_form->size(), QSize(700, 480));
        QCOMPARE(control<QWidget>(u"sp"_s)->property("Position").toInt(), 4500);
        QVERIFY(files()->isVisible() && tracks()->isVisible());
        QVERIFY(files()->geometry().right() < tracks()->geometry().left());
    }

    void everyPartIsReachedByTabInTheOrderThatTheEyeGoes()
    {
        openFound(Harbour);
        field(u"tartista"_s)->setFocus();
        QStringList order;
        for (QWidget *next = field(u"tartista"_s); order.size() < 11; next = next->nextInFocusChain()) {
            if ((next->focusPolicy() & Qt::TabFocus) && next->isEnabled() && next->isVisible())
                order << next->objectName();
        }
        QCOMPARE(order, (QStringList{u"tartista"_s, u"talbum"_s, u"ta_o"_s, u"testilo"_s, u"archivo"_s, u"pbSplit"_s,
                            u"correlacion"_s, u"Pic"_s, u"sel"_s, u"Command2"_s, u"cancel"_s}));
        QVERIFY(saveButton()->isDefault());
    }
};

QTEST_MAIN(TestFreedb)
#include "tst_freedb.moc"
