// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controls/conversionbox.h"

#include "core/app/idiomas.h"
#include "ui/controls/making.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>

namespace ravlin {

ConversionBox::ConversionBox(const ConversionPair &pair, QWidget *parent)
    : QWidget(parent), m_pair(pair), m_checkBox(new QCheckBox(this)), m_list(new QComboBox(this))
{
    m_checkBox->setObjectName(QStringLiteral("op4_%1").arg(pair.number));
    m_list->setObjectName(QStringLiteral("ccase_%1").arg(pair.number));
    m_list->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    for (int index = 0; index < conversionCount(pair.kind); ++index)
        m_list->addItem(QString(), conversionMode(pair.kind, index));
    setChoice({});
    guardAgainstWheel(m_list);

    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(m_checkBox);
    layout->addWidget(m_list, 1);
    setFocusProxy(m_checkBox);
}

void ConversionBox::applyCaptions(const Captions &captions)
{
    const QString caption = captions.text(conversionCaption(m_pair.kind));
    m_checkBox->setText(caption);
    m_list->setAccessibleName(caption);
    m_list->setAccessibleDescription(caption); // some desktops get the chosen entry as a list's name
    const QList<Caption> entries = conversionEntryCaptions(m_pair.kind);
    for (int index = 0; index < entries.size(); ++index)
        m_list->setItemText(index, captions.text(entries.at(index)));
    // The box does not notice by itself that its entries have grown.
    m_list->updateGeometry();
}

ConversionChoice ConversionBox::choice() const
{
    return {m_checkBox->isChecked(), m_list->currentIndex()};
}

void ConversionBox::setChoice(ConversionChoice choice)
{
    m_checkBox->setChecked(choice.on);
    m_list->setCurrentIndex(choice.index);
}

void ConversionBox::setPairToolTip(const QString &text)
{
    m_checkBox->setToolTip(text);
    m_list->setToolTip(text);
}

QList<QWidget *> ConversionBox::controls() const
{
    return {m_checkBox, m_list};
}

} // namespace ravlin
