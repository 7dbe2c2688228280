// SPDX-License-Identifier: GPL-3.0-or-later
// Tooltips of every kind of widget show the text that was set, as plain text, cut if it is long and in lines that fit
// on the screen. One that repeats a cell appears where the cell is cut off. Labels and message boxes show plain text,
// too.

#include "core/app/showntext.h"
#include "ui/controls/plain/messagebox.h"
#include "ui/controls/plain/plainlabel.h"
#include "ui/controls/plain/tooltips.h"

#include <QElapsedTimer>
#include <QHelpEvent>
#include <QMenu>
#include <QTest>
#include <QTreeWidget>
#include <QtWidgets>

using namespace Qt::StringLiterals;
using namespace ravlin;

class TestToolTips : public QObject
{
    Q_OBJECT

private:
    static inline const QString Markup = u"<b>R&amp;B</b> <img src=x>"_s;
    std::unique_ptr<ToolTips> m_filter;
    std::unique_ptr<QWidget> m_window;

    static QLabel *tip()
    {
        for (QWidget *window : QApplication::topLevelWidgets()) {
            if (window->inherits("QTipLabel") && window->isVisible())
                return static_cast<QLabel *>(window);
        }
        return nullptr;
    }
    /// Holds the pointer over a place. Returns the text shown, also for its neighbour in the tree of widgets that has
    /// one.
    static QString hover(QWidget *widget, const QPoint &place = {3, 3})
    {
        QHelpEvent event(QEvent::ToolTip, place, widget->mapToGlobal(place));
        QApplication::sendEvent(widget, &event);
        return tip() != nullptr ? tip()->text() : QString();
    }
    QTreeWidget *makeTree(const QString &text, const QString &toolTip, int width)
    {
        auto *tree = new QTreeWidget(m_window.get());
        tree->setHeaderLabels({u"a rather long header"_s, u"b"_s});
        tree->setToolTip(u"the tree's"_s);
        auto *item = new QTreeWidgetItem(tree, {text, u"y"_s});
        item->setToolTip(0, toolTip);
        tree->setColumnWidth(0, width);
        tree->resize(400, 200);
        m_window->show();
        return tree;
    }
    static QString hoverItem(QTreeWidget *tree, int column)
    {
        const QRect place = tree->visualRect(tree->model()->index(0, column));
        return hover(tree->viewport(), place.center());
    }

private Q_SLOTS:
    void init()
    {
        m_filter = std::make_unique<ToolTips>(nullptr);
        m_window = std::make_unique<QWidget>();
        m_window->resize(500, 300);
        m_window->setToolTip(u"the window's <i>"_s);
        m_window->show();
    }
    void cleanup()
    {
        m_window.reset();
        m_filter.reset();
    }

    void aWidgetsOwn()
    {
        auto *button = new QPushButton(m_window.get());
        button->setToolTip(Markup);
        button->show();
        QCOMPARE(hover(button), Markup);
        QCOMPARE(tip()->textFormat(), Qt::PlainText);
    }

    void withoutOneThatOfTheWidgetAround()
    {
        auto *button = new QPushButton(m_window.get());
        button->show();
        QCOMPARE(hover(button), u"the window's <i>"_s);
        QCOMPARE(tip()->textFormat(), Qt::PlainText);
    }

    void anItemsOwnOrThatOfItsView()
    {
        QTreeWidget *tree = makeTree(u"text"_s, Markup, 200);
        QCOMPARE(hoverItem(tree, 0), Markup);
        QCOMPARE(tip()->textFormat(), Qt::PlainText);
        QCOMPARE(hoverItem(tree, 1), u"the tree's"_s);
        QCOMPARE(hover(tree->viewport(), {3, 150}), u"the tree's"_s); // below the rows
    }

