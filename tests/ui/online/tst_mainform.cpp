// SPDX-License-Identifier: GPL-3.0-or-later
// The window that looks for a new version: what it requests and says when it opens, which files it downloads where,
// what it shows meanwhile, that it reports every failure, and that it can be ended at any moment.
#include "core/app/idiomas.h"
#include "core/app/settings.h"
#include "core/app/texttable.h"
#include "core/platform/scratchfolder.h"
#include "support/cddbtest.h"
#include "support/updateserver.h"
#include "ui/controls/elidedlabel.h"
#include "ui/online/mainform.h"

#include <QAbstractButton>
#include <QApplication>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QStatusBar>
#include <QTest>
#include <QTreeWidget>

using namespace ravlin;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

namespace {

const QByteArray Header14 = "\"1.4.0\",\"\"\r\n";
/// Three files in the folder "f" beside the version file.
const QByteArray ThreeFiles = Header14 + "\"a.zip\",\"first\",\"1.4.0\",\"f/\",\"\"\r\n"
                                         "\"b.zip\",\"second\",\"1.3\",\"f/\",\"\"\r\n"
                                         "\"c.zip\",\"third\",\"1.2\",\"f/\",\"\"\r\n";
const QByteArray Content(300 * 1024, 'x');

} // namespace

class TestMainForm : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Settings> m_settings;
    std::unique_ptr<Captions> m_captions;
    std::unique_ptr<UpdateServer> m_server;
    std::unique_ptr<ScratchFolder> m_folder;
    std::unique_ptr<mainform> m_window;
    QStringList m_titles; ///< of the folder dialogs
    QString m_chosen;     ///< what they answer

    void open(const QString &version = u"1.4.0"_s, const QString &address = {})
    {
        m_window = std::make_unique<mainform>(*m_settings, *m_captions, platform::FileSystem::native(), nullptr,
            address.isEmpty() ? m_server->origin() : address, version);
        m_window->setChooseFolder([this](const QString &title, const QString &) {
            m_titles << title;
            return m_chosen;
        });
        m_window->show();
    }
    void speak(const QString &language)
    {
        m_captions->setLanguageName(language);
        m_captions->fill();
    }
    template <typename Control>
    Control *control(const char *name) const
    {
        Control *found = m_window->findChild<Control *>(QLatin1String(name));
        if (!found)
            qFatal("no control %s", name);
        return found;
    }
    QPushButton *cmdget() const { return control<QPushButton>("cmdget"); }
    QPushButton *cancel() const { return control<QPushButton>("cancel"); }
    QTreeWidget *filelist() const { return control<QTreeWidget>("filelist"); }
    QString text(const char *label) const
    {
        if (const auto *elided = m_window->findChild<ElidedLabel *>(QLatin1String(label)))
            return elided->fullText();
        return control<QLabel>(label)->text();
    }
    QString state() const { return text("state"); }
    /// What the last line says of failed files beside the state; empty if that is hidden.
    QString failures() const { return control<ElidedLabel>("failures")->isVisible() ? text("failures") : QString(); }
    QString percent(int row) const { return filelist()->topLevelItem(row)->text(1); }
    QMessageBox *box() const
    {
        const auto boxes = m_window->findChildren<QMessageBox *>();
        for (QMessageBox *box : boxes) {
            if (box->isVisible())
                return box;
        }
        return nullptr;
    }
    /// Waits for a box and presses one of its buttons. Returns its text, its informative text and its icon.
    QStringList answerBox(QMessageBox::StandardButton button = QMessageBox::Ok) const
    {
        [&] { QVERIFY(waitUntil([this] { return box() != nullptr; })); }();
        if (!box())
            return {};
        const QPointer<QMessageBox> shown = box();
        const QStringList texts{shown->text(), shown->informativeText(), QString::number(shown->icon())};
        shown->button(button)->click();
        [&] { QVERIFY(waitUntil([&shown] { return !shown; })); }();
        return texts;
    }
    /// The progress text once the download has finished.
    QString lastProgress() const
    {
        waitUntil([this] { return text("labelst") == u"download finished"_s; });
        return text("labelst");
    }
    /// Opens the window with the list of three files and answers the box about the version.
    void openList()
    {
        m_server->serveVersionFile(ThreeFiles);
        open();
        QCOMPARE(answerBox().first(), u"you have the last version: 1.4.0"_s);
        QCOMPARE(filelist()->topLevelItemCount(), 3);
    }
    void serveFiles(Serving way = Serving::Length) const
    {
        for (const char *name : {"a.zip", "b.zip", "c.zip"})
            m_server->serve(QByteArray("/ravlin/app/f/") + name, {.content = Content, .way = way});
    }
    void select(const QList<int> &rows) const
    {
        filelist()->clearSelection();
        for (const int row : rows)
            filelist()->topLevelItem(row)->setSelected(true);
    }
    QByteArrayList filesAskedFor() const
    {
        QByteArrayList names;
        for (const QByteArray &path : m_server->requests()) {
            if (path.startsWith("/ravlin/app/f/") && !path.endsWith(".sha256"))
                names << path.mid(path.lastIndexOf('/') + 1);
        }
        return names;
    }

