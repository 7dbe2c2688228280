// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controls/pagefoot.h"

#include "ui/controls/plain/plainlabel.h"

#include <QEvent>
#include <QGridLayout>
#include <QPushButton>

#include <algorithm>

namespace ravlin {

namespace {

constexpr int HintLines = 2;
constexpr int HintLetters = 30; ///< a hint with less room gets a line of its own

} // namespace

PageFoot::PageFoot(QWidget *start, PlainLabel *hint, const QList<QPushButton *> &buttons, QWidget *parent)
    : QWidget(parent), m_start(start), m_hint(hint), m_buttons(buttons), m_grid(new QGridLayout(this))
{
    QMargins margins = m_grid->contentsMargins();
    margins.setTop(0);
    m_grid->setContentsMargins(margins);
    m_grid->setColumnStretch(1, 1);
    m_hint->setWordWrap(true);
    m_hint->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_hint->setFixedHeight(heightOfHint());
    arrange();
}

int PageFoot::heightForWidth(int width) const
{
    const QMargins margins = m_grid->contentsMargins();
    const int start = m_start == nullptr ? 0 : m_start->sizeHint().height();
    const int spacing = m_grid->verticalSpacing();
    int height = margins.top() + std::max(heightOfLine(), start) + margins.bottom();
    const Arrangement arrangement = arrangementFor(width);
    if (arrangement == Arrangement::OneLine)
        return height;
    height += heightOfHint() + spacing;
    if (m_start != nullptr)
        height += start + spacing;
    if (arrangement == Arrangement::OneBelowTheOther)
        height += static_cast<int>(m_buttons.size() - 1) * (heightOfLine() + spacing);
    return height;
}

QSize PageFoot::minimumSizeHint() const
{
    int widest = m_start == nullptr ? 0 : m_start->minimumSizeHint().width();
    for (const QPushButton *button : m_buttons)
        widest = std::max(widest, button->minimumWidth());
    const QMargins margins = m_grid->contentsMargins();
    return {margins.left() + widest + margins.right(), heightForWidth(QWIDGETSIZE_MAX)};
}

void PageFoot::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    const QMargins margins = m_grid->contentsMargins();
    if (m_start != nullptr) // wider, it would push the buttons out
        m_start->setMaximumWidth(std::max(0, width() - margins.left() - margins.right()));
    if (arrangementFor(width()) != m_arrangement)
        arrange();
    explainCutHint();
}

bool PageFoot::event(QEvent *event)
{
    // Texts of another language may be longer.
    if (event->type() == QEvent::LayoutRequest && arrangementFor(width()) != m_arrangement)
        arrange();
    if (event->type() == QEvent::LayoutRequest)
        explainCutHint();
    if (event->type() == QEvent::FontChange)
        m_hint->setFixedHeight(heightOfHint());
    return QWidget::event(event);
}

PageFoot::Arrangement PageFoot::arrangementFor(int width) const
{
    const QMargins margins = m_grid->contentsMargins();
    const int spacing = m_grid->horizontalSpacing();
    const int buttons = margins.left() + widthOfButtons() + margins.right();
    const int start = m_start == nullptr ? 0 : m_start->sizeHint().width() + spacing;
    const int hint = HintLetters * fontMetrics().averageCharWidth();
    if (start + hint + spacing + buttons <= width)
        return Arrangement::OneLine;
    return buttons <= width ? Arrangement::HintAbove : Arrangement::OneBelowTheOther;
}

void PageFoot::arrange()
{
    m_arrangement = arrangementFor(width());
    while (QLayoutItem *item = m_grid->takeAt(0))
        delete item;
    for (int row = 0; row < m_grid->rowCount(); ++row)
        m_grid->setRowMinimumHeight(row, 0);
    const int columns = 2 + static_cast<int>(m_buttons.size());
    int row = 0;
    if (m_arrangement == Arrangement::OneLine) {
        if (m_start != nullptr)
            m_grid->addWidget(m_start, 0, 0);
        m_grid->addWidget(m_hint, 0, 1);
    } else {
        if (m_start != nullptr)
            m_grid->addWidget(m_start, row++, 0, 1, columns, Qt::AlignLeft);
        m_grid->addWidget(m_hint, row++, 0, 1, columns);
    }
    arrangeButtons(row);
    updateGeometry();
}

void PageFoot::arrangeButtons(int row)
{
    const bool areBeside = m_arrangement != Arrangement::OneBelowTheOther;
    const int columns = 2 + static_cast<int>(m_buttons.size());
    for (int i = 0; i < static_cast<int>(m_buttons.size()); ++i) {
        m_grid->setRowMinimumHeight(row, heightOfLine()); // the same on every page
        if (areBeside)
            m_grid->addWidget(m_buttons[i], row, 2 + i);
        else
            m_grid->addWidget(m_buttons[i], row++, 0, 1, columns, Qt::AlignRight);
    }
}

/// With the spacing of the two columns before them.
int PageFoot::widthOfButtons() const
{
    int width = m_grid->horizontalSpacing();
    for (const QPushButton *button : m_buttons)
        width += std::max(button->sizeHint().width(), button->minimumWidth()) + m_grid->horizontalSpacing();
    return width;
}

/// The height of a line with a button.
int PageFoot::heightOfLine() const
{
    int height = heightOfHint();
    for (const QPushButton *button : m_buttons)
        height = std::max(height, button->sizeHint().height());
    return height;
}

/// Tells a hint of more lines in its tooltip.
void PageFoot::explainCutHint()
{
    m_grid->activate();
    const bool isCut = m_hint->heightForWidth(m_hint->width()) > m_hint->height();
    m_hint->setToolTip(isCut ? m_hint->text() : QString());
}

int PageFoot::heightOfHint() const
{
    return HintLines * fontMetrics().lineSpacing();
}

} // namespace ravlin
