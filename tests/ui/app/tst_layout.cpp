// SPDX-License-Identifier: GPL-3.0-or-later
// The main window at any width, in every language and in small and large letters: text boxes show ten letters, headers
// and the number of files are whole, a wide window is used to its edge, the button that starts a page's work is in
// sight and in one place on all pages, and controls that belong together stand in one line.

#include "ui/app/principalfixture.h"

#include <QHeaderView>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

class TestLayout : public PrincipalFixture
{
    Q_OBJECT

private:
    QFont m_font;

    static QStringList saveButtons() { return {u"edita"_s, u"multiple"_s, u"extrae"_s, u"Command2"_s}; }

    void openAt(int width, const QString &language, int points)
    {
        QFont font = m_font;
        font.setPointSize(points);
        QApplication::setFont(font);
        for (int i = 0; i < 12; ++i)
            addFile(u"%1.mp3"_s.arg(i), titled(u"x"_s));
        open(path(), QSize(width, 900));
        speak(language);
        QCOMPARE(m_window->width(), width);
        settle();
    }
    /// Nested layouts need a few rounds of the event loop.
    static void settle()
    {
        for (int round = 0; round < 10; ++round)
            QCoreApplication::processEvents();
    }
    void showPage(int page)
    {
        tabs()->setCurrentIndex(page);
        settle();
    }
    QRect placeInWindow(const QString &name) const
    {
        const auto *widget = control<QWidget>(name);
        return {widget->mapTo(m_window.get(), QPoint()), widget->size()};
    }
    int leftOf(const QString &name) const { return placeInWindow(name).left(); }

    static void addSizes(int narrowest = 400, int largest = 14)
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<QString>("language");
        QTest::addColumn<int>("points");
        for (const int width : {400, 800, 1400, 1920}) {
            for (const QString &language : {u"english"_s, u"spanish"_s, u"french"_s}) {
                for (const int points : {7, 9, 14}) {
                    // Unusual letters are tried in a narrow window and in a wide one.
                    if (width >= narrowest && points <= largest && (points == 9 || width == 400 || width == 1400))
                        QTest::addRow("%d pixels, %s, %d points", width, qPrintable(language), points)
                            << width << language << points;
                }
            }
        }
    }
    void openAsTheRowSays()
    {
        QFETCH(int, width);
        QFETCH(QString, language);
        QFETCH(int, points);
        openAt(width, language, points);
    }

