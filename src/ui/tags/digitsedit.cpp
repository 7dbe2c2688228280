// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/tags/digitsedit.h"

#include "core/tags/store/tageditor.h"

#include <QApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>

namespace ravlin {

DigitsEdit::DigitsEdit(QWidget *parent) : QLineEdit(parent)
{
    setInputMethodHints(Qt::ImhDigitsOnly);
    connect(this, &DigitsEdit::typingRefused, this, &QApplication::beep);
}

void DigitsEdit::keyPressEvent(QKeyEvent *event)
{
    // Ctrl makes a key a command, whatever text the system gives it; with Alt it is AltGr and types.
    const bool isCommand =
        event->modifiers().testFlag(Qt::ControlModifier) && !event->modifiers().testFlag(Qt::AltModifier);
    switch (isCommand ? KeyVerdict::Pass : digitKeyVerdict(event->text())) {
    case KeyVerdict::Pass:
        QLineEdit::keyPressEvent(event);
        return;
    case KeyVerdict::Beep:
        Q_EMIT typingRefused();
        break;
    case KeyVerdict::Swallow:
        break;
    }
    event->accept();
}

void DigitsEdit::inputMethodEvent(QInputMethodEvent *event)
{
    if (digitKeyVerdict(event->commitString()) == KeyVerdict::Pass) {
        QLineEdit::inputMethodEvent(event);
        return;
    }
    Q_EMIT typingRefused();
    QInputMethodEvent withoutText;
    QLineEdit::inputMethodEvent(&withoutText); // ends the composition
    event->accept();
}

} // namespace ravlin
