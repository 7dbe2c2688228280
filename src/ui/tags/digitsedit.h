// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLineEdit>

namespace ravlin {

/// A text box that accepts only digits. Enter does nothing, any other visible character beeps. Text that is pasted or
/// dropped is accepted unchanged.
class DigitsEdit : public QLineEdit
{
    Q_OBJECT

public:
    explicit DigitsEdit(QWidget *parent = nullptr);

Q_SIGNALS:
    /// A typed character was refused; the system beeps.
    void typingRefused();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;
};

} // namespace ravlin
