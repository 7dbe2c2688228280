// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/tags/streampanel.h"

#include "core/app/idiomas.h"
#include "ui/controls/plain/plainlabel.h"

#include <QGridLayout>

namespace ravlin {

namespace {

constexpr std::array LineCaptions{Caption::Mode, Caption::Time, Caption::Frequency, Caption::Size};
constexpr std::array Names{"mode", "time", "frequency", "size"};

} // namespace

StreamPanel::StreamPanel(QWidget *parent) : QWidget(parent)
{
    auto *layout = new QGridLayout(this);
    layout->setContentsMargins({});
    layout->setVerticalSpacing(layout->verticalSpacing() / 2);
    layout->setColumnStretch(1, 1);
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        const int row = static_cast<int>(i);
        Line &line = m_lines[i];
        line = {new PlainLabel(this), new PlainLabel(this)};
        line.value->setObjectName(QLatin1String(Names[i]));
        line.value->setTextInteractionFlags(Qt::TextSelectableByMouse);
        line.value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        layout->addWidget(line.caption, row, 0);
        layout->addWidget(line.value, row, 1);
    }
    m_faultLine = new PlainLabel(this);
    m_faultLine->setObjectName(QStringLiteral("fault"));
    m_faultLine->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    QFont bold = m_faultLine->font();
    bold.setBold(true);
    m_faultLine->setFont(bold);
    QSizePolicy always = m_faultLine->sizePolicy(); // so that the page does not jump
    always.setRetainSizeWhenHidden(true);
    m_faultLine->setSizePolicy(always);
    layout->addWidget(m_faultLine, static_cast<int>(m_lines.size()), 0, 1, 2);
    showFault();
}

void StreamPanel::applyCaptions(const Captions &captions)
{
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        const QString caption = captions.text(LineCaptions[i]);
        m_lines[i].caption->setText(caption);
        m_lines[i].value->setAccessibleDescription(caption);
    }
    m_captions = &captions;
    showFault();
}

void StreamPanel::show(const StreamDetails &details)
{
    const std::array texts{details.bitRate, details.length, details.frequency, details.size};
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        m_lines[i].value->setText(texts[i]);
        m_lines[i].value->setToolTip(details.problem);
    }
    m_lines[1].value->setToolTip(details.problem.isEmpty() ? details.clockTime : details.problem);
    m_fault = details.fault;
    showFault();
}

void StreamPanel::showFault()
{
    const bool isFaulty = m_fault != StreamFault::None && m_captions != nullptr;
    m_faultLine->setVisible(isFaulty);
    if (!isFaulty)
        return;
    m_faultLine->setText(m_captions->text(m_fault == StreamFault::CutOff ? Text::StreamCutOff : Text::StreamDamaged));
    m_faultLine->setToolTip(m_captions->text(Text::TipStreamDamaged));
}

void StreamPanel::clear()
{
    show({});
}

} // namespace ravlin
