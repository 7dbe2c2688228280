// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/naming/extractpage.h"

#include "core/app/idiomas.h"
#include "core/app/pageowner.h"
#include "core/app/selectionhint.h"
#include "core/naming/extraction.h"
#include "core/naming/placeholders.h"
#include "core/tags/store/tagstore.h"
#include "ui/controls/icons.h"
#include "ui/controls/making.h"
#include "ui/naming/patternbox.h"
#include "ui/naming/placeholderbox.h"
#include "ui/naming/placeholderlabel.h"
#include "ui/naming/preview.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace ravlin {

namespace {

constexpr int LabelsInARow = 4;

} // namespace

ExtractPage::ExtractPage(const NamingContext &context, QWidget *parent)
    : PageArea(parent), m_context(context), m_patternLabel(new QLabel(this)),
      tpatron(new PatternBox(QStringLiteral("tpatron"), PatternHistory::Extraction, context.settings, this)),
      m_placeholders(new PlaceholderBox(Caption::Variables, extractionPlaceholders(), LabelsInARow, this)),
      m_hint(new QLabel(this)), m_preview(new QPushButton(this)), extrae(new QPushButton(this))
{
    setObjectName(QStringLiteral("extractPage"));
    m_hint->setObjectName(QStringLiteral("extractHint"));
    m_preview->setObjectName(QStringLiteral("extractPreview"));
    extrae->setObjectName(QStringLiteral("extrae"));
    m_patternLabel->setBuddy(tpatron);
    m_hint->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    setContent(createContent());
    connectControls();
    applyIcons();
    applyCaptions();
}

QWidget *ExtractPage::createContent()
{
    auto *content = new QWidget(this);
    auto *rows = new QVBoxLayout(content);
    auto *mask = new QHBoxLayout;
    mask->addWidget(m_patternLabel);
    mask->addWidget(tpatron, 1);
    auto *foot = new QHBoxLayout;
    foot->addWidget(m_hint, 1);
    foot->addWidget(m_preview);
    foot->addWidget(extrae);
    rows->addLayout(mask);
    rows->addWidget(m_placeholders);
    rows->addLayout(foot);
    rows->addStretch();

    QList<QWidget *> controls = {tpatron};
    for (PlaceholderLabel *label : m_placeholders->labels())
        controls << label;
    tabThrough(controls << m_preview << extrae);
    return content;
}

void ExtractPage::connectControls()
{
    connect(m_placeholders, &PlaceholderBox::clicked, tpatron, &PatternBox::append);
    connect(extrae, &QPushButton::clicked, this, &ExtractPage::run);
    connect(m_preview, &QPushButton::clicked, this, &ExtractPage::showPreview);
}

void ExtractPage::selectionChanged()
{
    m_hint->setText(selectionHint(m_context.captions, m_context.owner.selectedCount(), Text::HintManyFiles));
}

void ExtractPage::applyCaptions()
{
    const Captions &captions = m_context.captions;
    m_patternLabel->setText(captions.text(Caption::FileNameMask));
    tpatron->setName(captions.text(Caption::FileNameMask));
    tpatron->setToolTip(captions.text(Text::TipMask));
    m_placeholders->applyCaptions(captions);
    m_preview->setText(captions.text(Caption::Preview));
    m_preview->setToolTip(captions.text(Text::TipPreview));
    extrae->setText(captions.text(Caption::SaveTags));
    extrae->setToolTip(captions.text(Text::TipExtract));
    for (QPushButton *button : {m_preview, extrae}) {
        button->setAccessibleDescription(button->toolTip());
        makeRoomy(button);
    }
    selectionChanged();
    contentChanged();
}

void ExtractPage::applyIcons()
{
    m_preview->setIcon(themedIcon(QStringLiteral("eye"), palette()));
    extrae->setIcon(themedIcon(QStringLiteral("save"), palette()));
}

void ExtractPage::run()
{
    const QStringList paths = m_context.owner.selectedPaths();
    const QString pattern = tpatron->text();
    tpatron->remember();
    ExtractionOutcome outcome;
    const bool ran = m_context.owner.runWithProgress(paths.size(), [&](const ProgressReport &progress) {
        outcome = runExtraction(paths, pattern, m_context.tagStore, m_context.state, progress);
    });
    if (!ran)
        return;
    if (outcome.rows.hasError(ErrorCode::LowSpace))
        m_context.owner.showError(m_context.captions.text(Caption::LowDiskSpace));
    m_context.owner.refreshList();
    Q_EMIT finished();
}

void ExtractPage::showPreview()
{
    tpatron->remember();
    m_context.state.previewMode = PreviewMode::Extrae;
    preview::open(m_context, {m_context.owner.selectedPaths(), tpatron->text(), {}}, window());
}

} // namespace ravlin
