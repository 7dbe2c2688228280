// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QScrollArea>

namespace ravlin {

/// Shows its content, and scrolls it where there is less room than it needs. It has no frame and no background of its
/// own, and the Tab key goes through it to the content's controls.
class Scroller : public QScrollArea
{
    Q_OBJECT

public:
    /// Takes the content over.
    explicit Scroller(QWidget *content, QWidget *parent = nullptr);

    bool hasHeightForWidth() const override { return true; }
    /// The content's height, or the greatest that it had if that is more, so that what lies around it does not jump
    /// with the letters of each text; and a scroll bar's height if the content is wider.
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    /// A few letters and lines.
    QSize minimumSizeHint() const override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    int contentHeight() const;

    int m_greatestHeight = 0; ///< of the content in the present font and style
};

} // namespace ravlin
