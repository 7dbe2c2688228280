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
    /// The content's height, and a scroll bar's if the content is wider.
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    /// A few letters and lines.
    QSize minimumSizeHint() const override;
};

} // namespace ravlin
