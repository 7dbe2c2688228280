// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/app/historybox.h"

#include "core/app/idiomas.h"
#include "core/history/history.h"
#include "ui/controls/making.h"
#include "ui/controls/plain/messagebox.h"
#include "ui/controls/plain/plainlabel.h"

#include <QFormLayout>
#include <QPushButton>
#include <QSpinBox>

namespace ravlin {

HistoryBox::HistoryBox(const Captions &captions, history::History &history, QWidget *parent)
    : QGroupBox(parent), m_captions(captions), m_history(history), m_daysLabel(made<PlainLabel>("ldias", this)),
      m_days(made<QSpinBox>("dias", this)), m_megabytesLabel(made<PlainLabel>("lmegas", this)),
      m_megabytes(made<QSpinBox>("megas", this)), m_size(made<PlainLabel>("historySize", this)),
      m_forget(made<QPushButton>("forgetAll", this))
{
    setObjectName(QStringLiteral("history"));
    m_days->setRange(1, FurtherOptions::MostHistoryDays);
    m_megabytes->setRange(1, FurtherOptions::MostHistoryMegabytes);
    m_daysLabel->setBuddy(m_days);
    m_megabytesLabel->setBuddy(m_megabytes);
    guardAgainstWheel(m_days);
    guardAgainstWheel(m_megabytes);
    m_forget->setAutoDefault(false);

    auto *present = new QHBoxLayout;
    present->addWidget(m_forget);
    present->addWidget(m_size, 1);
    auto *rows = new QFormLayout(this);
    rows->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    rows->addRow(m_daysLabel, m_days);
    rows->addRow(m_megabytesLabel, m_megabytes);
    rows->addRow(present);
    connect(m_forget, &QPushButton::clicked, this, &HistoryBox::askToForget);
}

void HistoryBox::show(const FurtherOptions &options)
{
    m_days->setValue(options.historyDays);
    m_megabytes->setValue(options.historyMegabytes);
    showSize();
}

void HistoryBox::choose(FurtherOptions &options) const
{
    options.historyDays = m_days->value();
    options.historyMegabytes = m_megabytes->value();
}

void HistoryBox::applyCaptions()
{
    setTitle(m_captions.text(Text::TitleHistory));
    m_daysLabel->setText(m_captions.text(Text::LabelHistoryDays));
    m_days->setToolTip(m_captions.text(Text::TipHistoryDays));
    m_megabytesLabel->setText(m_captions.text(Text::LabelHistoryMegabytes));
    m_megabytes->setToolTip(m_captions.text(Text::TipHistoryMegabytes));
    constexpr qint64 Megabyte = 1024LL * 1024;
    m_megabytes->setSuffix(m_captions.locale().formattedDataSize(Megabyte, 0).sliced(1)); // the unit's name
    m_days->setAccessibleName(m_daysLabel->text());
    m_megabytes->setAccessibleName(m_megabytesLabel->text());
    m_forget->setText(m_captions.text(Text::ForgetAll));
    makeRoomy(m_forget);
    showSize();
}

QList<QWidget *> HistoryBox::labels() const
{
    return {m_daysLabel, m_megabytesLabel};
}

void HistoryBox::showSize()
{
    const qint64 bytes = m_history.size();
    m_size->setText(m_captions.text(Text::HistorySize).arg(m_captions.locale().formattedDataSize(bytes, 1)));
    m_forget->setEnabled(bytes > 0);
    m_forget->setAccessibleDescription(m_size->text());
}

void HistoryBox::askToForget()
{
    auto *box = new MessageBox(MessageBox::Warning, QString(), m_captions.text(Text::AskForgetAll),
        MessageBox::Yes | MessageBox::No, window());
    box->setObjectName(QStringLiteral("question"));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setDefaultButton(MessageBox::No);
    box->setEscapeButton(MessageBox::No);
    connect(box, &QDialog::finished, this, [this](int answer) {
        if (answer == MessageBox::Yes)
            forget();
    });
    box->open();
}

void HistoryBox::forget()
{
    const Result<void> forgotten = m_history.forgetAll();
    showSize();
    if (forgotten)
        return;
    auto *box = new MessageBox(
        MessageBox::Critical, QString(), m_captions.errorText(forgotten.error().code), MessageBox::Ok, window());
    box->setObjectName(QStringLiteral("error"));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setDetailedText(forgotten.error().detail);
    box->open();
}

} // namespace ravlin
