// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/app/furtheroptions.h"

#include "core/app/idiomas.h"
#include "core/files/list/listcolumns.h"
#include "ui/app/historybox.h"
#include "ui/controls/making.h"
#include "ui/controls/plain/plainlabel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QVBoxLayout>

namespace ravlin {

namespace {

constexpr int ColumnsInARow = 4;

} // namespace

furtheroptions::furtheroptions(const Captions &captions, history::History &history, QWidget *parent)
    : QWidget(parent), m_captions(captions)
{
    setObjectName(QStringLiteral("furtheroptions"));
    createControls();
    m_history = new HistoryBox(captions, history, this);
    createLayout();
}

void furtheroptions::createControls()
{
    m_writing = made<QGroupBox>("writing", this);
    m_versionLabel = made<PlainLabel>("lversion", m_writing);
    m_version = made<QComboBox>("cversion", m_writing);
    m_version->addItem(QStringLiteral("ID3v2.3"), 3);
    m_version->addItem(QStringLiteral("ID3v2.4"), 4);
    m_keepTimes = made<QCheckBox>("chtimes", m_writing);
    m_list = made<QGroupBox>("list", this);
    m_clickLabel = made<PlainLabel>("lclick", m_list);
    m_click = made<QComboBox>("cclick", m_list);
    m_click->addItem(QString(), static_cast<int>(DoubleClick::Open));
    m_click->addItem(QString(), static_cast<int>(DoubleClick::Edit));
    m_click->setSizeAdjustPolicy(QComboBox::AdjustToContents); // also while this page was never shown
    m_columnsLabel = made<PlainLabel>("lcolumns", m_list);
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        m_columns[i] = new QCheckBox(m_list);
        m_columns[i]->setObjectName(QStringLiteral("chcolumn_%1").arg(i));
    }
    m_columns[0]->setEnabled(false); // a list of files shows their names
    m_versionLabel->setBuddy(m_version);
    m_clickLabel->setBuddy(m_click);
    guardAgainstWheel(m_version);
    guardAgainstWheel(m_click);
}

void furtheroptions::createLayout()
{
    auto *writingRows = new QFormLayout(m_writing);
    writingRows->addRow(m_versionLabel, m_version);
    writingRows->addRow(m_keepTimes);
    auto *listRows = new QFormLayout(m_list);
    listRows->addRow(m_clickLabel, m_click);
    listRows->addRow(m_columnsLabel);
    auto *boxes = new QGridLayout;
    for (int i = 0; i < static_cast<int>(m_columns.size()); ++i)
        boxes->addWidget(m_columns[static_cast<std::size_t>(i)], i / ColumnsInARow, i % ColumnsInARow);
    listRows->addRow(boxes);
    for (QFormLayout *rows : {writingRows, listRows})
        rows->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    auto *rows = new QVBoxLayout(this);
    rows->addWidget(m_writing);
    rows->addWidget(m_list);
    rows->addWidget(m_history);
    rows->addStretch();
}

void furtheroptions::show(const FurtherOptions &options)
{
    m_given = options;
    m_version->setCurrentIndex(m_version->findData(options.newTagVersion));
    m_keepTimes->setChecked(options.keepFileTimes);
    m_click->setCurrentIndex(m_click->findData(static_cast<int>(options.doubleClick)));
    const ColumnSet hidden = hiddenColumnsFromText(options.hiddenColumns);
    for (std::size_t i = 0; i < m_columns.size(); ++i)
        m_columns[i]->setChecked(!hidden[i]);
    m_history->show(options);
}

FurtherOptions furtheroptions::choices() const
{
    ColumnSet hidden;
    for (std::size_t i = 1; i < m_columns.size(); ++i)
        hidden[i] = !m_columns[i]->isChecked();
    FurtherOptions options = m_given; // what the page does not show stays
    options.newTagVersion = m_version->currentData().toInt();
    options.keepFileTimes = m_keepTimes->isChecked();
    options.doubleClick = static_cast<DoubleClick>(m_click->currentData().toInt());
    // Keep the wording of unchanged columns.
    options.hiddenColumns = hidden == hiddenColumnsFromText(m_given.hiddenColumns)
                                ? m_given.hiddenColumns
                                : textOfHiddenColumns(hidden, m_given.hiddenColumns);
    m_history->choose(options);
    return options;
}

void furtheroptions::applyCaptions()
{
    m_writing->setTitle(m_captions.text(Text::TitleWritingTags));
    m_versionLabel->setText(m_captions.text(Text::LabelNewTagVersion));
    m_version->setToolTip(m_captions.text(Text::TipNewTagVersion));
    m_keepTimes->setText(m_captions.text(Text::CheckKeepTimes));
    m_keepTimes->setToolTip(m_captions.text(Text::TipKeepTimes));
    m_list->setTitle(m_captions.text(Caption::FileList));
    m_clickLabel->setText(m_captions.text(Text::LabelDoubleClick));
    m_click->setItemText(0, m_captions.text(Text::ItemOpenFile));
    m_click->setItemText(1, m_captions.text(Text::ItemEditTag));
    m_columnsLabel->setText(m_captions.text(Text::LabelColumns));
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        m_columns[i]->setText(i < ColumnCaptions.size() ? m_captions.text(ColumnCaptions[i])
                                                        : QStringLiteral("id3v%1").arg(i - ColumnCaptions.size() + 1));
        m_columns[i]->setToolTip(m_captions.text(i == 0 ? Text::TipFileColumn : Text::TipColumn));
        m_columns[i]->setAccessibleDescription(m_captions.text(Text::LabelColumns));
    }
    m_history->applyCaptions();
    makeEquallyWide(QList<QWidget *>{m_versionLabel, m_clickLabel} + m_history->labels());
    m_version->setAccessibleName(m_versionLabel->text());
    m_click->setAccessibleName(m_clickLabel->text());
}

} // namespace ravlin
