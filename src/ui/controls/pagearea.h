// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QScrollArea>

namespace ravlin {

/// The frame of a page of the tab strip: as high as its content needs, scrolled where the window is narrower than the
/// content, and never so wide that the eye has to travel from a field to its button.
class PageArea : public QScrollArea
{
    Q_OBJECT

public:
    explicit PageArea(QWidget *parent = nullptr);

    /// Takes the content over; once.
    void setContent(QWidget *content);
    /// To be called when texts have changed: otherwise the size hints would be those of the old texts until the next
    /// pass of the event loop.
    void contentChanged();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    /// Gives the content's controls their icons, in the colours of the palette. Called again when that has changed.
    virtual void applyIcons() = 0;
    void changeEvent(QEvent *event) override;
};

} // namespace ravlin
