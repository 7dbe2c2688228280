// SPDX-License-Identifier: GPL-3.0-or-later
// The lists of the history's window: entries below today, this week and before; files with their values. Foreign text
// is bounded and on one line, the first cell tells a screen reader the whole row, and 100,000 files cost what the rows
// on the screen cost.

#include "core/app/idiomas.h"
#include "ui/files/changemodel.h"
#include "ui/files/entrymodel.h"

#include <QAbstractItemModelTester>
#include <QDir>
#include <QElapsedTimer>
#include <QTest>
#include <QTreeView>

using namespace Qt::StringLiterals;
using namespace ravlin;
using history::Entry;
using history::FileRecord;

class TestHistoryModels : public QObject
{
    Q_OBJECT

private:
    Captions m_captions;

    static Entry entry(qint64 id, const QDateTime &time, history::Kind kind = history::Kind::Multi)
    {
        return {id, time.toMSecsSinceEpoch(), kind, QDir::rootPath() + u"music"_s, 14, 0};
    }
    static QStringList texts(const QAbstractItemModel &model, const QModelIndex &index)
    {
        QStringList texts;
        for (int column = 0; column < model.columnCount(); ++column)
            texts << index.siblingAtColumn(column).data().toString();
        return texts;
    }
    static FileRecord file(const QString &name, const std::vector<storage::ValueChange> &values = {})
    {
        FileRecord file;
        file.id = 7;
        file.path = QDir::toNativeSeparators(u"/music/"_s + name);
        file.values = values;
        return file;
    }

private Q_SLOTS:
    void init()
    {
        m_captions.setLanguageName(u"english"_s);
        m_captions.fill();
    }

    void entriesStandBelowTheirDays()
    {
        EntryModel model(m_captions);
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
        const QDate firstDay =
            m_captions.locale().firstDayOfWeek() == Qt::Sunday ? QDate(2026, 11, 22) : QDate(2026, 11, 23);
        const QDateTime now(firstDay.addDays(2), QTime(15, 0));
        model.setEntries({entry(9, now.addSecs(60)), entry(8, now.addSecs(-60)), entry(7, now.addDays(-1)),
                             entry(6, now.addDays(-30), history::Kind::Rename)},
            now);
        QCOMPARE(model.rowCount(), 3);
        QStringList groups;
        for (int group = 0; group < 3; ++group)
            groups << model.index(group, 0).data().toString() + u' ' +
                          QString::number(model.rowCount(model.index(group, 0)));
        QCOMPARE(groups.join(u", "_s), u"today 2, this week 1, before 1"_s);
        QCOMPARE(texts(model, model.indexOf(6)).mid(1).join(u'|'),
            QDir::toNativeSeparators(u"files renamed|14|"_s + QDir::rootPath() + u"music"_s));
        QCOMPARE(model.entryAt(model.indexOf(7))->id, 7);
        QCOMPARE(model.entryAt(model.index(0, 0)), nullptr);
        QVERIFY(!model.indexOf(5).isValid());
        QVERIFY(!model.flags(model.index(0, 0)).testFlag(Qt::ItemIsSelectable));
    }

    void aClockSetBackKeepsTheOrder()
    {
        EntryModel model(m_captions);
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
        const QDateTime now(QDate(2026, 11, 25), QTime(15, 0));
        model.setEntries({entry(3, now.addDays(-40)), entry(2, now), entry(1, now.addDays(-50))}, now);
        QCOMPARE(model.rowCount(), 1);
        for (const int id : {1, 2, 3})
            QCOMPARE(model.entryAt(model.indexOf(id))->id, id);
    }

    void aFilesValuesStandBelowIt()
    {
        ChangeModel model(m_captions);
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
        FileRecord failed = file(u"b.mp3"_s);
        failed.state = history::FileState::Failed;
        failed.error = Error{ErrorCode::ReadOnly, {}, {}};
        model.setFiles({file(u"a.mp3"_s, {{u"artist"_s, u"Ana"_s, u"Eva"_s}, {u"genre"_s, u"Blues"_s, {}}}), failed},
            QDir::toNativeSeparators(u"/music"_s));
        const QModelIndex first = model.index(0, 0);
        QCOMPARE(texts(model, first).join(u'|'), u"a.mp3|||changed"_s);
        QCOMPARE(texts(model, model.index(0, 0, first)).join(u'|'), u"artist|Ana|Eva|"_s);
        QCOMPARE(texts(model, model.index(1, 0, first)).join(u'|'), u"genre|Blues|(empty)|"_s);
        QCOMPARE(texts(model, model.index(1, 0)).join(u'|'), u"b.mp3|||failed: the file is read-only"_s);
        QCOMPARE(model.fileAt(model.index(1, 2, first)).path, file(u"a.mp3"_s).path);
        QCOMPARE(model.index(0, 0, first).data(Qt::AccessibleTextRole).toString(), u"artist; Ana; Eva"_s);
    }

    void foreignTextIsBoundedAndOnOneLine()
    {
        ChangeModel model(m_captions);
        const QString hostile = u"<b>x</b>\n\u202e\a"_s + QString(100'000, u'y');
        model.setFiles({file(hostile, {{hostile, hostile, hostile}})}, {});
        EntryModel entries(m_captions);
        Entry one = entry(1, QDateTime::currentDateTime());
        one.folder = hostile;
        entries.setEntries({one}, QDateTime::currentDateTime());
        const QModelIndex value = model.index(0, 0, model.index(0, 0));
        for (const QModelIndex &index : {model.index(0, 0), value, value.siblingAtColumn(1), value.siblingAtColumn(2),
                 entries.indexOf(1).siblingAtColumn(EntryModel::Folder)}) {
            for (const int role : {Qt::DisplayRole, Qt::ToolTipRole}) {
                const QString shown = index.data(role).toString();
                QVERIFY(shown.size() <= 1'000 && shown.contains(u"<b>x<"_s));
                QVERIFY(!shown.contains(u'\n') && !shown.contains(u'\u202e') && !shown.contains(u'\a'));
            }
        }
    }

    void aHundredThousandFilesOpenAtOnce()
    {
        std::vector<FileRecord> files;
        std::vector<Entry> many;
        const QDateTime now = QDateTime::currentDateTime();
        for (int i = 0; i < 100'000; ++i) {
            files.push_back(file(u"%1.mp3"_s.arg(i), {{u"title"_s, u"old"_s, u"new"_s}, {u"track"_s, {}, u"1"_s}}));
            many.push_back(entry(100'000 - i, now.addSecs(-60 * i)));
        }
        ChangeModel changes(m_captions);
        EntryModel entries(m_captions);
        QTreeView list;
        QTreeView entryList;
        for (QTreeView *view : {&list, &entryList}) {
            view->setUniformRowHeights(true);
            view->resize(800, 600);
        }
        list.setModel(&changes);
        entryList.setModel(&entries);
        list.show();
        entryList.show();
        QElapsedTimer clock;
        clock.start();
        changes.setFiles(std::move(files), {});
        list.grab();
        const qint64 changesTook = clock.restart();
        entries.setEntries(std::move(many), now);
        entryList.expandAll();
        entryList.setCurrentIndex(entries.indexOf(1));
        entryList.grab();
        const qint64 entriesTook = clock.elapsed();
        qInfo("100,000 files: %lld ms, 100,000 entries: %lld ms", changesTook, entriesTook);
        QVERIFY2(changesTook < 2'000 && entriesTook < 2'000, "a row costs more than a few microseconds");
    }
};

QTEST_MAIN(TestHistoryModels)
#include "tst_historymodels.moc"
