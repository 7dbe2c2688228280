// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/controls/splitlayout.h"

#include <QColor>
#include <QPointer>
#include <QString>
#include <QVariant>
#include <QWidget>

#include <functional>

namespace ravlin {

class SplitBar;

/// Divides its area between two child widgets with a draggable bar (`pbSplit`) between them.
///
/// All lengths are in twips, 15 to the logical pixel. The first panel is the left or upper one, whatever the direction
/// of writing. During a drag only the bar moves; the panels follow at its release. Tab reaches the bar; the arrow keys,
/// Page Up and Page Down, Home and End move it.
///
/// Before the control has a size, properties are only stored. From then on every change is corrected to what the size
/// allows (splitlayout.h), at once and at every resize.
class SplitPanel : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(int MinPanelSize READ minPanelSize WRITE setMinPanelSize NOTIFY minPanelSizeChanged)
    Q_PROPERTY(bool Horizontal READ isHorizontal WRITE setHorizontal NOTIFY horizontalChanged)
    Q_PROPERTY(bool SnapToEdge READ snapToEdge WRITE setSnapToEdge NOTIFY snapToEdgeChanged)
    Q_PROPERTY(int SplitterWidth READ splitterWidth WRITE setSplitterWidth NOTIFY splitterWidthChanged)
    Q_PROPERTY(int Position READ position WRITE setPosition NOTIFY positionChanged)
    Q_PROPERTY(QColor BackColor READ backColor WRITE setBackColor RESET resetBackColor NOTIFY backColorChanged)
    Q_PROPERTY(QColor DragColor READ dragColor WRITE setDragColor RESET resetDragColor NOTIFY dragColorChanged)
    Q_PROPERTY(int Snapped READ snapped WRITE setSnapped NOTIFY snappedChanged)

public:
    /// Returns a stored property, or the default. Values may come back as text.
    using PropertyReader = std::function<QVariant(const QString &name, const QVariant &defaultValue)>;
    /// Stores a property; may leave out one that equals its default. Every value can be converted to text and back.
    using PropertyWriter =
        std::function<void(const QString &name, const QVariant &value, const QVariant &defaultValue)>;

    explicit SplitPanel(QWidget *parent = nullptr);

    /// Makes the widget a child, which this control places, shows and hides. A former panel stays a hidden child. Null
    /// leaves the place empty.
    void setFirstPanel(QWidget *panel);
    void setSecondPanel(QWidget *panel);
    QWidget *firstPanel() const { return m_first; }
    QWidget *secondPanel() const { return m_second; }

    /// The bar's name for assistive tools.
    void setBarAccessibleName(const QString &name);

    int minPanelSize() const { return m_rule.minPanelSize; }
    void setMinPanelSize(int twips);
    /// True: the panels are stacked. False: they are side by side.
    bool isHorizontal() const { return m_horizontal; }
    void setHorizontal(bool horizontal);
    bool snapToEdge() const { return m_rule.snapToEdge; }
    void setSnapToEdge(bool snap);
    int splitterWidth() const { return m_rule.splitterWidth; }
    void setSplitterWidth(int twips);
    /// The centre of the bar from the left or upper edge. Setting it opens a shut panel.
    int position() const { return m_state.position; }
    void setPosition(int twips);
    /// Colours of the bar; the palette's button and button text unless they are set.
    QColor backColor() const;
    void setBackColor(const QColor &color);
    void resetBackColor() { setBackColor({}); }
    QColor dragColor() const;
    void setDragColor(const QColor &color);
    void resetDragColor() { setDragColor({}); }
    /// 0: no panel is shut, 1: the first, 2: the second; any other number counts as 0.
    int snapped() const { return int(m_state.snapped); }
    void setSnapped(int panel);

    /// Reads the eight properties; a missing or senseless one gets its default. A colour is a text like "#ffd0e0f0", or
    /// empty for the palette's.
    void readProperties(const PropertyReader &read);
    void writeProperties(const PropertyWriter &write) const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    void minPanelSizeChanged();
    void horizontalChanged();
    void snapToEdgeChanged();
    void splitterWidthChanged();
    void positionChanged();
    void backColorChanged();
    void dragColorChanged();
    void snappedChanged();

    /// The user has shut a panel (1 or 2) by releasing the bar near an edge. Everything is at its new place already.
    void Snapped(int panel);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    int extentInTwips() const;
    int along(QPoint point) const { return m_horizontal ? point.y() : point.x(); }
    QRect rectangle(int begin, int length) const;
    void setPanel(QPointer<QWidget> &place, QWidget *panel);
    void applyLayout();
    void placeBar(int beginInPixels);
    void showPositionOnBar(const SplitLayout &layout);
    void dragBar(QPoint offset);
    void releaseBar(QPoint offset);
    void moveBarByKey(int position);
    void announceAll();

    SplitRule m_rule;
    SplitState m_state;
    bool m_horizontal = false;
    SplitBar *m_bar;
    QPointer<QWidget> m_first;
    QPointer<QWidget> m_second;
};

} // namespace ravlin
