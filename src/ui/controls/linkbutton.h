// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPushButton>

namespace ravlin {

/// An address to click: looks like a link and is a button for keyboard and assistive tools. Its text is the address.
class LinkButton : public QPushButton
{
    Q_OBJECT

public:
    explicit LinkButton(const QString &address, QWidget *parent = nullptr);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace ravlin
