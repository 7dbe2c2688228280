// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLineEdit>

namespace ravlin {

/// A text box into which only digits can be typed. Enter does nothing in it, any other visible character beeps. Text
/// that is pasted or dropped is taken as it is.
class DigitsEdit : public QLineEdit
{
    Q_OBJECT

public:
    explicit DigitsEdit(QWidget *parent = nullptr);

    /// Makes it wide enough for that many digits and the frame around them, and no wider.
    void setWidthForDigits(int digits);

Q_SIGNALS:
    /// A typed character was refused; the system beeps.
    void typingRefused();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;
};

} // namespace ravlin
