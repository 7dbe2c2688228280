// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/naming/patterneditor.h"

#include "core/app/idiomas.h"
#include "core/app/settings.h"
#include "core/naming/patternhistory.h"
#include "ui/controls/icons.h"
#include "ui/controls/making.h"
#include "ui/controls/plain/plainlabel.h"

#include <QComboBox>
#include <QGridLayout>
#include <QKeyEvent>
#include <QListWidget>
#include <QPushButton>

namespace ravlin {

namespace {

struct PatternList
{
    QStringView name;
    Caption caption{}; ///< what the patterns are for
};

constexpr std::array<PatternList, 3> Lists{{{PatternHistory::Extraction, Caption::ExtractTab},
    {PatternHistory::Renaming, Caption::RenameFiles}, {PatternHistory::Folder, Caption::RenameFolder}}};
constexpr int PatternLetters = 40; ///< width of the list in average letters

} // namespace

PatternEditor::PatternEditor(Settings &settings, const Captions &captions, QWidget *parent)
    : QDialog(parent), m_settings(settings)
{
    setObjectName(QStringLiteral("patternEditor"));
    setWindowTitle(captions.text(Text::TitlePatterns));
    for (std::size_t i = 0; i < Lists.size(); ++i)
        m_lists[i] = PatternHistory::restored(Lists[i].name, settings).patterns();
    createControls(captions);
    arrange(captions);
    showList();
    m_patterns->setFocus();
}

void PatternEditor::createControls(const Captions &captions)
{
    m_choice = made<QComboBox>("patternChoice", this);
    for (const PatternList &list : Lists)
        m_choice->addItem(captions.text(list.caption));
    m_patterns = made<QListWidget>("patternList", this);
    m_patterns->setAccessibleName(captions.text(Text::TitlePatterns));
    m_patterns->setMinimumWidth(fontMetrics().averageCharWidth() * PatternLetters);
    const auto button = [&](const char *name, const QString &text, const QString &icon = {}) {
        auto *pushButton = made<QPushButton>(name, this);
        pushButton->setText(text);
        pushButton->setAutoDefault(false);
        if (!icon.isEmpty())
            pushButton->setIcon(themedIcon(icon, palette()));
        return pushButton;
    };
    m_up = button("patternUp", captions.text(Text::PatternUp), QStringLiteral("arrow-up"));
    m_down = button("patternDown", captions.text(Text::PatternDown), QStringLiteral("arrow-down"));
    m_delete = button("patternDelete", captions.text(Text::PatternDelete), QStringLiteral("trash-2"));
    m_save = button("patternSave", captions.text(Caption::Save));
    m_save->setDefault(true);
    m_cancel = button("patternCancel", captions.text(Caption::Cancel));

    m_patterns->installEventFilter(this);
    connect(m_choice, &QComboBox::currentIndexChanged, this, &PatternEditor::showList);
    connect(m_patterns, &QListWidget::currentRowChanged, this, &PatternEditor::updateButtons);
    connect(m_up, &QPushButton::clicked, this, [this] { moveCurrent(-1); });
    connect(m_down, &QPushButton::clicked, this, [this] { moveCurrent(1); });
    connect(m_delete, &QPushButton::clicked, this, &PatternEditor::deleteCurrent);
    connect(m_save, &QPushButton::clicked, this, &QDialog::accept);
    connect(m_cancel, &QPushButton::clicked, this, &QDialog::reject);
}

void PatternEditor::arrange(const Captions &captions)
{
    auto *label = new PlainLabel(captions.text(Text::LabelPatternsOf), this);
    label->setBuddy(m_choice);
    auto *changes = new QVBoxLayout;
    for (QPushButton *button : {m_up, m_down, m_delete})
        changes->addWidget(button);
    changes->addStretch();
    auto *ends = new QHBoxLayout;
    ends->addStretch();
    ends->addWidget(m_save);
    ends->addWidget(m_cancel);
    auto *grid = new QGridLayout(this);
    grid->addWidget(label, 0, 0);
    grid->addWidget(m_choice, 0, 1, 1, 2);
    grid->addWidget(m_patterns, 1, 0, 1, 2);
    grid->addLayout(changes, 1, 2);
    grid->addLayout(ends, 2, 0, 1, 3);
    grid->setColumnStretch(1, 1);
}

void PatternEditor::showList()
{
    m_shown = m_choice->currentIndex();
    m_patterns->clear();
    m_patterns->addItems(m_lists[static_cast<std::size_t>(m_shown)]);
    m_patterns->setCurrentRow(0);
    updateButtons();
}

void PatternEditor::keepList()
{
    QStringList &list = m_lists[static_cast<std::size_t>(m_shown)];
    list.clear();
    for (int row = 0; row < m_patterns->count(); ++row)
        list << m_patterns->item(row)->text();
}

void PatternEditor::moveCurrent(int rows)
{
    const int row = m_patterns->currentRow();
    const int target = row + rows;
    if (row < 0 || target < 0 || target >= m_patterns->count())
        return;
    m_patterns->insertItem(target, m_patterns->takeItem(row));
    m_patterns->setCurrentRow(target);
    keepList();
    updateButtons();
}

void PatternEditor::deleteCurrent()
{
    delete m_patterns->takeItem(m_patterns->currentRow());
    keepList();
    updateButtons();
}

/// Moves the focus off a button before disabling it: it would take the keyboard with it.
void PatternEditor::updateButtons()
{
    const int row = m_patterns->currentRow();
    if ((m_up->hasFocus() && row <= 0) || (m_down->hasFocus() && row + 1 >= m_patterns->count()) ||
        (m_delete->hasFocus() && row < 0))
        m_patterns->setFocus();
    m_up->setEnabled(row > 0);
    m_down->setEnabled(row >= 0 && row + 1 < m_patterns->count());
    m_delete->setEnabled(row >= 0);
}

bool PatternEditor::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_patterns && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent *>(event)->matches(QKeySequence::Delete)) {
        deleteCurrent();
        return true;
    }
    return QDialog::eventFilter(watched, event);
}

void PatternEditor::accept()
{
    for (std::size_t i = 0; i < Lists.size(); ++i) {
        PatternHistory history(Lists[i].name);
        history.setPatterns(m_lists[i]);
        history.store(m_settings);
    }
    QDialog::accept();
}

} // namespace ravlin
