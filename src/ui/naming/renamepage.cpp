// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/naming/renamepage.h"

#include "core/app/idiomas.h"
#include "core/app/pageowner.h"
#include "core/files/renaming/renamefromtags.h"
#include "core/history/history.h"
#include "core/naming/placeholders.h"
#include "core/naming/sessionchoices.h"
#include "core/platform/path.h"
#include "core/tags/store/tagstore.h"
#include "ui/controls/clashdialog.h"
#include "ui/controls/conversionbox.h"
#include "ui/controls/icons.h"
#include "ui/controls/making.h"
#include "ui/controls/pagefoot.h"
#include "ui/controls/plain/plainlabel.h"
#include "ui/naming/patternbox.h"
#include "ui/naming/placeholderbox.h"
#include "ui/naming/preview.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QHash>
#include <QPushButton>
#include <QRadioButton>

#include <algorithm>
#include <optional>

namespace ravlin {

namespace {

constexpr int LabelsInARow = 4;

/// Where the files are after the run.
QStringList placesOf(const QStringList &paths, const RenamingOutcome &outcome)
{
    QHash<QString, QString> places;
    for (const RenameRow &row : outcome.rows)
        places.insert(row.from, row.path);
    QStringList now;
    for (const QString &path : paths)
        now << places.value(path, path);
    return now;
}

/// Rows that were to get another name and did not, for a reason of the system or of the rules for names.
WorkFailures failuresOf(const RenamingOutcome &outcome)
{
    WorkFailures failures;
    for (const RenameRow &row : outcome.rows) {
        if (row.error)
            failures.failed.emplace_back(row.from, *row.error);
        else if (row.problem && row.state == RenameState::Refused)
            failures.failed.emplace_back(row.from, Error{ErrorCode::InvalidArgument, row.from, {}});
    }
    return failures;
}

} // namespace

RenamePage::RenamePage(const PageContext &context, QWidget *parent) : PageArea(parent), m_context(context)
{
    setObjectName(QStringLiteral("renamePage"));
    createControls();
    setContent(createContent(), new PageFoot(nullptr, m_hint, {m_preview, m_rename}, this));
    setTabOrder();
    connectControls();
    applyIcons();
    applyCaptions();
    showChoices({});
}

void RenamePage::createControls()
{
    m_byArtistTitle = made<QRadioButton>("op1", this);
    m_byTrackTitle = made<QRadioButton>("op2", this);
    m_byPattern = made<QRadioButton>("op3", this);
    m_pattern = new PatternBox(QStringLiteral("tavanzado"), PatternHistory::Renaming, m_context.settings, this);
    m_placeholders = new PlaceholderBox(Caption::AdvancedVariables, renamePlaceholders(), LabelsInARow, this);
    m_caseConversion = new ConversionBox(ConversionPairs[RenameCasePair], this);
    m_replaceConversion = new ConversionBox(ConversionPairs[RenameReplacePair], this);
    m_hint = made<PlainLabel>("renameHint", this);
    m_preview = made<QPushButton>("renamePreview", this);
    m_rename = made<QPushButton>("Command2", this);
}

QWidget *RenamePage::createContent()
{
    auto *content = new QWidget(this);
    auto *rows = new QVBoxLayout(content);

    auto *upper = new QGridLayout;
    upper->addWidget(m_byArtistTitle, 0, 0);
    upper->addWidget(m_byTrackTitle, 0, 1);
    upper->addWidget(m_byPattern, 1, 0);
    upper->addWidget(m_pattern, 1, 1);
    upper->addWidget(m_caseConversion, 0, 2);
    upper->addWidget(m_replaceConversion, 1, 2);
    upper->setColumnStretch(1, 1);
    for (ConversionBox *pair : {m_caseConversion, m_replaceConversion})
        pair->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed); // show the whole choice
    upper->setHorizontalSpacing(fontMetrics().averageCharWidth() * 2);

    rows->addLayout(upper);
    rows->addWidget(m_placeholders);
    rows->addStretch();
    return content;
}

void RenamePage::setTabOrder()
{
    QList<QWidget *> controls = {m_byArtistTitle, m_byTrackTitle, m_byPattern, m_pattern};
    controls << m_caseConversion->controls() << m_replaceConversion->controls();
    tabThrough(controls << m_placeholders->controls() << m_preview << m_rename);
}

void RenamePage::connectControls()
{
    connect(m_byPattern, &QRadioButton::toggled, this, &RenamePage::updateEnabling);
    connect(m_placeholders, &PlaceholderBox::clicked, m_pattern, &PatternBox::append);
    connect(m_rename, &QPushButton::clicked, this, &RenamePage::run);
    connect(m_preview, &QPushButton::clicked, this, &RenamePage::showPreview);
}

/// The pattern only counts under its own rule.
void RenamePage::updateEnabling()
{
    m_pattern->setEnabled(m_byPattern->isChecked());
    m_placeholders->setEnabled(m_byPattern->isChecked());
}

int RenamePage::chosenRule() const
{
    return m_byArtistTitle->isChecked() ? 1 : m_byTrackTitle->isChecked() ? 2 : m_byPattern->isChecked() ? 3 : 0;
}

void RenamePage::showChoices(const SessionChoices &choices)
{
    int number = 0;
    for (QRadioButton *option : {m_byArtistTitle, m_byTrackTitle, m_byPattern}) {
        // A button of an exclusive group can't be unchecked alone.
        option->setAutoExclusive(false);
        option->setChecked(++number == choices.renameMode);
    }
    for (QRadioButton *option : {m_byArtistTitle, m_byTrackTitle, m_byPattern})
        option->setAutoExclusive(true);
    if (!choices.renamePattern.isEmpty())
        m_pattern->setText(choices.renamePattern);
    m_caseConversion->setChoice(choices.conversions[RenameCasePair]);
    m_replaceConversion->setChoice(choices.conversions[RenameReplacePair]);
    updateEnabling();
}

