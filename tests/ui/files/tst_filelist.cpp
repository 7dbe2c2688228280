// SPDX-License-Identifier: GPL-3.0-or-later
// Contract of the list as a widget: what keys and mouse report, how rows look. Selection and current row stay with
// their rows through sorting and dragging, and a dragged row stays where it was dropped.

#include "ui/controls/plain/tooltips.h"
#include "ui/files/filelist.h"

#include <QHeaderView>
#include <QHelpEvent>
#include <QLineEdit>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QToolTip>

using namespace ravlin;

class TestFileList : public QObject
{
    Q_OBJECT

private:
    ToolTips m_toolTips{nullptr};
    std::unique_ptr<FileList> m_list;

    static std::vector<ListRow> rows(const QStringList &names)
    {
        std::vector<ListRow> made;
        for (const QString &name : names) {
            ListFields tag;
            tag.title = QString(name.right(1)).repeated(2);
            made.push_back({{}, ListedFile(name, tag)});
        }
        return made;
    }
    void fill(const char *names) const { m_list->setRows(rows(QString::fromUtf8(names).split(u' '))); }
    QString shown() const { return m_list->rowTexts().join(u' '); }
    QString selected() const { return m_list->selectedRowTexts().join(u' '); }
    QPoint middleOf(int row) const { return m_list->visualRect(m_list->model()->index(row, 0)).center(); }
    void click(int row, Qt::MouseButton button = Qt::LeftButton, Qt::KeyboardModifiers modifiers = {}) const
    {
        QTest::mouseClick(m_list->viewport(), button, modifiers, middleOf(row));
    }
    void drag(int row, QPoint to, bool drops = true) const
    {
        QWidget *viewport = m_list->viewport();
        const QPoint from = middleOf(row);
        QTest::mousePress(viewport, Qt::LeftButton, {}, from);
        QTest::mouseMove(viewport, (from + to) / 2);
        QTest::mouseMove(viewport, to);
        if (drops)
            QTest::mouseRelease(viewport, Qt::LeftButton, {}, to);
    }
    /// Sends only that key. QTest's functions also press and release the modifiers, which are keys themselves.
    void sendKey(QEvent::Type type, Qt::Key key, Qt::KeyboardModifiers modifiers) const
    {
        QKeyEvent event(type, key, modifiers);
        QCoreApplication::sendEvent(m_list.get(), &event);
    }
    void clickHeader(int column) const
    {
        QHeaderView *header = m_list->header();
        const QPoint place(header->sectionViewportPosition(column) + 10, header->height() / 2);
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, place);
    }

