#include "tags/ui/digitsedit.h"

#include "tags/tageditor.h"

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
    switch (digitKeyVerdict(event->text())) {
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
