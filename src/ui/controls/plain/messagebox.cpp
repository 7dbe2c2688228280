// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controls/plain/messagebox.h"

#include "core/app/showntext.h"

#include <QLabel>

namespace ravlin {

MessageBox::MessageBox(Icon icon, const QString &title, const QString &text, StandardButtons buttons, QWidget *parent)
    : QMessageBox(icon, title, QString(), buttons, parent)
{
    setTextFormat(Qt::PlainText);
    setText(text);
}

void MessageBox::setText(const QString &text)
{
    QMessageBox::setText(shownLines(text));
}

void MessageBox::setFurtherText(const QString &text)
{
    if (text.isEmpty()) {
        QMessageBox::setInformativeText(text);
        return;
    }
    QMessageBox::setInformativeText(QStringLiteral(" ")); // makes the label, which does not follow setTextFormat()
    makeLabelsPlain();
    QMessageBox::setInformativeText(shownLines(text));
}

void MessageBox::setDetailedText(const QString &text)
{
    QMessageBox::setDetailedText(shownLines(text));
}

void MessageBox::makeLabelsPlain()
{
    for (QLabel *label : findChildren<QLabel *>())
        label->setTextFormat(Qt::PlainText);
}

} // namespace ravlin
