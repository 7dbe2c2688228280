// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/tags/streampanel.h"

#include "core/app/idiomas.h"
#include "core/tags/mpeg/streamdetails.h"
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
}

void StreamPanel::applyCaptions(const Captions &captions)
{
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        const QString caption = captions.text(LineCaptions[i]);
        m_lines[i].caption->setText(caption);
        m_lines[i].value->setAccessibleDescription(caption);
    }
}

void StreamPanel::show(const StreamDetails &details)
{
    const std::array texts{details.bitRate, details.length, details.frequency, details.size};
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        m_lines[i].value->setText(texts[i]);
        m_lines[i].value->setToolTip(details.problem);
    }
    m_lines[1].value->setToolTip(details.problem.isEmpty() ? details.clockTime : details.problem);
}

void StreamPanel::clear()
{
    show({});
}

} // namespace ravlin