private Q_SLOTS:
    void initTestCase() { m_font = QApplication::font(); }
    void init() { startAfresh(); }
    void cleanup()
    {
        closeWindow();
        QApplication::setFont(m_font);
    }

    void aTextBoxShowsTenLetters_data() { addSizes(); }
    void aTextBoxShowsTenLetters()
    {
        openAsTheRowSays();
        int checked = 0;
        for (int page = 0; page < tabs()->count(); ++page) {
            showPage(page);
            for (const QLineEdit *box : tabs()->currentWidget()->findChildren<QLineEdit *>()) {
                const int room = box->width() - box->minimumSizeHint().width();
                // The box of a drop-down list has its frame around it.
                const bool isInList = qobject_cast<const QComboBox *>(box->parentWidget()) != nullptr;
                const int letters = 10 * box->fontMetrics().averageCharWidth();
                QVERIFY2((isInList ? box->width() : room) >= letters, qPrintable(box->objectName()));
                ++checked;
            }
        }
        QCOMPARE(checked, 6 + 5 + 1 + 1);
    }

    void theNumberOfFilesAndTheHeadersAreWhole_data() { addSizes(); }
    void theNumberOfFilesAndTheHeadersAreWhole()
    {
        openAsTheRowSays();
        const auto *panel = control<QLabel>(u"panel1"_s);
        QVERIFY(panel->text().startsWith(u"12 "_s));
        QCOMPARE(panel->text(), panel->accessibleName());
        const QHeaderView *header = list()->header();
        const QFontMetrics letters(header->font());
        for (int column = 0; column < header->count(); ++column) {
            const QString text = list()->model()->headerData(column, Qt::Horizontal).toString();
            QVERIFY2(header->sectionSize(column) >= header->sectionSizeHint(column), qPrintable(text));
            QVERIFY2(header->sectionSize(column) > letters.horizontalAdvance(text), qPrintable(text));
        }
    }

    void theButtonThatStartsTheWorkStaysInItsPlace_data() { addSizes(); }
    void theButtonThatStartsTheWorkStaysInItsPlace()
    {
        openAsTheRowSays();
        const QRect first = placeInWindow(saveButtons().front());
        for (int page = 0; page < tabs()->count(); ++page) {
            showPage(page);
            const auto *button = control<QPushButton>(saveButtons()[page]);
            QVERIFY(button->isVisible());
            QCOMPARE(placeInWindow(saveButtons()[page]), first);
            QVERIFY(m_window->rect().contains(first));
            QCOMPARE(button->visibleRegion().boundingRect(), button->rect());
            QVERIFY(button->width() >= button->sizeHint().width());
            QVERIFY(button->height() >= button->minimumSizeHint().height());
        }
    }

    void theFootHoldsItsHintBesideOrAboveTheButtons_data() { addSizes(); }
    void theFootHoldsItsHintBesideOrAboveTheButtons()
    {
        openAsTheRowSays();
        for (int page = 0; page < tabs()->count(); ++page) {
            showPage(page);
            const QWidget *foot = control<QPushButton>(saveButtons()[page])->parentWidget();
            const auto *hint = foot->findChild<QLabel *>(QString(), Qt::FindDirectChildrenOnly);
            QVERIFY(hint->height() >= 2 * hint->fontMetrics().lineSpacing());
            QVERIFY(hint->width() >= 25 * hint->fontMetrics().averageCharWidth());
            QList<const QWidget *> placed;
            for (const QWidget *child : foot->findChildren<QWidget *>(Qt::FindDirectChildrenOnly)) {
                QVERIFY2(foot->rect().contains(child->geometry()), qPrintable(child->objectName()));
                for (const QWidget *other : placed)
                    QVERIFY2(!other->geometry().intersects(child->geometry()), qPrintable(child->objectName()));
                placed << child;
            }
        }
    }

    void aHintThatIsCutStandsInItsTooltip()
    {
        openAt(800, u"english"_s, 9);
        auto *hint = control<QLabel>(u"saveHint"_s);
        for (const auto &[text, tip] : {std::pair(u"two words"_s, QString()),
                 std::pair(QString(u"word "_s).repeated(60).trimmed(), QString(u"word "_s).repeated(60).trimmed())}) {
            hint->setText(text);
            settle();
            QCOMPARE(hint->toolTip(), tip);
        }
    }

    void aWideWindowIsUsedToItsEdge_data()
    {
        QTest::addColumn<int>("width");
        QTest::newRow("1400") << 1400;
        QTest::newRow("1920") << 1920;
    }
    void aWideWindowIsUsedToItsEdge()
    {
        QFETCH(int, width);
        openAt(width, u"french"_s, 9);
        const QStringList outermost{u"eliminav1"_s, u"tma_o"_s, u"tpatron"_s, u"ccase_3"_s};
        for (int page = 0; page < tabs()->count(); ++page) {
            showPage(page);
            const int edge = tabs()->mapTo(m_window.get(), QPoint(tabs()->width(), 0)).x();
            QVERIFY2(edge - placeInWindow(outermost[page]).right() < 25, qPrintable(outermost[page]));
            QVERIFY2(edge - placeInWindow(saveButtons()[page]).right() < 25, qPrintable(saveButtons()[page]));
        }
    }

    void aWindowOfOrdinaryWidthScrollsNoPage_data() { addSizes(800, 9); }
    void aWindowOfOrdinaryWidthScrollsNoPage()
    {
        openAsTheRowSays();
        int leastRoomLeft = 1000;
        for (int page = 0; page < tabs()->count(); ++page) {
            showPage(page);
            const auto *area = tabs()->currentWidget()->findChild<QScrollArea *>();
            QCOMPARE(area->horizontalScrollBar()->maximum(), 0);
            QCOMPARE(area->verticalScrollBar()->maximum(), 0);
            leastRoomLeft = std::min(leastRoomLeft, area->height() - area->widget()->sizeHint().height());
        }
        QVERIFY2(leastRoomLeft < 5, qPrintable(QString::number(leastRoomLeft))); // the list gets the rest
    }

    void aPageWhoseTextsGetHigherGetsTheRoomAndKeepsIt()
    {
        openAt(1000, u"english"_s, 9);
        const auto *area = tabs()->currentWidget()->findChild<QScrollArea *>();
        const int before = tabs()->height();
        auto *name = control<QWidget>(u"fileName"_s);
        name->setMinimumHeight(name->height() + 40); // as letters of another font would need
        settle();
        QCOMPARE(area->verticalScrollBar()->maximum(), 0);
        const int grown = tabs()->height();
        QVERIFY(grown > before);
        name->setMinimumHeight(0);
        settle();
        QCOMPARE(tabs()->height(), grown);
    }

    void aNarrowPageScrollsSidewaysOnly()
    {
        openAt(400, u"french"_s, 9);
        for (int page = 0; page < tabs()->count(); ++page) {
            showPage(page);
            QCOMPARE(tabs()->currentWidget()->findChild<QScrollArea *>()->verticalScrollBar()->maximum(), 0);
        }
    }

    void controlsThatBelongTogetherAreInOneLine_data() { addSizes(); }
    void controlsThatBelongTogetherAreInOneLine()
    {
        openAsTheRowSays();
        showPage(0);
        QCOMPARE(leftOf(u"ccase_2"_s), leftOf(u"tcomentarios"_s));
        QCOMPARE(leftOf(u"ta_o"_s), leftOf(u"cestilo"_s));
        QCOMPARE(placeInWindow(u"ta_o"_s).right(), placeInWindow(u"cestilo"_s).right());
        showPage(1);
        QCOMPARE(leftOf(u"ccase_1"_s), leftOf(u"Tmartista"_s));
        QCOMPARE(leftOf(u"ccase_4"_s), leftOf(u"tma_o"_s));
        QCOMPARE(leftOf(u"ccase_4"_s), leftOf(u"cmestilo"_s));
        QCOMPARE(leftOf(u"op4_1"_s), leftOf(u"chmartista"_s));
        QCOMPARE(leftOf(u"op4_4"_s), leftOf(u"chma_o"_s));
        showPage(3);
        QCOMPARE(leftOf(u"ccase_0"_s), leftOf(u"ccase_3"_s));
        QCOMPARE(control<QComboBox>(u"ccase_0"_s)->width(), control<QComboBox>(u"ccase_3"_s)->width());
        QCOMPARE(leftOf(u"op2"_s), leftOf(u"tavanzado"_s));
        QCOMPARE(leftOf(u"op1"_s), leftOf(u"op3"_s));
        // The button keeps its distance from the text before it.
        const QRect before = placeInWindow(u"op1"_s);
        QVERIFY(leftOf(u"op2"_s) - before.right() > m_window->fontMetrics().averageCharWidth());
    }

    void theRowsAreAsHighAsTheStyleMakesThem()
    {
        for (const int points : {7, 9, 14}) {
            openAt(1000, u"english"_s, points);
            QStyleOptionViewItem item;
            item.initFrom(list());
            item.font = list()->font();
            item.text = u"x"_s;
            item.features = QStyleOptionViewItem::HasDisplay | QStyleOptionViewItem::HasDecoration;
            const int icon = list()->style()->pixelMetric(QStyle::PM_SmallIconSize);
            item.decorationSize = QSize(icon, icon);
            const int wanted = list()->style()->sizeFromContents(QStyle::CT_ItemViewItem, &item, {}, list()).height();
            QCOMPARE(list()->visualRect(list()->model()->index(0, 0)).height(), wanted);
            QVERIFY(wanted > list()->fontMetrics().height());
            closeWindow();
        }
    }
};

QTEST_MAIN(TestLayout)
#include "tst_layout.moc"
