// SPDX-License-Identifier: GPL-3.0-or-later
// The window of the history: shows entries, their files and values from the database, also what is recorded while it is
// open; filters by text and folder; offers to undo an entry, chosen files of it, or with it what was done later to the
// same files. Works where there is no history or a damaged one, by keyboard, on a small screen, in three languages.

#include "core/app/idiomas.h"
#include "ui/files/changemodel.h"
#include "ui/files/entrymodel.h"
#include "ui/files/historial.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeView>

using namespace Qt::StringLiterals;
using namespace ravlin;
using history::History;
using storage::ChangeKind;
using storage::ChangeRecord;
using storage::ValueChange;

using Entries = std::vector<qint64>;
using Files = std::set<qint64>;

class TestHistorial : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    Captions m_captions;
    std::unique_ptr<History> m_history;
    std::unique_ptr<historial> m_window;
    qint64 m_undone = 0;
    bool m_isWithLater = false;
    Files m_undoneFiles;
    int m_undoCount = 0;

    static constexpr int PatientWait = 30'000;

    QString database() const { return QDir::toNativeSeparators(m_folder->filePath(u"data/history.sqlite"_s)); }
    QString music(const QString &name = {}) const
    {
        return QDir::toNativeSeparators(m_folder->filePath(u"music"_s)) + QDir::separator() + name;
    }
    /// Records an entry with these files, each with one value.
    qint64 record(const QString &folder, const QStringList &names, const QString &value, bool fails = false)
    {
        m_history->beginEntry(history::Kind::Multi, folder);
        for (const QString &name : names) {
            ChangeRecord change;
            change.path = folder + name;
            change.values = {{u"artist"_s, u"former"_s, value}};
            const auto ticket = m_history->begin(change);
            if (!ticket)
                qFatal("not recorded: %s", qPrintable(m_history->problem().value_or(Error()).detail));
            m_history->end(*ticket, storage::ChangeDone{});
        }
        if (fails)
            m_history->addFailure(folder + u"failed.mp3"_s, Error{ErrorCode::ReadOnly, {}, {}});
        return m_history->endEntry().entry.id;
    }
    void open()
    {
        m_window = std::make_unique<historial>(m_captions, platform::FileSystem::native(), database());
        connect(
            m_window.get(), &historial::undoRequested, this, [this](qint64 entry, const Files &files, bool withLater) {
                m_undone = entry;
                m_undoneFiles = files;
                m_isWithLater = withLater;
                ++m_undoCount;
            });
        m_window->show();
    }
    template <typename Control>
    Control *control(const QString &name) const
    {
        auto *found = m_window->findChild<Control *>(name);
        if (!found)
            qFatal("no control %s", qPrintable(name));
        return found;
    }
    QTreeView *entries() const { return control<QTreeView>(u"entries"_s); }
    QTreeView *files() const { return control<QTreeView>(u"changes"_s); }
    const EntryModel &entryModel() const { return *qobject_cast<const EntryModel *>(entries()->model()); }
    const ChangeModel &changeModel() const { return *qobject_cast<const ChangeModel *>(files()->model()); }
    QPushButton *button(const QString &name) const { return control<QPushButton>(name); }
    QString state() const { return control<QLabel>(u"state"_s)->text(); }
    Entries ids() const
    {
        Entries ids;
        for (const history::Entry &entry : entryModel().entries())
            ids.push_back(entry.id);
        return ids;
    }
    void choose(qint64 entry) const { entries()->setCurrentIndex(entryModel().indexOf(entry)); }
    bool showsFiles(const QStringList &names) const
    {
        QStringList shown;
        for (int row = 0; row < changeModel().rowCount(); ++row)
            shown << changeModel().index(row, 0).data().toString();
        return shown == names;
    }

