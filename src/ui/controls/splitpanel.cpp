// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controls/splitpanel.h"

#include "ui/controls/splitbar.h"

#include <QSignalBlocker>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace ravlin {

namespace {

SnappedPanel snappedFromNumber(int number)
{
    switch (number) {
    case int(SnappedPanel::First):
        return SnappedPanel::First;
    case int(SnappedPanel::Second):
        return SnappedPanel::Second;
    default:
        return SnappedPanel::None;
    }
}

int readNumber(const SplitPanel::PropertyReader &read, const QString &name, int defaultValue)
{
    bool valid = false;
    const int value = read(name, defaultValue).toInt(&valid);
    return valid ? value : defaultValue;
}

bool readFlag(const SplitPanel::PropertyReader &read, const QString &name)
{
    return read(name, false).toBool();
}

/// Invalid: the palette's colour, which is the default.
QColor readColor(const SplitPanel::PropertyReader &read, const QString &name)
{
    return QColor(read(name, QString()).toString());
}

QString textOfColor(const QColor &color)
{
    return color.isValid() ? color.name(QColor::HexArgb) : QString();
}

QSize hintOf(const QWidget *panel, QSize (QWidget::*hint)() const)
{
    return panel ? (panel->*hint)().expandedTo({0, 0}) : QSize(0, 0);
}

} // namespace

SplitPanel::SplitPanel(QWidget *parent) : QWidget(parent), m_bar(new SplitBar(this))
{
    m_bar->setObjectName(u"pbSplit"_s);
    m_bar->setAccessibleName(u"Divider"_s);
    connect(m_bar, &SplitBar::dragMoved, this, &SplitPanel::dragBar);
    connect(m_bar, &SplitBar::dragReleased, this, &SplitPanel::releaseBar);
    connect(m_bar, &SplitBar::valueChanged, this, &SplitPanel::moveBarByKey);
}

void SplitPanel::setFirstPanel(QWidget *panel)
{
    setPanel(m_first, panel);
}

void SplitPanel::setSecondPanel(QWidget *panel)
{
    setPanel(m_second, panel);
}

void SplitPanel::setPanel(QPointer<QWidget> &place, QWidget *panel)
{
    if (place && place != panel)
        place->hide();
    place = panel;
    if (panel) {
        panel->setParent(this);
        panel->show();
    }
    if (m_first)
        setTabOrder(m_first, m_bar);
    if (m_second)
        setTabOrder(m_bar, m_second);
    updateGeometry();
    applyLayout();
}

void SplitPanel::setBarAccessibleName(const QString &name)
{
    m_bar->setAccessibleName(name);
}

void SplitPanel::setMinPanelSize(int twips)
{
    m_rule.minPanelSize = twips;
    Q_EMIT minPanelSizeChanged();
    applyLayout();
}

void SplitPanel::setHorizontal(bool horizontal)
{
    m_horizontal = horizontal;
    m_bar->setAxis(horizontal ? Qt::Vertical : Qt::Horizontal);
    updateGeometry();
    Q_EMIT horizontalChanged();
    applyLayout();
}

void SplitPanel::setSnapToEdge(bool snap)
{
    m_rule.snapToEdge = snap;
    Q_EMIT snapToEdgeChanged();
    applyLayout();
}

void SplitPanel::setSplitterWidth(int twips)
{
    m_rule.splitterWidth = twips;
    updateGeometry();
    Q_EMIT splitterWidthChanged();
    applyLayout();
}

void SplitPanel::setPosition(int twips)
{
    const bool wasShut = m_state.snapped != SnappedPanel::None;
    m_state = {twips, SnappedPanel::None};
    Q_EMIT positionChanged();
    if (wasShut)
        Q_EMIT snappedChanged();
    applyLayout();
}

QColor SplitPanel::backColor() const
{
    return m_bar->shownRestColor();
}

void SplitPanel::setBackColor(const QColor &color)
{
    m_bar->setRestColor(color);
    Q_EMIT backColorChanged();
    applyLayout();
}

QColor SplitPanel::dragColor() const
{
    return m_bar->shownDragColor();
}

void SplitPanel::setDragColor(const QColor &color)
{
    m_bar->setDragColor(color);
    Q_EMIT dragColorChanged();
    applyLayout();
}

void SplitPanel::setSnapped(int panel)
{
    m_state.snapped = snappedFromNumber(panel);
    Q_EMIT snappedChanged();
    applyLayout();
}

void SplitPanel::readProperties(const PropertyReader &read)
{
    m_rule.minPanelSize = readNumber(read, u"MinPanelSize"_s, SplitRule().minPanelSize);
    m_horizontal = readFlag(read, u"Horizontal"_s);
    m_rule.snapToEdge = readFlag(read, u"SnapToEdge"_s);
    m_rule.splitterWidth = readNumber(read, u"SplitterWidth"_s, SplitRule().splitterWidth);
    m_state.position = readNumber(read, u"Position"_s, SplitState().position);
    m_bar->setRestColor(readColor(read, u"BackColor"_s));
    m_bar->setDragColor(readColor(read, u"DragColor"_s));
    m_state.snapped = snappedFromNumber(readNumber(read, u"Snapped"_s, int(SplitState().snapped)));

    m_bar->setAxis(m_horizontal ? Qt::Vertical : Qt::Horizontal);
    updateGeometry();
    announceAll();
    applyLayout();
}

