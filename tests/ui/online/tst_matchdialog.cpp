// SPDX-License-Identifier: GPL-3.0-or-later
// Choosing among several discs: the matches are listed with their number of tracks and how well the lengths fit, the
// tracks of the current one below with their differences, and the chosen one fills the form.

#include "ui/online/lookupfixture.h"

#include <QRegularExpression>
#include <QTreeWidget>

using namespace ravlin;
using namespace ravlin::test;

class TestMatchDialog : public LookupFixture
{
    Q_OBJECT

private:
    QDialog *m_choice = nullptr;

    void openChoice(const std::vector<qint64> &marks)
    {
        addTracks(marks);
        openForm();
        m_choice = waitForWindow(u"matchDialog"_s);
    }
    QTreeWidget *matches() const { return m_choice->findChild<QTreeWidget *>(u"matches"_s); }
    QPushButton *ok() const { return m_choice->findChild<QPushButton *>(u"matchOk"_s); }
    QString note() const { return m_choice->findChild<QLabel *>(u"matchStatus"_s)->text(); }
    /// The texts of a table, row by row.
    QStringList rowsOf(const QString &name) const
    {
        const auto *table = m_choice->findChild<QTreeWidget *>(name);
        QStringList rows;
        for (int row = 0; row < table->topLevelItemCount(); ++row) {
            QStringList cells;
            for (int column = 0; column < table->columnCount(); ++column)
                cells << table->topLevelItem(row)->text(column);
            rows << cells.join(u" | "_s);
        }
        return rows;
    }
    void waitForRow(int row, const QString &text)
    {
        waitUntil([&] { return rowsOf(u"matches"_s).value(row) == text; });
        QCOMPARE(rowsOf(u"matches"_s).value(row), text);
    }
    void choose(int row) const { matches()->setCurrentItem(matches()->topLevelItem(row)); }

private Q_SLOTS:
    void init() { startAfresh(); }
    void cleanup() { closeForm(); }

    void severalExactMatchesAreOfferedWithTheirDifferences()
    {
        openChoice(disc(FirstTake).marks);
        waitForRow(0, u"The Quiet Three | First Take | jazz | 3 | 0.0 s"_s);
        waitForRow(1, u"The Quiet Three | First Take (reissue) | misc | 3 | 0.0 s"_s);
        QCOMPARE(rowsOf(u"matchTracks"_s), (QStringList{u"1 | One | 03:18.0 | 0.0 s"_s, u"2 | Two | 03:21.3 | 0.0 s"_s,
                                               u"3 | Three | 03:21.6 | 0.0 s"_s}));
        QVERIFY(!saveButton()->isEnabled());
        QCOMPARE(tracks()->rows().rowCount(), 0);
    }

    void anInexactMatchIsOfferedWithEachTracksDifference()
    {
        openChoice({150, 15150, 30240, 45300});
        QTRY_VERIFY_WITH_TIMEOUT(rowsOf(u"matches"_s).join(u'\n').contains(u"Almost as Long"_s), PatientWait);
        const int almost = static_cast<int>(rowsOf(u"matches"_s).indexOf(QRegularExpression(u".*Almost.*"_s)));
        choose(almost);
        QTRY_COMPARE_WITH_TIMEOUT(rowsOf(u"matchTracks"_s),
            (QStringList{u"1 | x | 03:18.5 | +1.5 s"_s, u"2 | y | 03:20.9 | +0.3 s"_s, u"3 | z | 03:22.5 | -1.7 s"_s}),
            PatientWait);
    }

    void theChosenDiscFillsTheForm()
    {
        openChoice(disc(FirstTake).marks);
        choose(1);
        QVERIFY(waitUntil([this] { return ok()->isEnabled(); }));
        ok()->click();
        QCOMPARE(fields(), (QStringList{u"The Quiet Three"_s, u"First Take (reissue)"_s, u"1999"_s, u"Jazz"_s}));
        QCOMPARE(titles().constLast(), u"Three (mono)"_s);
        QVERIFY(saveButton()->isEnabled());
        QVERIFY(!database()->isBusy());
    }

