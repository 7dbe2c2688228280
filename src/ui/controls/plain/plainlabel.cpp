// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controls/plain/plainlabel.h"

#include "core/app/showntext.h"

#include <algorithm>

namespace ravlin {

PlainLabel::PlainLabel(QWidget *parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
}

PlainLabel::PlainLabel(const QString &text, QWidget *parent) : PlainLabel(parent)
{
    setText(text);
}

void PlainLabel::setText(const QString &text)
{
    QLabel::setText(shownLines(text));
}

QSize PlainLabel::sizeHint() const
{
    return bounded(QLabel::sizeHint());
}

QSize PlainLabel::minimumSizeHint() const
{
    return bounded(QLabel::minimumSizeHint());
}

QSize PlainLabel::bounded(QSize hint) const
{
    constexpr int WidestInLetters = 100;
    if (wordWrap())
        hint.setWidth(std::min(hint.width(), fontMetrics().averageCharWidth() * WidestInLetters));
    return hint;
}

} // namespace ravlin