void SplitPanel::writeProperties(const PropertyWriter &write) const
{
    write(u"MinPanelSize"_s, m_rule.minPanelSize, SplitRule().minPanelSize);
    write(u"Horizontal"_s, m_horizontal, false);
    write(u"SnapToEdge"_s, m_rule.snapToEdge, SplitRule().snapToEdge);
    write(u"SplitterWidth"_s, m_rule.splitterWidth, SplitRule().splitterWidth);
    write(u"Position"_s, m_state.position, SplitState().position);
    write(u"BackColor"_s, textOfColor(m_bar->restColor()), QString());
    write(u"DragColor"_s, textOfColor(m_bar->dragColor()), QString());
    write(u"Snapped"_s, int(m_state.snapped), int(SplitState().snapped));
}

void SplitPanel::announceAll()
{
    Q_EMIT minPanelSizeChanged();
    Q_EMIT horizontalChanged();
    Q_EMIT snapToEdgeChanged();
    Q_EMIT splitterWidthChanged();
    Q_EMIT positionChanged();
    Q_EMIT backColorChanged();
    Q_EMIT dragColorChanged();
    Q_EMIT snappedChanged();
}

QSize SplitPanel::sizeHint() const
{
    const QSize first = hintOf(m_first, &QWidget::sizeHint);
    const QSize second = hintOf(m_second, &QWidget::sizeHint);
    const int bar = pixelsFromTwips(m_rule.splitterWidth);
    if (m_horizontal)
        return {std::max(first.width(), second.width()), first.height() + bar + second.height()};
    return {first.width() + bar + second.width(), std::max(first.height(), second.height())};
}

QSize SplitPanel::minimumSizeHint() const
{
    // Along the axis the panels may shrink to nothing; across it both need their full size.
    const QSize needed =
        hintOf(m_first, &QWidget::minimumSizeHint).expandedTo(hintOf(m_second, &QWidget::minimumSizeHint));
    const int bar = pixelsFromTwips(m_rule.splitterWidth);
    return m_horizontal ? QSize(needed.width(), bar) : QSize(bar, needed.height());
}

void SplitPanel::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    applyLayout();
}

int SplitPanel::extentInTwips() const
{
    return twipsFromPixels(m_horizontal ? height() : width());
}

QRect SplitPanel::rectangle(int begin, int length) const
{
    return m_horizontal ? QRect(0, begin, width(), length) : QRect(begin, 0, length, height());
}

void SplitPanel::applyLayout()
{
    // Before anybody sizes it a widget has some size of its own. Correcting to that would lose the position.
    if (!testAttribute(Qt::WA_Resized) && !isVisible())
        return;
    const SplitLayout layout = layOutSplit(m_rule, m_state, extentInTwips());
    const bool corrected = layout.position != m_state.position;
    m_state.position = layout.position;

    placeBar(pixelsFromTwips(layout.bar.begin));
    const QRect bar = m_bar->geometry();
    const int barBegin = along(bar.topLeft());
    const int barEnd = along(bar.bottomRight()) + 1;
    if (m_first) {
        m_first->setVisible(layout.firstVisible);
        m_first->setGeometry(rectangle(0, barBegin));
    }
    if (m_second) {
        m_second->setVisible(layout.secondVisible);
        m_second->setGeometry(rectangle(barEnd, (m_horizontal ? height() : width()) - barEnd));
    }
    showPositionOnBar(layout);
    if (corrected)
        Q_EMIT positionChanged();
}

void SplitPanel::placeBar(int beginInPixels)
{
    const int extent = m_horizontal ? height() : width();
    const int thickness = std::clamp(pixelsFromTwips(m_rule.splitterWidth), 0, extent);
    m_bar->setGeometry(rectangle(std::clamp(beginInPixels, 0, extent - thickness), thickness));
    m_bar->raise(); // a panel that refuses to shrink must not cover it
}

void SplitPanel::showPositionOnBar(const SplitLayout &layout)
{
    const QSignalBlocker ourOwnDoing(m_bar);
    m_bar->setRange(layout.lowest, layout.highest);
    m_bar->setValue(layout.position);
}

void SplitPanel::dragBar(QPoint offset)
{
    const int barBegin = twipsFromPixels(along(m_bar->pos()));
    placeBar(pixelsFromTwips(draggedBarBegin(barBegin, twipsFromPixels(along(offset)), m_rule, extentInTwips())));
}

void SplitPanel::releaseBar(QPoint offset)
{
    const int barBegin = twipsFromPixels(along(m_bar->pos()));
    const SplitState before = m_state;
    m_state = releasedBar(barBegin, twipsFromPixels(along(offset)), m_rule, extentInTwips());
    Q_EMIT positionChanged();
    if (m_state.snapped != before.snapped)
        Q_EMIT snappedChanged();
    applyLayout();
    if (m_state.snapped != SnappedPanel::None)
        Q_EMIT Snapped(int(m_state.snapped));
}

void SplitPanel::moveBarByKey(int position)
{
    setPosition(position);
}

} // namespace ravlin