void RenamePage::storeChoices(SessionChoices &choices) const
{
    choices.renameMode = chosenRule();
    choices.renamePattern = m_pattern->text();
    choices.conversions[RenameCasePair] = m_caseConversion->choice();
    choices.conversions[RenameReplacePair] = m_replaceConversion->choice();
}

void RenamePage::selectionChanged()
{
    m_hint->setText(selectionHint(m_context.captions, m_context.owner.selectedCount(), Text::HintRenameFiles));
}

void RenamePage::applyCaptions()
{
    const Captions &captions = m_context.captions;
    const QString title = captions.text(Caption::Title);
    m_byArtistTitle->setText(QStringLiteral("%1 - %2").arg(captions.text(Caption::Artist), title));
    m_byTrackTitle->setText(QStringLiteral("%1 - %2").arg(captions.text(Caption::Track), title));
    m_byPattern->setText(captions.text(Caption::Advanced));
    m_pattern->setName(captions.text(Caption::Advanced));
    m_placeholders->applyCaptions(captions);
    m_caseConversion->applyCaptions(captions);
    m_replaceConversion->applyCaptions(captions);
    m_preview->setText(captions.text(Caption::Preview));
    m_rename->setText(captions.text(Caption::Rename));
    makeRoomy(m_preview);
    makeRoomy(m_rename, captions.text(Caption::SaveTags));
    makeEquallyWide({m_caseConversion->checkBox(), m_replaceConversion->checkBox()});
    makeEquallyWide({m_caseConversion->list(), m_replaceConversion->list()});
    applyToolTips();
    selectionChanged();
    contentChanged();
}

void RenamePage::applyToolTips()
{
    const Captions &captions = m_context.captions;
    for (QRadioButton *option : {m_byArtistTitle, m_byTrackTitle, m_byPattern})
        option->setToolTip(captions.text(Text::TipNamingRule));
    m_pattern->setToolTip(captions.text(Text::TipAdvancedPattern));
    for (ConversionBox *pair : {m_caseConversion, m_replaceConversion})
        pair->setPairToolTip(captions.text(Text::TipConvertNames));
    m_preview->setToolTip(captions.text(Text::TipPreview));
    m_rename->setToolTip(captions.text(Text::TipRename));
    for (QPushButton *button : {m_preview, m_rename})
        button->setAccessibleDescription(button->toolTip());
}

void RenamePage::applyIcons()
{
    m_preview->setIcon(themedIcon(QStringLiteral("eye"), palette()));
    m_rename->setIcon(themedIcon(QStringLiteral("file-pen"), palette()));
}

NamingRule RenamePage::rule() const
{
    return {chosenRule(), m_pattern->text(), m_caseConversion->choice(), m_replaceConversion->choice()};
}

/// Asks about every name that is taken. Nothing has been renamed yet. Returns false if the user gives up the run.
bool RenamePage::answerClashes(RenamingPlan &plan)
{
    while (const std::optional<std::size_t> row = plan.nextClash()) {
        const RenameRow &clash = plan.rows()[*row];
        ClashDialog dialog(m_context.captions, platform::nameOf(clash.wanted), platform::nameOf(clash.from), window(),
            clash.isGivenToAnother ? Text::ClashQuestionTwo : Text::ClashQuestion);
        const ClashDecision decision = dialog.decide();
        if (dialog.result() == QDialog::Rejected)
            return false;
        if (decision.forAll)
            plan.answerAll(decision.answer);
        else
            plan.answer(*row, decision.answer);
    }
    return true;
}

void RenamePage::run()
{
    const QStringList paths = m_context.owner.selectedPaths();
    const QString current = m_context.owner.currentPath();
    const NamingRule chosen = rule();
    rememberPattern();
    std::optional<FileRenaming> renaming;
    const bool planned = m_context.owner.runWithProgress(paths.size(), [&](const ProgressReport &progress) {
        renaming = planFileRenaming(paths, chosen, m_context.tagStore, m_context.fileSystem, progress);
    });
    if (!planned || !renaming)
        return;
    if (!answerClashes(renaming->plan)) {
        m_hint->setText(m_context.captions.text(Text::HintGivenUp));
        return;
    }
    RenamingOutcome outcome;
    const bool ran =
        m_context.owner.runRecorded(history::Kind::Rename, paths.size(), [&](const ProgressReport &progress) {
            outcome = runRenaming(m_context.fileSystem, renaming->plan, {progress}, m_context.history);
            return failuresOf(outcome);
        });
    if (!ran)
        return;
    m_context.owner.refreshListAt(placesOf({current}, outcome).front(), placesOf(paths, outcome));
    Q_EMIT finished();
    const std::size_t renamed = outcome.count(RenameState::Rename);
    m_hint->setText(m_context.captions.text(Text::HintRenamed).arg(renamed).arg(outcome.rows.size() - renamed));
}

void RenamePage::showPreview()
{
    rememberPattern();
    m_context.state.previewMode = PreviewMode::Rename;
    preview::open(m_context, {m_context.owner.selectedPaths(), {}, rule()}, window());
}

void RenamePage::rememberPattern()
{
    if (m_byPattern->isChecked())
        m_pattern->remember();
}

} // namespace ravlin