    void oneThatRepeatsACellOnlyWhereThatIsCutOff()
    {
        QTreeWidget *tree = makeTree(Markup, Markup, 50);
        QCOMPARE(hoverItem(tree, 0), Markup);
        tree->setColumnWidth(0, 390);
        hoverItem(tree, 0);
        QTRY_VERIFY_WITH_TIMEOUT(tip() == nullptr, 30'000);
    }

    void aHeadersTextWhereItIsCutOff()
    {
        QTreeWidget *tree = makeTree(Markup, Markup, 30);
        QCOMPARE(hover(tree->header()->viewport()), u"a rather long header"_s);
        tree->headerItem()->setToolTip(0, Markup);
        QCOMPARE(hover(tree->header()->viewport()), Markup);
    }

    void aTabsAndAMenusEntry()
    {
        QTabBar tabs(m_window.get());
        tabs.addTab(u"tab"_s);
        tabs.setTabToolTip(0, Markup);
        tabs.show();
        QCOMPARE(hover(&tabs, tabs.tabRect(0).center()), Markup);
        QMenu menu;
        menu.setToolTipsVisible(true);
        QAction *entry = menu.addAction(u"entry"_s);
        entry->setToolTip(Markup + u'2');
        menu.popup({});
        QCOMPARE(hover(&menu, menu.actionGeometry(entry).center()), Markup + u'2');
    }

    void aLongOneWithATagWrapsOnce()
    {
        auto *button = new QPushButton(m_window.get());
        const QRect screen = button->screen()->geometry();
        m_window->move(screen.right() - 100, 50);
        button->setToolTip(u"<b>R&amp;B</b> "_s + u"words and "_s.repeated(30).trimmed());
        button->show();
        const QStringList lines = hover(button).split(u'\n');
        QVERIFY(lines.size() > 1);
        QVERIFY(!tip()->wordWrap());
        const QFontMetrics metrics(tip()->font());
        for (const QString &line : lines)
            QVERIFY(tip()->contentsRect().width() >= metrics.horizontalAdvance(line.trimmed()));
        QVERIFY(tip()->height() < metrics.lineSpacing() * (lines.size() + 1));
        QVERIFY2(screen.contains(tip()->geometry()), "the tooltip stands beyond the screen");
    }

    void aLongOneWrapsAndIsCut()
    {
        auto *button = new QPushButton(m_window.get());
        button->show();
        const QString words = u"words and "_s.repeated(30).trimmed();
        button->setToolTip(words);
        const QString shown = hover(button);
        QCOMPARE(QString(shown).remove(u'\n'), words);
        QVERIFY(shown.count(u'\n') >= 1);
        QVERIFY(tip()->width() <= tip()->screen()->size().width());
        button->setToolTip(u"w"_s.repeated(16 << 20));
        QElapsedTimer clock;
        clock.start();
        const QString cut = hover(button);
        QVERIFY2(clock.elapsed() < 5'000, qPrintable(QString::number(clock.elapsed())));
        QVERIFY(cut.endsWith(u'…'));
        QVERIFY(cut.size() < 3 * MostLetters);
        QVERIFY(tip()->width() <= tip()->screen()->size().width());
        button->setToolTip(u"\n"_s.repeated(16 << 20));
        QVERIFY(hover(button).size() < 3 * MostLetters);
    }

    void labelsArePlainAndNoWiderThanTheScreen()
    {
        PlainLabel label(Markup);
        QCOMPARE(label.text(), Markup);
        QCOMPARE(label.textFormat(), Qt::PlainText);
        label.setWordWrap(true);
        label.setText(u"w"_s.repeated(1'000));
        QVERIFY(label.sizeHint().width() < 2'000);
        QVERIFY(label.minimumSizeHint().width() < 2'000);
        label.setText(u"w"_s.repeated(16 << 20));
        QVERIFY(label.text().size() <= 2 * MostLetters);
    }

    void messageBoxesArePlainThroughout()
    {
        MessageBox box(QMessageBox::Question, u"title"_s, Markup, QMessageBox::Yes | QMessageBox::No, m_window.get());
        box.setFurtherText(Markup);
        box.setDetailedText(Markup);
        QCOMPARE(box.text(), Markup);
        QCOMPARE(box.informativeText(), Markup);
        QCOMPARE(box.detailedText(), Markup);
        const QList<QLabel *> labels = box.findChildren<QLabel *>();
        QVERIFY(labels.size() >= 2);
        for (const QLabel *label : labels)
            QVERIFY(label->text().isEmpty() || label->textFormat() == Qt::PlainText);
        box.setText(u"w"_s.repeated(16 << 20));
        box.setFurtherText(u"w\n"_s.repeated(16 << 20));
        QVERIFY(box.text().size() <= 2 * MostLetters);
        QVERIFY(box.informativeText().count(u'\n') < MostLines);
        box.setFurtherText({});
        QCOMPARE(box.informativeText(), QString());
    }

    void labelsOfQtsOwnDialogsBecomePlain()
    {
        QMessageBox box(m_window.get());
        box.setText(Markup);
        box.setInformativeText(Markup);
        box.show();
        for (const QLabel *label : box.findChildren<QLabel *>())
            QCOMPARE(label->textFormat(), Qt::PlainText);
        QToolTip::showText({}, Markup, m_window.get());
        QCOMPARE(tip()->textFormat(), Qt::PlainText);
    }
};

QTEST_MAIN(TestToolTips)
#include "tst_tooltips.moc"
