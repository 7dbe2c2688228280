// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class QAbstractButton;

namespace ravlin {

class PageFoot;
class Scroller;

/// The frame of a page of the tab strip: the content on top, as high as it needs to be and scrolled if the window is
/// narrower or lower, and the foot at the lower edge, always in sight.
class PageArea : public QWidget
{
    Q_OBJECT

public:
    using QWidget::QWidget;

    /// Takes both over. Call it once.
    void setContent(QWidget *content, PageFoot *foot);
    /// Call it when texts have changed: otherwise the size hints stay those of the old texts until the next pass of the
    /// event loop.
    void contentChanged();

    /// What saves the page's tags; nullptr on a page that saves none.
    virtual QAbstractButton *saveButton() const { return nullptr; }

    bool hasHeightForWidth() const override { return true; }
    /// Holds before the page has been shown, too.
    int heightForWidth(int width) const override;
    /// The heights are those of a wide page; a lower one would be useless.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    /// Gives the page's controls their icons, in the palette's colours. Called again when the palette changes.
    virtual void applyIcons() = 0;
    void changeEvent(QEvent *event) override;

private:
    QWidget *m_content = nullptr;
    Scroller *m_scroller = nullptr;
    PageFoot *m_foot = nullptr;
};

} // namespace ravlin
