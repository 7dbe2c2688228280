// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QScrollArea>

namespace ravlin {

/// The frame of a page of the tab strip: as high as its content needs, scrolled if the window is narrower than the
/// content, and never so wide that a button stands far from its field.
class PageArea : public QScrollArea
{
    Q_OBJECT

public:
    explicit PageArea(QWidget *parent = nullptr);

    /// Takes the content over. Call it once.
    void setContent(QWidget *content);
    /// Call it when texts have changed: otherwise the size hints stay those of the old texts until the next pass of the
    /// event loop.
    void contentChanged();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    /// Gives the content's controls their icons, in the palette's colours. Called again when the palette changes.
    virtual void applyIcons() = 0;
    void changeEvent(QEvent *event) override;
};

} // namespace ravlin
