// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/naming/placeholderbox.h"

#include "core/app/idiomas.h"

#include <QEvent>
#include <QGridLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QPushButton>
#include <QStyle>
#include <QStyleOptionFocusRect>

namespace ravlin {

namespace {

constexpr QMargins Margins(3, 2, 3, 2);

/// A word that can be clicked, looking like a link: names a placeholder and what it stands for. Tab reaches it, the
/// space bar clicks it, and a click with the mouse leaves the keyboard focus where it is.
class PlaceholderLabel : public QPushButton
{
public:
    explicit PlaceholderLabel(QWidget *parent);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;
    bool event(QEvent *event) override;
};

PlaceholderLabel::PlaceholderLabel(QWidget *parent) : QPushButton(parent)
{
    setFlat(true);
    setFocusPolicy(Qt::TabFocus);
    setCursor(Qt::PointingHandCursor);
    setAttribute(Qt::WA_Hover);
    setAutoDefault(false);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize PlaceholderLabel::sizeHint() const
{
    return fontMetrics().size(Qt::TextSingleLine, text()).grownBy(Margins);
}

bool PlaceholderLabel::event(QEvent *event)
{
    // Enter clicks a link like a button; in a dialog it would reach the default button instead.
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            click();
            return true;
        }
    }
    return QPushButton::event(event);
}

void PlaceholderLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    QFont drawn = font();
    drawn.setUnderline(isEnabled() && (underMouse() || isDown()));
    painter.setFont(drawn);
    painter.setPen(isEnabled() ? palette().color(QPalette::Link) : palette().color(QPalette::Disabled, QPalette::Text));
    painter.drawText(rect().marginsRemoved(Margins), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, text());
    if (!hasFocus())
        return;
    QStyleOptionFocusRect focus;
    focus.initFrom(this);
    focus.rect = rect();
    focus.backgroundColor = palette().color(QPalette::Window);
    style()->drawPrimitive(QStyle::PE_FrameFocusRect, &focus, &painter, this);
}

} // namespace

PlaceholderBox::PlaceholderBox(Caption title, std::span<const Placeholder> table, int columns, QWidget *parent)
    : QGroupBox(parent), m_title(title), m_table(table)
{
    auto *grid = new QGridLayout(this);
    grid->setVerticalSpacing(0);
    for (const Placeholder &placeholder : m_table) {
        auto *label = new PlaceholderLabel(this);
        label->setObjectName(QStringLiteral("lt_%1").arg(placeholder.label));
        const auto place = static_cast<int>(m_labels.size());
        grid->addWidget(label, place / columns, place % columns, Qt::AlignLeft);
        connect(label, &QPushButton::clicked, this, [this, &placeholder] { Q_EMIT clicked(placeholder.token()); });
        m_labels.push_back(label);
    }
}

QList<QWidget *> PlaceholderBox::controls() const
{
    return {m_labels.begin(), m_labels.end()};
}

void PlaceholderBox::applyCaptions(const Captions &captions)
{
    setTitle(captions.text(m_title));
    for (std::size_t i = 0; i < m_labels.size(); ++i) {
        m_labels[i]->setText(placeholderLabel(m_table[i], captions.text(m_table[i].caption)));
        m_labels[i]->setToolTip(captions.text(Text::TipPlaceholder));
        m_labels[i]->setAccessibleDescription(m_labels[i]->toolTip());
    }
}

} // namespace ravlin
