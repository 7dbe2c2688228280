// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controls/plain/tooltips.h"

#include "core/app/showntext.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QFontMetrics>
#include <QHeaderView>
#include <QHelpEvent>
#include <QLabel>
#include <QMenu>
#include <QScreen>
#include <QTabBar>
#include <QTextLayout>
#include <QToolTip>

#include <algorithm>

namespace ravlin {

namespace {

constexpr int LineLetters = 100; ///< width of a tooltip in average letters

/// What a place in a widget has to tell.
struct Tip
{
    QString text;
    QRect area = {}; ///< of the widget, in which it stays; empty for all of it
    bool isNeeded = true;
};

Tip tipOf(const QHeaderView &header, const QPoint &place)
{
    const int section = header.logicalIndexAt(place);
    if (section < 0)
        return {};
    const QAbstractItemModel &model = *header.model();
    if (const QString own = model.headerData(section, header.orientation(), Qt::ToolTipRole).toString(); !own.isEmpty())
        return {own};
    const int room = header.sectionSize(section);
    return {model.headerData(section, header.orientation()).toString(), {}, header.sectionSizeHint(section) > room};
}

Tip tipOf(const QAbstractItemView &view, const QPoint &place)
{
    const QModelIndex index = view.indexAt(place);
    const QString text = index.data(Qt::ToolTipRole).toString();
    const QRect area = view.visualRect(index);
    const bool repeats = text == index.data(Qt::DisplayRole).toString();
    return {text, area, !repeats || view.sizeHintForIndex(index).width() > area.width()};
}

Tip tipOf(const QTabBar &tabs, const QPoint &place)
{
    const int tab = tabs.tabAt(place);
    return {tab < 0 ? QString() : tabs.tabToolTip(tab)};
}

Tip tipOf(const QMenu &menu, const QPoint &place)
{
    const QAction *action = menu.toolTipsVisible() ? menu.actionAt(place) : nullptr;
    return {action ? action->toolTip() : QString(), action ? menu.actionGeometry(menu.actionAt(place)) : QRect()};
}

Tip partTip(const QWidget &widget, const QPoint &place)
{
    if (const auto *view = qobject_cast<const QAbstractItemView *>(widget.parentWidget());
        view && view->viewport() == &widget && view->model()) {
        const auto *header = qobject_cast<const QHeaderView *>(view);
        Tip tip = header ? tipOf(*header, place) : tipOf(*view, place);
        return tip.text.isEmpty() ? Tip{view->toolTip()} : tip;
    }
    if (const auto *tabs = qobject_cast<const QTabBar *>(&widget))
        return tipOf(*tabs, place);
    if (const auto *menu = qobject_cast<const QMenu *>(&widget))
        return tipOf(*menu, place);
    return {};
}

Tip tipOf(const QWidget &widget, const QPoint &place)
{
    const Tip tip = partTip(widget, place);
    return tip.text.isEmpty() ? Tip{widget.toolTip()} : tip;
}

/// The text with line feeds where a line would become too wide.
QString wrapped(const QString &text, const QWidget &widget)
{
    const QFont font = QToolTip::font();
    const int width =
        std::min(QFontMetrics(font).averageCharWidth() * LineLetters, widget.screen()->size().width() * 2 / 3);
    QStringList lines;
    for (const QString &paragraph : text.split(u'\n')) {
        QTextLayout layout(paragraph, font);
        QTextOption option;
        option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        layout.setTextOption(option);
        layout.beginLayout();
        for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
            line.setLineWidth(width);
            lines << paragraph.sliced(line.textStart(), line.textLength());
        }
        layout.endLayout();
    }
    return lines.join(u'\n');
}

/// QToolTip takes a text with a tag for HTML, and lets its label wrap the lines once more.
void leaveLinesAsTheyAre()
{
    for (QWidget *window : QApplication::topLevelWidgets()) {
        auto *label = qobject_cast<QLabel *>(window);
        if (label == nullptr || !label->inherits("QTipLabel") || !label->wordWrap())
            continue;
        label->setWordWrap(false);
        label->resize(label->sizeHint() + QSize(1, 0));
        const QRect screen = label->screen()->geometry();
        const int right = screen.right() + 1 - label->width();
        label->move(std::clamp(label->x(), screen.left(), std::max(screen.left(), right)), label->y());
    }
}

} // namespace

ToolTips::ToolTips(QObject *parent) : QObject(parent)
{
    QCoreApplication::instance()->installEventFilter(this);
}

bool ToolTips::eventFilter(QObject *watched, QEvent *event)
{
    // Comes before a label is laid out for the first time. Until then it has looked at nothing that its text names.
    if (event->type() == QEvent::Polish) {
        if (auto *label = qobject_cast<QLabel *>(watched))
            label->setTextFormat(Qt::PlainText);
        return false;
    }
    if (event->type() != QEvent::ToolTip || !watched->isWidgetType())
        return false;
    auto *widget = static_cast<QWidget *>(watched);
    const auto *help = static_cast<QHelpEvent *>(event);
    const Tip tip = tipOf(*widget, help->pos());
    if (tip.text.isEmpty())
        return false; // for the widget around it
    const QString text = tip.isNeeded ? wrapped(shownLines(tip.text), *widget) : QString();
    QToolTip::showText(help->globalPos(), text, widget, tip.area, widget->toolTipDuration());
    leaveLinesAsTheyAre();
    return true;
}

} // namespace ravlin
