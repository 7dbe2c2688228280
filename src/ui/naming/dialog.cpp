// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/naming/dialog.h"

#include "core/app/idiomas.h"
#include "core/app/settings.h"
#include "core/files/list/listcolumns.h"
#include "core/files/renaming/renamefromtags.h"
#include "core/naming/placeholders.h"
#include "core/tags/store/tagstore.h"
#include "ui/controls/making.h"
#include "ui/controls/plain/plainlabel.h"
#include "ui/naming/patternbox.h"
#include "ui/naming/placeholderbox.h"
#include "ui/naming/problemtext.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include <algorithm>
#include <tuple>

namespace ravlin {

namespace {

constexpr int LabelsInARow = 4;
constexpr int NameLetters = 50; ///< width of a usual folder name in average letters
constexpr int NameLines = 3;    ///< the name, and what is to be said about it

} // namespace

Dialog::Dialog(const PageContext &context, const QString &folder, const QString &firstFile, QWidget *parent)
    : QDialog(parent), m_context(context), m_folder(folder)
{
    setObjectName(QStringLiteral("Dialog"));
    setWindowModality(Qt::WindowModal);
    if (!firstFile.isEmpty()) {
        if (const Result<TagRecord> record = m_context.tagStore.readRecordLeniently(firstFile))
            m_record = *record;
    }
    createControls();
    arrange();
    applyCaptions();
    showRule(FolderRule::restored(m_context.settings));
    connectControls();
    showNewName();
    m_pattern->setFocus();
}

void Dialog::createControls()
{
    m_byArtistAlbum = made<QCheckBox>("Check1", this);
    m_byPattern = made<QCheckBox>("Check2", this);
    m_pattern = new PatternBox(QStringLiteral("avanzado"), PatternHistory::Folder, m_context.settings, this);
    m_placeholders = new PlaceholderBox(Caption::AdvancedVariables, folderPlaceholders(), LabelsInARow, this);
    m_newNameLabel = made<PlainLabel>("newNameLabel", this);
    m_newName = made<PlainLabel>("newName", this);
    m_taken = made<QWidget>("takenName", this);
    m_skip = made<QRadioButton>("takenSkip", m_taken);
    m_number = made<QRadioButton>("takenNumber", m_taken);
    m_skip->setChecked(true);
    m_rename = made<QPushButton>("OKButton", this);
    m_cancel = made<QPushButton>("CancelButton", this);
    m_rename->setDefault(true);
    m_cancel->setAutoDefault(false);
    m_newName->setWordWrap(true);
    m_newName->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_newName->setMinimumWidth(fontMetrics().averageCharWidth() * NameLetters);
    m_newName->setMinimumHeight(fontMetrics().lineSpacing() * NameLines);
    m_newName->setAlignment(Qt::AlignTop);
}

void Dialog::arrange()
{
    auto *rows = new QVBoxLayout(this);
    auto *advanced = new QHBoxLayout;
    advanced->addWidget(m_byPattern);
    advanced->addWidget(m_pattern, 1);
    auto *name = new QHBoxLayout;
    name->addWidget(m_newNameLabel, 0, Qt::AlignTop);
    name->addWidget(m_newName, 1);
    auto *taken = new QHBoxLayout(m_taken);
    taken->setContentsMargins({});
    taken->addWidget(m_skip);
    taken->addWidget(m_number);
    taken->addStretch();
    QSizePolicy keepsPlace = m_taken->sizePolicy();
    keepsPlace.setRetainSizeWhenHidden(true);
    m_taken->setSizePolicy(keepsPlace);
    auto *foot = new QHBoxLayout;
    foot->addStretch();
    foot->addWidget(m_rename);
    foot->addWidget(m_cancel);
    rows->addWidget(m_byArtistAlbum);
    rows->addLayout(advanced);
    rows->addWidget(m_placeholders);
    rows->addLayout(name);
    rows->addWidget(m_taken);
    rows->addStretch();
    rows->addLayout(foot);
}

void Dialog::connectControls()
{
    connect(m_byArtistAlbum, &QCheckBox::toggled, this, [this](bool on) {
        if (on)
            m_byPattern->setChecked(false);
        showNewName();
    });
    connect(m_byPattern, &QCheckBox::toggled, this, [this](bool on) {
        if (on)
            m_byArtistAlbum->setChecked(false);
        showNewName();
    });
    connect(m_pattern, &PatternBox::editTextChanged, this, &Dialog::showNewName);
    connect(m_placeholders, &PlaceholderBox::clicked, m_pattern, &PatternBox::append);
    connect(m_number, &QRadioButton::toggled, this, &Dialog::showNewName);
    connect(m_rename, &QPushButton::clicked, this, &Dialog::accept);
    connect(m_cancel, &QPushButton::clicked, this, &Dialog::reject);
}

void Dialog::applyCaptions()
{
    const Captions &captions = m_context.captions;
    setWindowTitle(captions.text(Caption::RenameFolder));
    m_byArtistAlbum->setText(
        QStringLiteral("%1 - %2").arg(captions.text(Caption::Artist), captions.text(Caption::Album)));
    m_byPattern->setText(captions.text(Caption::Advanced));
    m_pattern->setName(captions.text(Caption::Advanced));
    m_pattern->setToolTip(captions.text(Text::TipFolderPattern));
    for (QCheckBox *check : {m_byArtistAlbum, m_byPattern})
        check->setToolTip(captions.text(Text::TipFolderRule));
    m_placeholders->applyCaptions(captions);
    m_newNameLabel->setText(captions.text(Text::LabelNewName));
    m_taken->setAccessibleName(captions.text(Text::ClashTitle));
    m_skip->setText(captions.text(Text::ClashSkip));
    m_number->setText(captions.text(Text::ClashKeepBoth));
    m_rename->setText(captions.text(Caption::Rename));
    m_cancel->setText(captions.text(Caption::Cancel));
}

void Dialog::showRule(const FolderRule &rule)
{
    m_byArtistAlbum->setChecked(rule.artistAlbum);
    m_byPattern->setChecked(rule.pattern);
    m_pattern->setText(rule.patternText);
}

FolderRule Dialog::rule() const
{
    return {m_byArtistAlbum->isChecked(), m_byPattern->isChecked(), m_pattern->text()};
}

std::optional<RenameRow> Dialog::wanted() const
{
    return m_record ? folderRename(m_folder, *m_record, rule()) : std::nullopt;
}

/// For a name that is taken.
ClashAnswer Dialog::answer() const
{
    return m_number->isChecked() ? ClashAnswer::KeepBoth : ClashAnswer::Skip;
}

/// Why the folder does not get the wanted name; else empty.
QString Dialog::reasonOf(const RenameRow &row) const
{
    const Captions &captions = m_context.captions;
    if (row.problem)
        return problemText(captions, *row.problem);
    if (row.error)
        return captions.errorText(row.error->code);
    return row.isCollision ? captions.text(Text::ErrorAlreadyExists) : QString();
}

void Dialog::showNewName()
{
    const Captions &captions = m_context.captions;
    QString shown = captions.text(m_record ? Text::NoNewName : Text::NoFirstTag);
    bool isTaken = false;
    if (const std::optional<RenameRow> row = wanted()) {
        RenamingPlan plan(m_context.fileSystem, {*row});
        plan.answerAll(answer());
        const RenameRow &planned = plan.rows().front();
        isTaken = planned.isCollision;
        shown = shownName(newNameOf(planned));
        if (const QString reason = reasonOf(planned); !reason.isEmpty())
            shown += QStringLiteral("\n") + reason;
    }
    m_taken->setVisible(isTaken);
    m_newName->setText(shown);
    m_newName->setAccessibleName(m_newNameLabel->text());
    m_newName->setAccessibleDescription(shown);
    // A window does not grow by itself with a text that is wrapped.
    if (isVisible())
        resize(width(), std::max(height(), layout()->totalHeightForWidth(width())));
}

void Dialog::done(int result)
{
    rule().store(m_context.settings);
    if (result == Accepted && m_byPattern->isChecked())
        m_pattern->remember();
    // A failure to save matters little: the values hold for this run, and the program saves again at its end.
    std::ignore = m_context.settings.save();
    const std::optional<RenameRow> row = wanted();
    const bool keepsName = !m_taken->isHidden() && answer() == ClashAnswer::Skip;
    QDialog::done(result);
    if (result == Accepted && row && !keepsName)
        Q_EMIT renameRequested(*row, answer());
}

} // namespace ravlin
