// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controls/making.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDialog>
#include <QKeyEvent>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QStyle>

#include <algorithm>

namespace ravlin {

namespace {

class WheelGuard final : public QObject
{
public:
    explicit WheelGuard(QWidget *control) : QObject(control), m_control(control) {}

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() != QEvent::Wheel || m_control->hasFocus())
            return QObject::eventFilter(watched, event);
        event->ignore(); // for the parent to take
        return true;
    }

private:
    QWidget *m_control;
};

class ContextMenuKey final : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        QWidget *const focus = QApplication::focusWidget();
        const bool mayBeMeant = event->type() == QEvent::KeyPress && watched == focus && focus != nullptr;
        if (!mayBeMeant || !isContextMenuKey(*static_cast<QKeyEvent *>(event)))
            return QObject::eventFilter(watched, event);
        openContextMenu(focus);
        return true;
    }

private:
    static bool isContextMenuKey(const QKeyEvent &key)
    {
        return key.key() == Qt::Key_F10 && key.modifiers() == Qt::ShiftModifier;
    }

    /// Sends what the system sends for its own menu key: the place is the control's cursor.
    static void openContextMenu(QWidget *control)
    {
        const QPoint place = control->inputMethodQuery(Qt::ImCursorRectangle).toRect().center();
        QContextMenuEvent event(QContextMenuEvent::Keyboard, place, control->mapToGlobal(place));
        QApplication::sendEvent(control, &event);
    }
};

} // namespace

void tabThrough(const QList<QWidget *> &controls)
{
    for (qsizetype i = 1; i < controls.size(); ++i)
        QWidget::setTabOrder(controls[i - 1], controls[i]);
}

void makeRoomy(QPushButton *button, const QString &otherText)
{
    int width = button->sizeHint().width();
    if (const QString text = button->text(); !otherText.isEmpty()) {
        // Only the style knows what a text needs on a button.
        button->setText(otherText);
        width = std::max(width, button->sizeHint().width());
        button->setText(text);
    }
    button->setMinimumWidth(width + 2 * button->fontMetrics().averageCharWidth());
}

void makeEquallyWide(const QList<QWidget *> &controls)
{
    int widest = 0;
    for (const QWidget *control : controls)
        widest = std::max(widest, control->sizeHint().width());
    for (QWidget *control : controls)
        control->setMinimumWidth(widest);
}

void fitToScreen(QDialog *dialog)
{
    dialog->layout()->activate();
    const QStyle *style = dialog->style();
    const int frame = style->pixelMetric(QStyle::PM_MdiSubWindowFrameWidth, nullptr, dialog);
    const int title = style->pixelMetric(QStyle::PM_TitleBarHeight, nullptr, dialog);
    const QSize room = dialog->screen()->availableSize() - QSize(2 * frame, title + 2 * frame);
    QSize size = dialog->layout()->totalSizeHint();
    if (size.height() > room.height()) // beside its content it needs a scroll bar
        size.rwidth() += style->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, dialog);
    dialog->resize(size.boundedTo(room));
}

void keepReadable(QLineEdit *box)
{
    constexpr int Letters = 10;
    box->ensurePolished(); // the style may change the font
    box->setMinimumWidth(box->minimumSizeHint().width() + Letters * box->fontMetrics().averageCharWidth());
}

void guardAgainstWheel(QWidget *control)
{
    control->setFocusPolicy(Qt::StrongFocus);
    control->installEventFilter(new WheelGuard(control));
}

void openContextMenusByKey(QObject *application)
{
    application->installEventFilter(new ContextMenuKey(application));
}

} // namespace ravlin
