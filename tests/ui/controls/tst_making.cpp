// SPDX-License-Identifier: GPL-3.0-or-later
// Shift+F10 opens the context menu of the control with the focus, once, at its cursor. Other keys, and the same key
// with other modifiers, reach the control.
#include "ui/controls/making.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QListWidget>
#include <QtTest>

namespace {

class Control final : public QListWidget
{
public:
    using QListWidget::QListWidget;

    int menus = 0;
    int keys = 0;
    QPoint place;

protected:
    void contextMenuEvent(QContextMenuEvent *event) override
    {
        ++menus;
        place = event->pos();
        QCOMPARE(event->reason(), QContextMenuEvent::Keyboard);
        QCOMPARE(event->globalPos(), mapToGlobal(event->pos()));
    }
    void keyPressEvent(QKeyEvent *event) override
    {
        keys += event->key() == Qt::Key_F9 || event->key() == Qt::Key_F10 ? 1 : 0; // not the modifiers
        QListWidget::keyPressEvent(event);
    }
};

} // namespace

class TestMaking : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { ravlin::openContextMenusByKey(qApp); }

    void shiftF10OpensTheMenuAtTheCurrentRow()
    {
        Control control;
        control.addItems({QStringLiteral("one"), QStringLiteral("two"), QStringLiteral("three")});
        control.setCurrentRow(2);
        control.show();
        QVERIFY(QTest::qWaitForWindowActive(&control));
        control.setFocus();
        QTest::keyClick(&control, Qt::Key_F10, Qt::ShiftModifier);
        QCOMPARE(control.menus, 1);
        QCOMPARE(control.keys, 0);
        QVERIFY(control.visualItemRect(control.item(2)).contains(control.place));
    }

    void otherKeysReachTheControl()
    {
        Control control;
        control.show();
        QVERIFY(QTest::qWaitForWindowActive(&control));
        control.setFocus();
        QTest::keyClick(&control, Qt::Key_F10);
        QTest::keyClick(&control, Qt::Key_F10, Qt::ShiftModifier | Qt::ControlModifier);
        QTest::keyClick(&control, Qt::Key_F9, Qt::ShiftModifier);
        QCOMPARE(control.menus, 0);
        QCOMPARE(control.keys, 3);
    }
};

QTEST_MAIN(TestMaking)
#include "tst_making.moc"