private Q_SLOTS:
    void init()
    {
        m_list = std::make_unique<FileList>();
        m_list->resize(800, 300);
        m_list->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_list.get()));
    }

    void aListingMakesTheFirstRowCurrentAndAllCanBeSelected()
    {
        fill("b a c");
        QCOMPARE(m_list->rowCount(), 3);
        QCOMPARE(m_list->currentRowText(), QStringLiteral("a"));
        QCOMPARE(selected(), QString());
        m_list->selectAllRows();
        QCOMPARE(selected(), QStringLiteral("a b c"));
        QVERIFY(m_list->isRowSelected(2));
        QVERIFY(!m_list->isRowSelected(3));
        m_list->setCurrentRow(1, FileList::Selection::Keep);
        QCOMPARE(selected(), QStringLiteral("a b c"));
        m_list->setCurrentRow(1, FileList::Selection::ThisRowOnly);
        QCOMPARE(selected(), QStringLiteral("b"));
        m_list->selectNone();
        QCOMPARE(selected(), QString());
        m_list->setRows({});
        QCOMPARE(m_list->currentRow(), -1);
        QCOMPARE(m_list->currentRowText(), QString());
        m_list->selectAllRows();
        QVERIFY(m_list->selectedRows().empty());
    }

    void keysDoWhatTheyAreForWhenReleased()
    {
        fill("a b");
        QSignalSpy deletes(m_list.get(), &FileList::deleteRequested);
        QSignalSpy deletesPlaylists(m_list.get(), &FileList::deletePlaylistsRequested);
        QSignalSpy writes(m_list.get(), &FileList::writePlaylistRequested);
        QSignalSpy plays(m_list.get(), &FileList::playRequested);
        QSignalSpy selects(m_list.get(), &FileList::itemSelected);
        const std::vector<std::tuple<QSignalSpy *, Qt::Key, Qt::KeyboardModifiers>> table{
            {&deletes, Qt::Key_Delete, Qt::NoModifier}, {&deletes, Qt::Key_Delete, Qt::KeypadModifier},
            {&deletesPlaylists, Qt::Key_B, Qt::ShiftModifier}, {&writes, Qt::Key_L, Qt::ShiftModifier},
            {&plays, Qt::Key_P, Qt::ShiftModifier}, {&selects, Qt::Key_B, Qt::NoModifier},
            {&selects, Qt::Key_L, Qt::NoModifier}, {&selects, Qt::Key_P, Qt::NoModifier},
            {&selects, Qt::Key_P, Qt::ShiftModifier | Qt::ControlModifier}, {&selects, Qt::Key_P, Qt::AltModifier},
            {&selects, Qt::Key_Down, Qt::NoModifier}, {&selects, Qt::Key_X, Qt::ShiftModifier}};
        for (const auto &[spy, key, modifiers] : table) {
            for (QSignalSpy *each : {&deletes, &deletesPlaylists, &writes, &plays, &selects})
                each->clear();
            sendKey(QEvent::KeyPress, key, modifiers);
            QCOMPARE(spy->count(), 0);
            sendKey(QEvent::KeyRelease, key, modifiers);
            QCOMPARE(spy->count(), 1);
            QCOMPARE(deletes.count() + deletesPlaylists.count() + writes.count() + plays.count() + selects.count(), 1);
        }
    }

    void aHeldKeyReportsOnceAndAnEmptyListNothing()
    {
        fill("a b c");
        QSignalSpy selects(m_list.get(), &FileList::itemSelected);
        QKeyEvent repeated(QEvent::KeyRelease, Qt::Key_Down, Qt::NoModifier, QString(), true);
        QCoreApplication::sendEvent(m_list.get(), &repeated);
        QCOMPARE(selects.count(), 0);
        QTest::keyClick(m_list.get(), Qt::Key_Down);
        QCOMPARE(selects.count(), 1);
        QCOMPARE(selects.front().front().toInt(), 1);
        m_list->setRows({});
        QTest::keyClick(m_list.get(), Qt::Key_Down);
        QTest::mouseClick(m_list->viewport(), Qt::LeftButton, {}, QPoint(5, 5));
        QCOMPARE(selects.count(), 1);
    }

    void aShiftedCommandCountsAlsoWhenShiftIsReleasedFirst()
    {
        fill("a b");
        QSignalSpy writes(m_list.get(), &FileList::writePlaylistRequested);
        QSignalSpy selects(m_list.get(), &FileList::itemSelected);
        sendKey(QEvent::KeyPress, Qt::Key_L, Qt::ShiftModifier);
        sendKey(QEvent::KeyRelease, Qt::Key_L, Qt::NoModifier);
        QCOMPARE(writes.count(), 1);
        QCOMPARE(selects.count(), 0);
        sendKey(QEvent::KeyPress, Qt::Key_L, Qt::NoModifier);
        sendKey(QEvent::KeyRelease, Qt::Key_L, Qt::NoModifier);
        QCOMPARE(writes.count(), 1);
        QCOMPARE(selects.count(), 1);
    }

    void typingFindsNamesButShiftedCommandsDoNot()
    {
        fill("alpha lima papa");
        QTest::keyClick(m_list.get(), Qt::Key_P, Qt::ShiftModifier);
        QCOMPARE(m_list->currentRowText(), QStringLiteral("alpha"));
        QTest::keyClick(m_list.get(), 'p');
        QCOMPARE(m_list->currentRowText(), QStringLiteral("papa"));
    }

    void clicksReportTheirRow()
    {
        fill("a b c");
        QSignalSpy selects(m_list.get(), &FileList::itemSelected);
        QSignalSpy rights(m_list.get(), &FileList::rightClicked);
        QSignalSpy activates(m_list.get(), &FileList::fileActivated);
        m_list->selectAllRows();
        click(1);
        QCOMPARE(selects.count(), 1);
        QCOMPARE(selects.back().front().toInt(), 1);
        QCOMPARE(selected(), QStringLiteral("b"));
        click(2, Qt::LeftButton, Qt::ControlModifier);
        QCOMPARE(selected(), QStringLiteral("b c"));
        QCOMPARE(selects.count(), 2);
        click(0, Qt::RightButton);
        QCOMPARE(rights.count(), 1);
        QCOMPARE(m_list->currentRowText(), QStringLiteral("a"));
        QTest::mouseClick(m_list->viewport(), Qt::RightButton, {}, QPoint(5, 280));
        QCOMPARE(rights.count(), 2);
        QCOMPARE(activates.count(), 0);
        const int before = static_cast<int>(selects.count());
        QTest::mouseDClick(m_list->viewport(), Qt::LeftButton, {}, middleOf(2));
        QCOMPARE(activates.count(), 1);
        QCOMPARE(activates.front().front().toInt(), 2);
        QVERIFY(selects.count() <= before + 1);
    }

    void longNamesAreBoldAndPureRed()
    {
        m_list->setRows(rows(
            {QString(64, u'x'), QString(65, u'y'), QStringLiteral("sub") + platform::Separator + QString(64, u'z')}));
        for (int row = 0; row < 3; ++row) {
            const QModelIndex index = m_list->model()->index(row, 4);
            const bool isLong = m_list->rowText(row).startsWith(u'y');
            QCOMPARE(index.data(Qt::FontRole).value<QFont>().bold(), isLong);
            QCOMPARE(index.data(Qt::ForegroundRole).isValid(), isLong);
            if (isLong)
                QCOMPARE(index.data(Qt::ForegroundRole).value<QBrush>().color(), QColor(255, 0, 0));
        }
    }

    void headerClicksSortAndShowTheArrow()
    {
        fill("ac bb ca");
        const auto arrow = [&] {
            return std::pair(m_list->header()->sortIndicatorSection(), m_list->header()->sortIndicatorOrder());
        };
        QCOMPARE(arrow(), std::pair(0, Qt::AscendingOrder));
        clickHeader(2);
        QCOMPARE(shown(), QStringLiteral("ca bb ac"));
        QCOMPARE(arrow(), std::pair(2, Qt::AscendingOrder));
        clickHeader(2);
        QCOMPARE(shown(), QStringLiteral("ac bb ca"));
        QCOMPARE(arrow(), std::pair(2, Qt::DescendingOrder));
        clickHeader(2);
        QCOMPARE(shown(), QStringLiteral("ca bb ac"));
        clickHeader(0);
        QCOMPARE(arrow(), std::pair(0, Qt::AscendingOrder));
        clickHeader(0);
        QCOMPARE(shown(), QStringLiteral("ca bb ac"));
        fill("x z y"); // another folder gets the same order
        QCOMPARE(shown(), QStringLiteral("z y x"));
    }

    void aRowIsFoundByItsWholeText()
    {
        const ListedFile file(u"a.mp3");
        m_list->setRows({{QStringLiteral("cd1/"), file}, {QStringLiteral("cd2/"), file}, {{}, file}});
        for (int row = 0; row < 3; ++row)
            QCOMPARE(m_list->rowOf(m_list->rowText(row)), row);
        QCOMPARE(m_list->rowOf(u"cd1/"), -1);
        QCOMPARE(m_list->rowOf(u"cd3/a.mp3"), -1);
        QCOMPARE(m_list->rowOf({}), -1);
    }

    void selectionAndCurrentRowStayWithTheirRows()
    {
        fill("a b c d e");
        click(1);
        click(3, Qt::LeftButton, Qt::ControlModifier);
        clickHeader(0);
        QCOMPARE(shown(), QStringLiteral("e d c b a"));
        QCOMPARE(selected(), QStringLiteral("d b"));
        QCOMPARE(m_list->currentRowText(), QStringLiteral("d"));
        m_list->dropRow(1, 5);
        QCOMPARE(shown(), QStringLiteral("e c b a d"));
        QCOMPARE(selected(), QStringLiteral("b d"));
        QCOMPARE(m_list->currentRowText(), QStringLiteral("d"));
    }

    void aDraggedRowIsPutWhereItIsDropped()
    {
        fill("a b c d");
        m_list->selectAllRows();
        QSignalSpy selects(m_list.get(), &FileList::itemSelected);
        drag(0, middleOf(2) + QPoint(0, 4)); // the lower half of c
        QCOMPARE(shown(), QStringLiteral("b c a d"));
        QCOMPARE(m_list->rows().rowAt(2).file.title(), QStringLiteral("aa"));
        QCOMPARE(selected(), QStringLiteral("b c a d"));
        QVERIFY(!m_list->rows().order().automatic);
        QCOMPARE(m_list->header()->sortIndicatorSection(), -1);
        QCOMPARE(selects.count(), 0);
        drag(3, middleOf(0) - QPoint(0, 4));
        QCOMPARE(shown(), QStringLiteral("d b c a"));
        drag(1, QPoint(50, m_list->viewport()->height() - 5)); // below the last row
        QCOMPARE(shown(), QStringLiteral("d c a b"));
        fill("a b c d"); // a fresh listing is sorted again
        QVERIFY(m_list->rows().order().automatic);
        QCOMPARE(shown(), QStringLiteral("a b c d"));
    }

    void aDragShowsItsDropMarkUntilItEnds()
    {
        fill("a b c d");
        const auto picture = [&] { return m_list->viewport()->grab().toImage(); };
        m_list->setCurrentRow(0, FileList::Selection::ThisRowOnly);
        m_list->setFocus();
        const QImage before = picture();
        drag(0, middleOf(2) + QPoint(0, 4), false);
        const QImage during = picture();
        QVERIFY(during != before);
        QTest::keyClick(m_list.get(), Qt::Key_Escape);
        QCOMPARE(picture(), before);
        QTest::mouseRelease(m_list->viewport(), Qt::LeftButton, {}, middleOf(2));
        QCOMPARE(shown(), QStringLiteral("a b c d"));
        QVERIFY(m_list->rows().order().automatic);
    }

    void aSmallMoveIsAClickAndNoDrag()
    {
        fill("a b");
        m_list->selectAllRows();
        QSignalSpy selects(m_list.get(), &FileList::itemSelected);
        drag(0, middleOf(0) + QPoint(2, 1));
        QCOMPARE(selects.count(), 1);
        QCOMPARE(selected(), QStringLiteral("a"));
        QVERIFY(m_list->rows().order().automatic);
    }

    void columnsFollowTheWidthAndKeepTheUsersUntilThen()
    {
        fill("a b");
        m_list->resize(1000, 300);
        QCOMPARE(m_list->columnWidth(0), columnWidths(15000)[0] / 15);
        m_list->setColumnWidth(0, 99);
        m_list->resize(1000, 200);
        QCOMPARE(m_list->columnWidth(0), 99);
        m_list->resize(500, 200);
        QCOMPARE(m_list->columnWidth(0), 150);
        QCOMPARE(m_list->columnWidth(3), std::max(74, m_list->header()->sectionSizeHint(3)));
        // A column that would cut its header is wider.
        QCOMPARE(m_list->columnWidth(1), m_list->header()->sectionSizeHint(1));
        QVERIFY(m_list->columnWidth(1) > 35);
    }

    void aHeaderTooNarrowForItsTextTellsItInATooltip()
    {
        QHeaderView *header = m_list->header();
        m_list->setHeaderText(ListColumn::Artist, QStringLiteral("a rather long name of a column"));
        const auto hover = [header](ListColumn column) {
            const int section = static_cast<int>(column);
            const QPoint place(header->sectionViewportPosition(section) + 3, header->height() / 2);
            QHelpEvent event(QEvent::ToolTip, place, header->viewport()->mapToGlobal(place));
            QCoreApplication::sendEvent(header->viewport(), &event);
        };
        header->resizeSection(static_cast<int>(ListColumn::Artist), 40);
        header->resizeSection(static_cast<int>(ListColumn::Track), 200);
        hover(ListColumn::Artist);
        QVERIFY(QToolTip::isVisible());
        QCOMPARE(QToolTip::text(), QStringLiteral("a rather long name of a column"));
        hover(ListColumn::Track); // wide enough
        QTRY_VERIFY_WITH_TIMEOUT(!QToolTip::isVisible(), 30'000);
    }

    void aNoteStandsInTheTooltipsOfItsRow()
    {
        fill("a b");
        QStringList asked;
        m_list->setRowNote([&asked](const QString &rowText) {
            asked << rowText;
            return rowText == u"a" ? QStringLiteral("leads elsewhere") : QString();
        });
        m_list->resize(1000, 300);
        QVERIFY(!m_list->grab().isNull());
        QCOMPARE(asked, QStringList()); // painting asks nothing
        const auto tip = [this](int row, ListColumn column) {
            return m_list->model()->index(row, static_cast<int>(column)).data(Qt::ToolTipRole).toString();
        };
        QCOMPARE(tip(0, ListColumn::File), QStringLiteral("a\nleads elsewhere"));
        QCOMPARE(tip(0, ListColumn::Title), QStringLiteral("aa\nleads elsewhere"));
        QCOMPARE(tip(0, ListColumn::Album), QStringLiteral("leads elsewhere"));
        QCOMPARE(tip(1, ListColumn::File), QStringLiteral("b"));
        QCOMPARE(tip(1, ListColumn::Album), QString());
        QCOMPARE(asked, QStringLiteral("a a a b b").split(u' '));
        const auto hover = [this](int row) {
            QHelpEvent event(QEvent::ToolTip, middleOf(row), m_list->viewport()->mapToGlobal(middleOf(row)));
            QCoreApplication::sendEvent(m_list->viewport(), &event);
        };
        hover(0);
        QVERIFY(QToolTip::isVisible());
        QCOMPARE(QToolTip::text(), QStringLiteral("a\nleads elsewhere"));
        hover(1); // its cell shows all that there is
        QTRY_VERIFY_WITH_TIMEOUT(!QToolTip::isVisible(), 30'000);
    }

    void aNoteDescribesTheFileOfTheCurrentRow()
    {
        fill("a b");
        QStringList asked;
        m_list->setRowNote([&asked](const QString &rowText) {
            asked << rowText;
            return QStringLiteral("leads elsewhere");
        });
        const auto description = [this](int row, int column) {
            return m_list->model()->index(row, column).data(Qt::AccessibleDescriptionRole).toString();
        };
        m_list->setCurrentRow(1, FileList::Selection::Keep);
        QCOMPARE(description(0, 0), QString());
        QCOMPARE(description(1, 1), QString());
        QCOMPARE(asked, QStringList());
        QCOMPARE(description(1, 0), QStringLiteral("leads elsewhere"));
    }

    void aHundredThousandRowsAreSortedSelectedAndMoved()
    {
        constexpr int Count = 100'000;
        QStringList names;
        for (int i = 0; i < Count; ++i)
            names += QString::number(i * 7919 % Count).rightJustified(6, u'0');
        m_list->setRows(rows(names));
        m_list->selectAllRows();
        QCOMPARE(m_list->selectedRows().size(), size_t{Count});
        QCOMPARE(m_list->rowText(Count - 1), QStringLiteral("099999"));
        clickHeader(2); // by the last digit: splits every selected stretch
        for (int row = 0; row < Count; row += 2)
            QVERIFY(m_list->rowText(row).endsWith(QString::number(row / (Count / 10))));
        // Select half of the rows, then sort them back into alternating places.
        const QItemSelection half(m_list->model()->index(0, 0), m_list->model()->index(Count / 2 - 1, 7));
        m_list->selectionModel()->select(half, QItemSelectionModel::ClearAndSelect);
        clickHeader(0);
        QCOMPARE(m_list->selectedRows().size(), size_t{Count / 2});
        QVERIFY(m_list->isRowSelected(0) && m_list->isRowSelected(4) && !m_list->isRowSelected(5));
        m_list->dropRow(0, Count);
        QVERIFY(m_list->isRowSelected(Count - 1));
        m_list->selectAll();
        QCOMPARE(m_list->selectedRowTexts().size(), Count);
    }
};

QTEST_MAIN(TestFileList)
#include "tst_filelist.moc"
