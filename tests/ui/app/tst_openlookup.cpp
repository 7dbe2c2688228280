// SPDX-License-Identifier: GPL-3.0-or-later
// The toolbar's first button, its menu's entry, the list's context menu and a key open the CD-database window for the
// selected files. The list shows what it saves. It closes with the main window.

#include "support/cddbserver.h"
#include "support/cddbtest.h"
#include "ui/app/commandsfixture.h"
#include "ui/online/freedb.h"
#include "ui/online/rowlist.h"

#include <QProgressBar>

using namespace ravlin;
using namespace ravlin::test;

class TestOpenLookup : public CommandsFixture
{
    Q_OBJECT

private:
    std::unique_ptr<CddbServer> m_server;

    freedb *form() const { return m_window->findChild<freedb *>(); }
    template <typename Control>
    Control *ofForm(const QString &name) const
    {
        auto *found = form()->findChild<Control *>(name);
        if (found == nullptr)
            qFatal("no control %s", qPrintable(name));
        return found;
    }
    QStringList rowsOfForm() const
    {
        QStringList names;
        for (const ListedLine &line : ofForm<RowList>(u"archivo"_s)->rows().lines())
            names << line.cells.constFirst();
        return names;
    }
    void waitForTracks(int count) const
    {
        QTRY_COMPARE_WITH_TIMEOUT(ofForm<RowList>(u"correlacion"_s)->model()->rowCount(), count, PatientWait);
    }

private Q_SLOTS:
    void init()
    {
        leaveProxiesOut();
        beginTest();
        m_server = std::make_unique<CddbServer>();
        store({{u"tags"_s, u"3"_s}, {u"servidor"_s, m_server->hostAndPort()}});
    }
    void cleanup()
    {
        endTest();
        m_server.reset();
    }

    void buttonEntryAndKeyOpenItForTheSelectedFiles_data()
    {
        QTest::addColumn<QString>("way");
        QTest::newRow("button") << u"button tb_1"_s;
        QTest::newRow("entry") << u"menu tb_freedb"_s;
        QTest::newRow("key") << u"list F3"_s;
    }
    void buttonEntryAndKeyOpenItForTheSelectedFiles()
    {
        QFETCH(QString, way);
        openThree();
        activate();
        selectRows({u"c.mp3"_s, u"a.mp3"_s});
        run(way);
        QVERIFY(form() != nullptr);
        QVERIFY(form()->isVisible());
        QCOMPARE(rowsOfForm(), (QStringList{u"a.mp3"_s, u"c.mp3"_s}));
        QCOMPARE(form()->windowModality(), Qt::WindowModal);
    }

    void theListsMenuHasIt()
    {
        openThree();
        QVERIFY(control<QMenu>(u"listMenu"_s)->actions().contains(action(u"tb_freedb"_s)));
    }

    void withNothingSelectedItDoesNotOpen()
    {
        openThree();
        selectRows({});
        QVERIFY(!control<QToolButton>(u"tb_1"_s)->isEnabled());
        control<QToolButton>(u"tb_1"_s)->click();
        run(u"list F3"_s);
        QVERIFY(form() == nullptr);
    }

    void itIsOpenOnce()
    {
        openThree();
        buttonAction(1)->trigger();
        buttonAction(1)->trigger();
        QCOMPARE(m_window->findChildren<freedb *>().size(), 1);
        form()->close();
        QTRY_VERIFY_WITH_TIMEOUT(form() == nullptr, PatientWait);
        buttonAction(1)->trigger();
        QVERIFY(form() != nullptr);
    }

    void rowsOfSubfoldersBearTheirPath()
    {
        addThree();
        addFile(u"music/cd1/d.mp3"_s);
        openAt(at(u"music"_s));
        action(u"listTree"_s)->trigger();
        buttonAction(1)->trigger();
        QCOMPARE(rowsOfForm().constLast(), native(u"cd1/d.mp3"_s));
    }

    void searchAgainBeginsWithTheArtistOfTheListsFirstRow()
    {
        addTagged(u"music/a.mp3"_s, u"Ana"_s, u"Faro"_s);
        addTagged(u"music/b.mp3"_s, u"Berta"_s, u"Mar"_s);
        openAt(at(u"music"_s));
        selectRows({u"b.mp3"_s});
        buttonAction(1)->trigger();
        ofForm<QPushButton>(u"Pic"_s)->click();
        QCOMPARE(ofForm<QLineEdit>(u"busca"_s)->text(), u"Ana"_s);
    }

    void theListShowsWhatIsSavedAndTheProgressComesToItsEnd()
    {
        openThree();
        buttonAction(1)->trigger();
        ofForm<QPushButton>(u"Pic"_s)->click();
        ofForm<QLineEdit>(u"busca"_s)->setText(u"Las Gaviotas"_s);
        ofForm<QPushButton>(u"buscar"_s)->click();
        waitForTracks(10);
        ofForm<QPushButton>(u"Command2"_s)->click();
        QCOMPARE(ofForm<QProgressBar>(u"pb"_s)->value(), 100);
        QCOMPARE(cell(0, 2), u"Puerto"_s);
        QCOMPARE(cell(2, 1), u"03"_s);
        QCOMPARE(cell(2, 3), u"Las Gaviotas"_s);
        QCOMPARE(cell(0, 6) + cell(0, 7), u"yesyes"_s); // mode 3
        QCOMPARE(list()->selectedRows(), (std::vector<int>{0, 1, 2}));
        QVERIFY(form()->isVisible());
    }

    void itGoesWithTheMainWindowWhileTheServerHangs()
    {
        m_server->setFault(Fault::Silence);
        openThree();
        buttonAction(1)->trigger();
        QTRY_COMPARE_WITH_TIMEOUT(m_server->openConnections(), 1, PatientWait);
        closeWindow();
        QTRY_COMPARE_WITH_TIMEOUT(m_server->openConnections(), 0, PatientWait);
        QVERIFY(!stored(u"freedb geometry").isEmpty());
    }
};

QTEST_MAIN(TestOpenLookup)
#include "tst_openlookup.moc"