    void enterInTheListChooses()
    {
        openChoice(disc(FirstTake).marks);
        QVERIFY(waitUntil([this] { return ok()->isEnabled(); }));
        QTest::keyClick(matches(), Qt::Key_Return);
        QTRY_COMPARE_WITH_TIMEOUT(field(u"talbum"_s)->text(), u"First Take"_s, PatientWait);
    }

    void whoChoosesNoneHasNothingToSave()
    {
        openChoice(disc(FirstTake).marks);
        m_choice->findChild<QPushButton *>(u"matchCancel"_s)->click();
        QCOMPARE(status(), u"no disc was chosen"_s);
        QVERIFY(!saveButton()->isEnabled());
        QVERIFY(!database()->isBusy());
    }

    void whoChoosesNoneAfterASearchKeepsTheContents()
    {
        openFound(Harbour);
        searchFor(u"The Quiet Three"_s);
        m_choice = waitForWindow(u"matchDialog"_s);
        QTest::keyClick(m_choice, Qt::Key_Escape);
        QCOMPARE(field(u"talbum"_s)->text(), u"Harbour Songs"_s);
        QVERIFY(saveButton()->isEnabled());
    }

    void aDiscThatTheServerHasLostCanNotBeChosenAndTheOthersCan()
    {
        m_server->setFault(Fault::Code401, "cddb read jazz");
        openChoice(disc(FirstTake).marks);
        waitForRow(1, u"The Quiet Three | First Take (reissue) | misc | 3 | 0.0 s"_s);
        QVERIFY(note().startsWith(u"the server no longer has the disc that it offered"_s));
        QVERIFY(!ok()->isEnabled());
        choose(1);
        QVERIFY(note().isEmpty());
        QVERIFY(ok()->isEnabled());
        // Coming back to it asks again.
        m_server->setFault(Fault::None);
        choose(0);
        QVERIFY(waitUntil([this] { return ok()->isEnabled(); }));
    }

    void aServerThatFailsIsNotAskedForOneDiscAfterAnother()
    {
        m_server->setFault(Fault::HttpRefused, "cddb read");
        openChoice(disc(FirstTake).marks);
        QTRY_VERIFY_WITH_TIMEOUT(note().startsWith(u"the web server refused the request"_s), PatientWait);
        QVERIFY(!database()->isBusy());
        QCOMPARE(m_server->commands().size(), 2); // the query, and one read
    }

    void theCurrentDiscIsReadBeforeTheOthers()
    {
        m_server->setFault(Fault::Silence, "cddb read jazz");
        openChoice(disc(FirstTake).marks);
        choose(1); // while the first is being read
        QVERIFY(waitUntil([this] { return ok()->isEnabled(); }));
        ok()->click();
        QCOMPARE(field(u"talbum"_s)->text(), u"First Take (reissue)"_s);
    }

    void theFormCanBeClosedWithTheChoiceOpen()
    {
        m_server->setFault(Fault::Silence, "cddb read");
        openChoice(disc(FirstTake).marks);
        m_form.reset();
        QTRY_COMPARE_WITH_TIMEOUT(m_server->openConnections(), 0, PatientWait);
    }

    void withoutPlayingTimesThereAreNoDifferences()
    {
        addFile(u"bad.mp3"_s, "nothing");
        openForm();
        QTRY_VERIFY_WITH_TIMEOUT(status().startsWith(u"these files do not make up a disc"_s), PatientWait);
        searchFor(u"The Quiet Three"_s);
        m_choice = waitForWindow(u"matchDialog"_s);
        waitForRow(0, u"The Quiet Three | First Take | jazz | 3 | "_s);
    }
};

QTEST_MAIN(TestMatchDialog)
#include "tst_matchdialog.moc"