private Q_SLOTS:
    void initTestCase() { leaveProxiesOut(); }
    void init()
    {
        QFile::remove(Settings::defaultPath());
        m_settings = std::make_unique<Settings>();
        m_captions = std::make_unique<Captions>();
        speak(u"english"_s);
        m_server = std::make_unique<UpdateServer>();
        m_folder = std::make_unique<ScratchFolder>();
        m_titles.clear();
        m_chosen = m_folder->path();
    }
    void cleanup() { m_window.reset(); }

    void captions_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QStringList>("texts");
        QTest::addColumn<QStringList>("headers");
        QTest::newRow("english") << u"english"_s
                                 << QStringList{u"ravlin! update"_s, u"download"_s, u"status"_s, u"file list"_s,
                                        u"file size"_s, u"file name"_s, u"destination"_s, u"cancel"_s}
                                 << QStringList{u"file"_s, u"percent"_s, u"description"_s, u"version"_s};
        QTest::newRow("spanish") << u"spanish"_s
                                 << QStringList{u"actualización de ravlin!"_s, u"descargar"_s, u"estado"_s,
                                        u"lista de ficheros"_s, u"tamaño archivo"_s, u"nombre"_s, u"destino"_s,
                                        u"cancelar"_s}
                                 << QStringList{u"fichero"_s, u"porcentaje"_s, u"descripción"_s, u"versión"_s};
        QTest::newRow("french") << u"french"_s
                                << QStringList{u"mise à jour ravlin!"_s, u"téléchargement"_s, u"statut"_s,
                                       u"liste de fichier"_s, u"taille du fichier"_s, u"nom du fichier"_s,
                                       u"destination"_s, u"annuler"_s}
                                << QStringList{u"fichier"_s, u"pour cent"_s, u"description"_s, u"version"_s};
    }
    void captions()
    {
        QFETCH(QString, language);
        speak(language);
        m_server->serveVersionFile({}, Serving::Silence);
        open();
        const QStringList texts{text("labeltitle"), cmdget()->text(), control<QGroupBox>("frame1")->title(),
            control<QGroupBox>("frame2")->title(), text("label1"), text("labelfname"), text("labeldest"),
            cancel()->text()};
        QTEST(texts, "texts");
        QStringList headers;
        for (int column = 0; column < filelist()->columnCount(); ++column)
            headers << filelist()->headerItem()->text(column);
        QTEST(headers, "headers");
        QCOMPARE(m_window->windowTitle(), text("labeltitle"));
    }

    void theBoxTellsWhetherThereIsANewVersion_data()
    {
        QTest::addColumn<QString>("running");
        QTest::addColumn<QByteArray>("offered");
        QTest::addColumn<QString>("language");
        QTest::addColumn<QString>("text");
        QTest::newRow("running version 1.4.0, file says 1.4.0")
            << u"1.4.0"_s << "1.4.0"_ba << u"english"_s << u"you have the last version: 1.4.0"_s;
        QTest::newRow("running version 1.4.0, file says 1.5.0")
            << u"1.4.0"_s << "1.5.0"_ba << u"english"_s << u"new version: 1.5.0"_s;
        QTest::newRow("running 1.9.0, file says 1.10.0: reported as no newer version (text comparison)")
            << u"1.9.0"_s << "1.10.0"_ba << u"english"_s << u"you have the last version: 1.9.0"_s;
        QTest::newRow("smaller") << u"1.4.0"_s << "1.3.0"_ba << u"english"_s << u"you have the last version: 1.4.0"_s;
        QTest::newRow("in Spanish") << u"1.4.0"_s << "1.5.0"_ba << u"spanish"_s << u"nueva version: 1.5.0"_s;
        QTest::newRow("in French") << u"1.4.0"_s << "1.5.0"_ba << u"french"_s << u"nouvelle versionon: 1.5.0"_s;
        QTest::newRow("none in Spanish") << u"1.4.0"_s << "1.4.0"_ba << u"spanish"_s
                                         << u"tienes la última versión: 1.4.0"_s;
        QTest::newRow("none in French") << u"1.4.0"_s << "1.4.0"_ba << u"french"_s
                                        << u"vous avez la dernière version: 1.4.0"_s;
    }
    void theBoxTellsWhetherThereIsANewVersion()
    {
        QFETCH(QString, running);
        QFETCH(QByteArray, offered);
        QFETCH(QString, language);
        QFETCH(QString, text);
        speak(language);
        m_server->serveVersionFile('"' + offered + "\",\"\"\r\n");
        open(running);
        QCOMPARE(answerBox(), (QStringList{text, QString(), QString::number(QMessageBox::Information)}));
        QCOMPARE(state(), u"ready to download"_s);
    }

    void theListShowsTheRecords()
    {
        openList();
        const QTreeWidgetItem *item = filelist()->topLevelItem(1);
        QCOMPARE(item->text(0), u"b.zip"_s);
        QCOMPARE(item->text(1), QString());
        QCOMPARE(item->text(2), u"second"_s);
        QCOMPARE(item->text(3), u"1.3"_s);
        QVERIFY(filelist()->selectedItems().isEmpty());
        QVERIFY(!cmdget()->isEnabled());
    }

    void atMost51RecordsAreListed()
    {
        m_server->serveVersionFile(Header14 + "\"a.zip\",\"\",\"\",\"\",\"\"\r\n"_ba.repeated(52));
        open();
        answerBox();
        QCOMPARE(filelist()->topLevelItemCount(), 51);
    }

    void aVersionFileThatCannotBeHadIsAnError_data()
    {
        QTest::addColumn<Served>("served");
        QTest::newRow("not found") << Served{.way = Serving::Status, .status = "404 Not Found"};
        QTest::newRow("server error") << Served{.way = Serving::Status, .status = "500 Oh"};
        QTest::newRow("hangs up") << Served{.way = Serving::HangsUp};
        QTest::newRow("cut off") << Served{.content = Header14, .way = Serving::CutOff};
        QTest::newRow("over 64 KB") << Served{.content = Header14 + QByteArray(64 * 1024, '\n')};
        QTest::newRow("not in the format") << Served{.content = "<html></html>"};
    }
    void aVersionFileThatCannotBeHadIsAnError()
    {
        QFETCH(Served, served);
        m_server->serve("/ravlin/app/ravlin.ver", served);
        open();
        const QStringList texts = answerBox();
        QCOMPARE(texts.first(), u"error"_s);
        QVERIFY(!texts[1].isEmpty());
        QCOMPARE(texts[2], QString::number(QMessageBox::Critical));
        QCOMPARE(state(), u" an error occurred in communicating with the host computer.12"_s);
        QCOMPARE(filelist()->topLevelItemCount(), 0);
        QVERIFY(!cmdget()->isEnabled());
    }

    void aBuildWithoutAnAddressSaysWhereNewVersionsComeFrom()
    {
        const QStringList texts{u"new versions of this program come by the system's package manager"_s,
            u"las versiones nuevas de este programa llegan por el gestor de paquetes del sistema"_s,
            u"les nouvelles versions de ce programme arrivent par le gestionnaire de paquets du système"_s};
        const QStringList languages{u"english"_s, u"spanish"_s, u"french"_s};
        for (qsizetype i = 0; i < languages.size(); ++i) {
            speak(languages[i]);
            open(u"1.4.0"_s, u" "_s);
            QCOMPARE(answerBox(), (QStringList{texts[i], QString(), QString::number(QMessageBox::Information)}));
            QVERIFY(!cmdget()->isEnabled());
            QVERIFY(m_server->requests().isEmpty());
        }
    }

    void anAddressThatIsNoneIsAnError()
    {
        open(u"1.4.0"_s, u"nowhere"_s);
        QCOMPARE(
            answerBox(), (QStringList{u"error"_s, u"the address to look for new versions at is not valid (nowhere)"_s,
                             QString::number(QMessageBox::Critical)}));
    }

    void theFirstStateIsShown()
    {
        m_server->serveVersionFile({}, Serving::Silence);
        open();
        QCOMPARE(state(), u"no state to report. 1"_s);
        QTRY_COMPARE_WITH_TIMEOUT(state(), u" the control successfully sent the request.7"_s, PatientWait);
    }

    void theWindowCanBeClosedWhileTheServerIsSilent_data()
    {
        QTest::addColumn<bool>("byButton");
        QTest::newRow("cancel, which ends the search first") << true;
        QTest::newRow("closed") << false;
    }
    void theWindowCanBeClosedWhileTheServerIsSilent()
    {
        QFETCH(bool, byButton);
        m_server->serveVersionFile({}, Serving::Silence);
        open();
        QTRY_COMPARE_WITH_TIMEOUT(m_server->requests().size(), 1, PatientWait);
        if (byButton) {
            cancel()->click();
            QCOMPARE(state(), u"download aborted"_s);
            QVERIFY(m_window->isVisible());
            cancel()->click();
        } else {
            m_window->close();
        }
        QVERIFY(!m_window->isVisible());
        QTRY_COMPARE_WITH_TIMEOUT(m_server->openConnections(), 0, PatientWait);
        QVERIFY(!box());
    }

    void rowsThatAreNotSelectedAreNotFetched()
    {
        serveFiles();
        openList();
        select({2, 0});
        QVERIFY(cmdget()->isEnabled());
        cmdget()->click();
        QVERIFY(!cmdget()->isEnabled());
        QCOMPARE(lastProgress(), u"download finished"_s);
        QCOMPARE(filesAskedFor(), (QByteArrayList{"a.zip", "c.zip"})); // in list order
        QCOMPARE(m_folder->names(), (QStringList{u"a.zip"_s, u"c.zip"_s}));
        QCOMPARE(ScratchFolder::read(m_folder->path(u"c.zip"_s)), Content);
        QCOMPARE(m_titles, QStringList{u"select dir"_s}); // once
        QCOMPARE(percent(0), u"100%"_s);
        QCOMPARE(percent(1), QString());
        QCOMPARE(percent(2), u"100%"_s);
        QCOMPARE(state(), u"download completed successfully. file saved to "_s + m_folder->path(u"c.zip"_s));
        QCOMPARE(text("checks"), u"has no checksum: a.zip, c.zip"_s);
        QVERIFY(cmdget()->isEnabled());
        QVERIFY(!control<QTimer>("timer1")->isActive());
        QVERIFY(!control<QTimer>("timertimeout")->isActive());
    }

    void whatIsShownWhileAFileIsFetched()
    {
        serveFiles(Serving::Gated);
        openList();
        select({1});
        cmdget()->click();
        QTRY_COMPARE_WITH_TIMEOUT(text("labelfs"), u"0.29 Mb"_s, PatientWait);
        QCOMPARE(text("labelstatus1"), u"downloading file... b.zip"_s);
        QCOMPARE(text("labelfname"), u"file name: b.zip"_s);
        QCOMPARE(text("labeldest"), u"destination: "_s + m_folder->path(u"b.zip"_s));
        QCOMPARE(control<QProgressBar>("progressbar1")->maximum(), Content.size());
        m_server->allow(150 * 1024);
        QTRY_COMPARE_WITH_TIMEOUT(control<QProgressBar>("progressbar1")->value(), 150 * 1024, PatientWait);
        QCOMPARE(percent(1), u"50%"_s);
        QCOMPARE(text("labelst"), u"status: (0.15 MB of 0.29 MB)"_s);
        QCOMPARE(state(), u"download..."_s);
        // The time is estimated once the rate is known.
        QTRY_VERIFY_WITH_TIMEOUT(text("estimate").startsWith(u"estimated time "_s), PatientWait);
        QVERIFY(text("estimate").endsWith(u" s "_s));
        m_server->allow(Content.size());
        QCOMPARE(lastProgress(), u"download finished"_s);
        QCOMPARE(control<QProgressBar>("progressbar1")->value(), Content.size());
        QCOMPARE(text("estimate"), QString());
    }

    void aFileWithoutALength()
    {
        serveFiles(Serving::Chunked);
        openList();
        select({0});
        cmdget()->click();
        QCOMPARE(lastProgress(), u"download finished"_s);
        QCOMPARE(text("labelfs"), u"? Mb"_s);
        QCOMPARE(percent(0), QString());
        QCOMPARE(ScratchFolder::read(m_folder->path(u"a.zip"_s)), Content);
    }

    void aDestinationFolderWithATrailingSeparator()
    {
        serveFiles();
        openList();
        m_chosen = m_folder->path() + platform::Separator;
        select({0});
        cmdget()->click();
        QCOMPARE(lastProgress(), u"download finished"_s);
        QCOMPARE(text("labeldest"), u"destination: "_s + m_folder->path(u"a.zip"_s));
        QCOMPARE(m_folder->names(), QStringList{u"a.zip"_s});
    }

    void withNoFolderChosenNothingHappens()
    {
        serveFiles();
        openList();
        m_chosen.clear();
        select({0});
        cmdget()->click();
        QCOMPARE(m_titles.size(), 1);
        QVERIFY(cmdget()->isEnabled());
        QCOMPARE(state(), u"ready to download"_s);
        QCOMPARE(text("labelst"), QString());
    }

    void cmdgetIsIgnoredWhileATransferIsRunning()
    {
        serveFiles(Serving::Gated);
        openList();
        select({0});
        cmdget()->click();
        QTRY_COMPARE_WITH_TIMEOUT(filesAskedFor().size(), 1, PatientWait);
        Q_EMIT cmdget()->clicked(); // as a tool may, despite the disabled button
        QCOMPARE(m_titles.size(), 1);
        QVERIFY(!cmdget()->isEnabled());
    }

    void cancelLeavesNothingBehind_data()
    {
        QTest::addColumn<bool>("byButton");
        QTest::newRow("cancel") << true;
        QTest::newRow("closed") << false;
    }
    void cancelLeavesNothingBehind()
    {
        QFETCH(bool, byButton);
        serveFiles(Serving::Gated);
        openList();
        select({0, 1});
        cmdget()->click();
        m_server->allow(150 * 1024);
        QTRY_COMPARE_WITH_TIMEOUT(percent(0), u"50%"_s, PatientWait);
        QCOMPARE(m_folder->names().size(), 1);
        if (byButton)
            cancel()->click();
        else
            m_window->close();
        QCOMPARE(m_folder->names(), QStringList());
        QCOMPARE(m_window->isVisible(), byButton);
        QTRY_COMPARE_WITH_TIMEOUT(m_server->openConnections(), 0, PatientWait);
        if (byButton) {
            QCOMPARE(state(), u"download aborted"_s);
            QVERIFY(cmdget()->isEnabled());
            serveFiles();
            cmdget()->click(); // again
            QCOMPARE(lastProgress(), u"download finished"_s);
            QCOMPARE(m_folder->names(), (QStringList{u"a.zip"_s, u"b.zip"_s}));
        }
        QVERIFY(!box());
    }

    void theServerIsStoppedInTheMiddle()
    {
        serveFiles(Serving::Gated);
        openList();
        select({0, 1});
        cmdget()->click();
        m_server->allow(150 * 1024);
        QTRY_COMPARE_WITH_TIMEOUT(percent(0), u"50%"_s, PatientWait);
        m_server->stop();
        const QStringList texts = answerBox();
        QCOMPARE(texts.first(), u"error"_s);
        QVERIFY(texts[1].startsWith(u"a.zip: "_s));
        QCOMPARE(texts[2], QString::number(QMessageBox::Critical));
        QCOMPARE(state(), u" an error occurred in communicating with the host computer.12"_s);
        QCOMPARE(m_folder->names(), QStringList());
        QVERIFY(cmdget()->isEnabled()); // the other file would fail as well
        QVERIFY2(failures().startsWith(u"not downloaded: a.zip ("_s), qPrintable(failures()));
        QVERIFY2(failures().endsWith(u"), b.zip"_s), qPrintable(failures()));
        QVERIFY(text("labelst") != u"download finished"_s);
        QVERIFY(!box());
    }

    void aFileThatIsNotThereDoesNotKeepTheOthersFromBeingFetched()
    {
        serveFiles();
        m_server->serve("/ravlin/app/f/b.zip", {.way = Serving::Status, .status = "404 Not Found"});
        openList();
        select({0, 1, 2});
        cmdget()->click();
        QCOMPARE(answerBox()[1], u"b.zip: the web server refused the request (HTTP 404 Not Found)"_s);
        QCOMPARE(lastProgress(), u"download finished"_s);
        QCOMPARE(m_folder->names(), (QStringList{u"a.zip"_s, u"c.zip"_s}));
        QVERIFY(state().startsWith(u"download completed successfully. file saved to "_s));
        QCOMPARE(failures(), u"not downloaded: b.zip (the web server refused the request (HTTP 404 Not Found))"_s);
        serveFiles();
        select({1});
        cmdget()->click();
        QTRY_COMPARE_WITH_TIMEOUT(m_folder->names().size(), 3, PatientWait);
        QCOMPARE(failures(), QString());
    }

    void aFileNameFromTheNetworkIsAPlainNameOrIsRefused()
    {
        m_server->serveVersionFile(Header14 + "\"../evil.zip\",\"\",\"\",\"f/a.zip\",\"\"\r\n");
        serveFiles();
        open();
        answerBox();
        select({0});
        cmdget()->click();
        QCOMPARE(
            answerBox()[1], u"../evil.zip: the server offers a file under a name that is not allowed (../evil.zip)"_s);
        QVERIFY(filesAskedFor().isEmpty());
        QCOMPARE(m_folder->names(), QStringList());
        QCOMPARE(state(), u"download aborted"_s);
        QCOMPARE(failures(),
            u"not downloaded: ../evil.zip (the server offers a file under a name that is not allowed (../evil.zip))"_s);
    }

    void anAddressThatIsLessSecureIsRefused()
    {
        const TrustedCertificate trusted(WebServer::certificate());
        m_server = std::make_unique<UpdateServer>(WebServer::Security::Encrypted);
        m_server->serveVersionFile(Header14 + "\"a.zip\",\"\",\"\",\"http://127.0.0.1:1/a.zip\",\"\"\r\n");
        open();
        answerBox();
        select({0});
        cmdget()->click();
        QVERIFY(answerBox()[1].contains(u"not valid or not secure"_s));
        QCOMPARE(m_folder->names(), QStringList());
    }

    void anExistingFileIsReplacedOnlyAfterAQuestion()
    {
        serveFiles();
        m_folder->write(u"a.zip"_s, "old a");
        m_folder->write(u"b.zip"_s, "old b");
        openList();
        select({0, 1, 2});
        cmdget()->click();
        const QStringList first = answerBox(QMessageBox::No);
        QCOMPARE(first.first(), u"the file %1 exists already; replace it?"_s.arg(m_folder->path(u"a.zip"_s)));
        QCOMPARE(first[2], QString::number(QMessageBox::Question));
        QVERIFY(answerBox(QMessageBox::Yes).first().contains(u"b.zip"_s));
        QCOMPARE(lastProgress(), u"download finished"_s);
        QCOMPARE(failures(), QString()); // to leave a file alone is no failure
        QCOMPARE(ScratchFolder::read(m_folder->path(u"a.zip"_s)), QByteArray("old a"));
        QCOMPARE(ScratchFolder::read(m_folder->path(u"b.zip"_s)), Content);
        QCOMPARE(filesAskedFor(), (QByteArrayList{"b.zip", "c.zip"}));
    }

    void theWindowIsDestroyedWhileItAsks()
    {
        serveFiles();
        m_folder->write(u"a.zip"_s, "old a");
        openList();
        select({0});
        cmdget()->click();
        QTRY_VERIFY_WITH_TIMEOUT(box(), PatientWait);
        m_window.reset();
        QCOMPARE(ScratchFolder::read(m_folder->path(u"a.zip"_s)), QByteArray("old a"));
    }

    void aFileThatDoesNotMatchItsChecksumIsDiscardedWithAMessage()
    {
        serveFiles();
        m_server->serveChecksum("/ravlin/app/f/a.zip");
        m_server->serve("/ravlin/app/f/b.zip.sha256", {.content = QByteArray(64, '0')});
        openList();
        select({0, 1, 2});
        cmdget()->click();
        QCOMPARE(answerBox()[1], u"b.zip: the file was discarded: it does not match its checksum (b.zip)"_s);
        QCOMPARE(lastProgress(), u"download finished"_s);
        QCOMPARE(m_folder->names(), (QStringList{u"a.zip"_s, u"c.zip"_s}));
        QCOMPARE(text("checks"), u"has no checksum: c.zip; matches its checksum: a.zip"_s);
    }

    void aDescriptorOnlyChangesTheTitle()
    {
        m_server->serveVersionFile({}, Serving::Silence);
        open();
        m_window->autoupdate(QString());
        QCOMPARE(text("labeltitle"), u"ravlin! update"_s);
        m_window->autoupdate(u"\"1.5.0\";;\"a.zip\";;x"_s);
        QCOMPARE(text("labeltitle"), u"autoupdate"_s);
    }

    void longNamesDoNotWidenTheWindow()
    {
        const QByteArray name = QByteArray(230, 'n') + ".zip";
        m_server->serveVersionFile(
            Header14 + '"' + name + "\",\"" + QByteArray(3000, 'd') + "\",\"1\",\"f/a.zip\",\"\"\r\n");
        serveFiles();
        open();
        answerBox();
        const int width = m_window->width();
        select({0});
        cmdget()->click();
        QCOMPARE(lastProgress(), u"download finished"_s);
        QCOMPARE(m_window->width(), width);
        QVERIFY(m_window->minimumSizeHint().width() < width);
        const auto *label = control<QLabel>("labelfname");
        QVERIFY(label->text().size() < 200);
        QVERIFY(label->toolTip().contains(QString::fromLatin1(name)));
    }

    void theSizeIsRemembered()
    {
        m_server->serveVersionFile({}, Serving::Silence);
        open();
        const QSize size = m_window->size() + QSize(37, 23);
        m_window->resize(size);
        m_window->close();
        QVERIFY(m_settings->save());
        m_settings = std::make_unique<Settings>();
        open();
        QCOMPARE(m_window->size(), size);
    }

    void everyControlHasAnAccessibleName()
    {
        openList();
        for (const char *name : {"filelist", "progressbar1", "autoupdst"})
            QVERIFY2(!control<QWidget>(name)->accessibleName().isEmpty(), name);
        QVERIFY(!cmdget()->toolTip().isEmpty());
    }

    void theKeyboardReachesEverything()
    {
        openList();
        select({0});
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        QStringList way;
        filelist()->setFocus();
        do {
            way << QApplication::focusWidget()->objectName();
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        } while (QApplication::focusWidget() != filelist() && way.size() < 20);
        QCOMPARE(way.join(u' '), u"filelist cmdget cancel"_s);
    }
};

QTEST_MAIN(TestMainForm)
#include "tst_mainform.moc"