private Q_SLOTS:
    void init()
    {
        m_window.reset();
        m_folder = std::make_unique<QTemporaryDir>();
        m_captions.setLanguageName(u"english"_s);
        m_captions.fill();
        m_history = std::make_unique<History>(platform::FileSystem::native(), database());
        m_undone = 0;
        m_undoneFiles.clear();
        m_undoCount = 0;
    }
    void cleanup()
    {
        m_window.reset();
        m_history.reset();
    }

    void theNewestEntryIsShownWithItsFilesAndValues()
    {
        const qint64 first = record(music(), {u"a.mp3"_s}, u"one"_s);
        const qint64 second = record(music(), {u"b.mp3"_s, u"c.mp3"_s}, u"two"_s, true);
        open();
        QTRY_COMPARE_WITH_TIMEOUT(ids(), (Entries{second, first}), PatientWait);
        QTRY_VERIFY_WITH_TIMEOUT(showsFiles({u"b.mp3"_s, u"c.mp3"_s, u"failed.mp3"_s}), PatientWait);
        const QModelIndex value = changeModel().index(0, 0, changeModel().index(0, 0));
        QCOMPARE(value.data().toString(), u"artist"_s);
        QCOMPARE(value.siblingAtColumn(1).data().toString(), u"former"_s);
        QCOMPARE(value.siblingAtColumn(2).data().toString(), u"two"_s);
        QCOMPARE(changeModel().index(2, ChangeModel::Outcome).data().toString(), u"failed: the file is read-only"_s);
        choose(first);
        QTRY_VERIFY_WITH_TIMEOUT(showsFiles({u"a.mp3"_s}), PatientWait);
        QVERIFY(entryModel()
                    .data(entries()->currentIndex(), Qt::AccessibleTextRole)
                    .toString()
                    .contains(u"tags of several files"_s));
    }

    void whatIsRecordedMeanwhileAppears()
    {
        const qint64 first = record(music(), {u"a.mp3"_s}, u"one"_s);
        open();
        QTRY_COMPARE_WITH_TIMEOUT(ids(), Entries{first}, PatientWait);
        const qint64 second = record(music(), {u"b.mp3"_s}, u"two"_s);
        m_window->refresh();
        QTRY_COMPARE_WITH_TIMEOUT(ids(), (Entries{second, first}), PatientWait);
        QCOMPARE(entryModel().entryAt(entries()->currentIndex())->id, first); // the user may be reading it
    }

    void theTextAndTheFolderChooseEntries()
    {
        const qint64 inMusic = record(music(), {u"Ana.mp3"_s}, u"one"_s);
        const qint64 below = record(music(u"sub"_s) + QDir::separator(), {u"b.mp3"_s}, u"Anaïs"_s);
        const QString other = QDir::toNativeSeparators(m_folder->filePath(u"musical"_s)) + QDir::separator();
        const qint64 beside = record(other, {u"c.mp3"_s}, u"%"_s);
        open();
        QTRY_COMPARE_WITH_TIMEOUT(ids(), (Entries{beside, below, inMusic}), PatientWait);
        auto *text = control<QLineEdit>(u"texto"_s);
        text->setFocus();
        QTest::keyClicks(text, u"ana"_s);
        QTRY_COMPARE_WITH_TIMEOUT(ids(), (Entries{below, inMusic}), PatientWait);
        text->setText(u"%"_s);
        QTest::keyClick(text, Qt::Key_Return);
        QTRY_COMPARE_WITH_TIMEOUT(ids(), Entries{beside}, PatientWait);
        QVERIFY(m_window->isVisible());
        text->setText(u"nowhere"_s);
        QTest::keyClick(text, Qt::Key_Return);
        QTRY_COMPARE_WITH_TIMEOUT(ids(), Entries{}, PatientWait);
        QCOMPARE(state(), u"no change matches"_s);
        QVERIFY(!button(u"deshacer"_s)->isEnabled());
        QCOMPARE(changeModel().rowCount(), 0);
        text->clear();
        auto *folder = control<QComboBox>(u"carpeta"_s);
        folder->setFocus();
        QCOMPARE(folder->count(), 4);
        while (folder->currentData().toString() != QDir::toNativeSeparators(m_folder->filePath(u"music"_s)))
            QTest::keyClick(folder, Qt::Key_Down);
        QTRY_COMPARE_WITH_TIMEOUT(ids(), (Entries{below, inMusic}), PatientWait);
    }

    void anEntryIsUndoneAsAWhole()
    {
        record(music(), {u"a.mp3"_s}, u"one"_s);
        const qint64 second = record(music(), {u"b.mp3"_s}, u"two"_s);
        open();
        QTRY_VERIFY_WITH_TIMEOUT(showsFiles({u"b.mp3"_s}), PatientWait);
        QVERIFY(!button(u"deshacerArchivos"_s)->isEnabled());
        button(u"deshacer"_s)->click();
        QTRY_COMPARE_WITH_TIMEOUT(m_undoCount, 1, PatientWait);
        QCOMPARE(m_undone, second);
        QVERIFY(!m_isWithLater);
        QVERIFY(m_undoneFiles.empty());
    }

    void chosenFilesAreUndone()
    {
        const qint64 entry = record(music(), {u"a.mp3"_s, u"b.mp3"_s, u"c.mp3"_s}, u"one"_s, true);
        open();
        QTRY_COMPARE_WITH_TIMEOUT(changeModel().rowCount(), 4, PatientWait);
        const auto select = [this](const QModelIndex &index) {
            files()->selectionModel()->select(index, QItemSelectionModel::Select | QItemSelectionModel::Rows);
        };
        select(changeModel().index(3, 0)); // failed: there is nothing to undo
        QVERIFY(!button(u"deshacerArchivos"_s)->isEnabled());
        select(changeModel().index(0, 0, changeModel().index(0, 0))); // a value stands for its file
        select(changeModel().index(2, 0));
        QVERIFY(button(u"deshacerArchivos"_s)->isEnabled());
        button(u"deshacerArchivos"_s)->click();
        QTRY_COMPARE_WITH_TIMEOUT(m_undoCount, 1, PatientWait);
        QCOMPARE(m_undone, entry);
        QCOMPARE(m_undoneFiles, (Files{changeModel().files()[0].id, changeModel().files()[2].id}));
    }

    void whatWasDoneLaterToTheSameFilesIsOfferedByName()
    {
        const qint64 first = record(music(), {u"a.mp3"_s, u"b.mp3"_s}, u"one"_s);
        record(music(), {u"a.mp3"_s}, u"two"_s);
        record(music(), {u"c.mp3"_s}, u"three"_s);
        record(music(), {u"b.mp3"_s}, u"four"_s);
        open();
        QTRY_COMPARE_WITH_TIMEOUT(ids().size(), 4U, PatientWait);
        choose(first);
        QTRY_VERIFY_WITH_TIMEOUT(showsFiles({u"a.mp3"_s, u"b.mp3"_s}), PatientWait);
        const auto question = [this] { return m_window->findChild<QMessageBox *>(u"undoLater"_s); };
        button(u"deshacer"_s)->click();
        QTRY_VERIFY_WITH_TIMEOUT(question() != nullptr, PatientWait);
        QCOMPARE(question()->informativeText().count(u"tags of several files"_s), 2);
        QCOMPARE(question()->defaultButton(), question()->button(QMessageBox::No));
        question()->button(QMessageBox::No)->click();
        QTRY_VERIFY_WITH_TIMEOUT(question() == nullptr, PatientWait);
        QCOMPARE(m_undoCount, 0);
        button(u"deshacer"_s)->click();
        QTRY_VERIFY_WITH_TIMEOUT(question() != nullptr, PatientWait);
        question()->button(QMessageBox::Yes)->click();
        QTRY_COMPARE_WITH_TIMEOUT(m_undoCount, 1, PatientWait);
        QCOMPARE(m_undone, first);
        QVERIFY(m_isWithLater);
    }

    void onlyWhatTouchedTheChosenFilesIsOfferedWithThem()
    {
        const qint64 first = record(music(), {u"a.mp3"_s, u"b.mp3"_s}, u"one"_s);
        record(music(), {u"a.mp3"_s}, u"two"_s);
        open();
        QTRY_COMPARE_WITH_TIMEOUT(ids().size(), 2U, PatientWait);
        choose(first);
        QTRY_COMPARE_WITH_TIMEOUT(changeModel().rowCount(), 2, PatientWait);
        files()->selectionModel()->select(
            changeModel().index(1, 0), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        button(u"deshacerArchivos"_s)->click();
        QTRY_COMPARE_WITH_TIMEOUT(m_undoCount, 1, PatientWait);
        QCOMPARE(m_undone, first);
        QVERIFY(!m_isWithLater);
    }

    void whatAnUndoCameToStaysUntilTheNext()
    {
        record(music(), {u"a.mp3"_s}, u"one"_s);
        open();
        QTRY_VERIFY_WITH_TIMEOUT(showsFiles({u"a.mp3"_s}), PatientWait);
        m_window->showOutcome(u"1 failed"_s);
        const qint64 second = record(music(), {u"b.mp3"_s}, u"two"_s);
        m_window->refresh();
        QTRY_COMPARE_WITH_TIMEOUT(ids().front(), second, PatientWait);
        QCOMPARE(state(), u"1 failed"_s);
        button(u"deshacer"_s)->click();
        QCOMPARE(state(), QString());
    }

    void whatIsTakenBackIsShownSo()
    {
        const qint64 entry = record(music(), {u"a.mp3"_s}, u"one"_s);
        open();
        QTRY_VERIFY_WITH_TIMEOUT(showsFiles({u"a.mp3"_s}), PatientWait);
        m_history->beginReverting(entry);
        m_history->reverting(changeModel().files()[0].id);
        ChangeRecord back;
        back.path = music(u"a.mp3"_s);
        m_history->end(m_history->begin(back).value(), storage::ChangeDone{});
        m_history->endReverting(true);
        m_window->refresh();
        QTRY_COMPARE_WITH_TIMEOUT(
            changeModel().index(0, ChangeModel::Outcome).data().toString(), u"undone"_s, PatientWait);
        QVERIFY(!button(u"deshacer"_s)->isEnabled());
        QCOMPARE(ids(), Entries{entry});
    }

    void withoutAHistoryItSaysSo()
    {
        open();
        QTRY_COMPARE_WITH_TIMEOUT(state(), u"no changes are recorded"_s, PatientWait);
        QVERIFY(!button(u"deshacer"_s)->isEnabled() && !button(u"deshacerArchivos"_s)->isEnabled());
        QVERIFY(!QFile::exists(database())); // looking makes none
    }

    void anUnreadableHistoryIsSaid()
    {
        QDir().mkpath(database()); // a folder in its place
        open();
        QTRY_VERIFY_WITH_TIMEOUT(state().startsWith(u"the history can't be read: "_s), PatientWait);
        QVERIFY(!button(u"deshacer"_s)->isEnabled());
    }

    void anotherLanguageShowsAtOnce()
    {
        const qint64 entry = record(music(), {u"a.mp3"_s}, u"one"_s);
        open();
        QTRY_VERIFY_WITH_TIMEOUT(showsFiles({u"a.mp3"_s}), PatientWait);
        m_captions.setLanguageName(u"french"_s);
        m_captions.fill();
        m_window->applyCaptions();
        QCOMPARE(m_window->windowTitle(), u"historique des modifications"_s);
        QCOMPARE(entryModel().index(0, 0).data().toString(), u"aujourd'hui"_s);
        QCOMPARE(entryModel().entryAt(entries()->currentIndex())->id, entry);
        QCOMPARE(control<QComboBox>(u"carpeta"_s)->itemText(0), u"tous les dossiers"_s);
        QTRY_COMPARE_WITH_TIMEOUT(
            changeModel().index(0, ChangeModel::Outcome).data().toString(), u"modifié"_s, PatientWait);
    }

    void everyControlHasANameAndATabStop()
    {
        record(music(), {u"a.mp3"_s}, u"one"_s);
        open();
        QTRY_VERIFY_WITH_TIMEOUT(showsFiles({u"a.mp3"_s}), PatientWait);
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        files()->selectAll();
        auto *first = control<QLineEdit>(u"texto"_s);
        first->setFocus();
        QStringList way;
        do {
            const QWidget *widget = QApplication::focusWidget();
            way << widget->objectName();
            const auto *pushed = qobject_cast<const QAbstractButton *>(widget);
            QVERIFY2(!widget->accessibleName().isEmpty() || (pushed && !pushed->text().isEmpty()),
                qPrintable(widget->objectName()));
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        } while (QApplication::focusWidget() != first && way.size() < 30);
        QCOMPARE(way.join(u' '), u"texto carpeta entries changes deshacer deshacerArchivos close"_s);
        QTest::keyClick(m_window.get(), Qt::Key_Escape);
        QVERIFY(!m_window->isVisible());
    }

    void itFitsASmallScreen()
    {
        open();
        QVERIFY(m_window->minimumSizeHint().width() <= 640);
        QVERIFY(m_window->minimumSizeHint().height() <= 400);
    }

    void manyFilesOpenWithoutAPause()
    {
        constexpr int Count = 30'000;
        m_history->beginEntry(history::Kind::Multi, music());
        for (int i = 0; i < Count; ++i) {
            ChangeRecord change;
            change.path = music(u"%1.mp3"_s.arg(i));
            change.values = {{u"artist"_s, u"former"_s, u"new"_s}};
            m_history->end(m_history->begin(change).value(), storage::ChangeDone{});
        }
        m_history->endEntry();
        QElapsedTimer clock;
        clock.start();
        open();
        const qint64 opening = clock.elapsed();
        qint64 longest = 0; // without looking at events
        while (changeModel().rowCount() != Count && clock.elapsed() < PatientWait) {
            QElapsedTimer step;
            step.start();
            QCoreApplication::processEvents();
            longest = std::max(longest, step.elapsed());
        }
        QCOMPARE(changeModel().rowCount(), Count);
        qInfo("opening: %lld ms, all files there: %lld ms, longest pause: %lld ms", opening, clock.elapsed(), longest);
        QVERIFY(opening < 2'000 && longest < 1'000);
    }
};

QTEST_MAIN(TestHistorial)
#include "tst_historial.moc"
