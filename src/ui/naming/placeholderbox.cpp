// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/naming/placeholderbox.h"

#include "core/app/idiomas.h"
#include "ui/naming/placeholderlabel.h"

#include <QGridLayout>

namespace ravlin {

PlaceholderBox::PlaceholderBox(Caption title, std::span<const Placeholder> table, int columns, QWidget *parent)
    : QGroupBox(parent), m_title(title), m_table(table)
{
    auto *grid = new QGridLayout(this);
    grid->setVerticalSpacing(0);
    for (const Placeholder &placeholder : m_table) {
        auto *label = new PlaceholderLabel(placeholder.token(), this);
        label->setObjectName(QStringLiteral("lt_%1").arg(placeholder.label));
        const auto place = static_cast<int>(m_labels.size());
        grid->addWidget(label, place / columns, place % columns, Qt::AlignLeft);
        connect(label, &PlaceholderLabel::clicked, this, [this, label] { Q_EMIT clicked(label->placeholder()); });
        m_labels.push_back(label);
    }
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
