// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/naming/extractpage.h"

#include "core/app/idiomas.h"
#include "core/app/pageowner.h"
#include "core/naming/extraction.h"
#include "core/naming/placeholders.h"
#include "core/tags/store/tagstore.h"
#include "ui/controls/icons.h"
#include "ui/controls/making.h"
#include "ui/controls/outcomebox.h"
#include "ui/controls/outlookhint.h"
#include "ui/controls/pagefoot.h"
#include "ui/controls/plain/plainlabel.h"
#include "ui/naming/patternbox.h"
#include "ui/naming/placeholderbox.h"
#include "ui/naming/preview.h"

#include <QHBoxLayout>
#include <QPushButton>

#include <algorithm>

namespace ravlin {

namespace {

constexpr int LabelsInARow = 4;

} // namespace

ExtractPage::ExtractPage(const PageContext &context, QWidget *parent)
    : PageArea(parent), m_context(context), m_patternLabel(new PlainLabel(this)),
      m_pattern(new PatternBox(QStringLiteral("tpatron"), PatternHistory::Extraction, context.settings, this)),
      m_placeholders(new PlaceholderBox(Caption::Variables, extractionPlaceholders(), LabelsInARow, this)),
      m_hint(new PlainLabel(this)), m_preview(new QPushButton(this)), m_extract(new QPushButton(this))
{
    setObjectName(QStringLiteral("extractPage"));
    m_hint->setObjectName(QStringLiteral("extractHint"));
    m_preview->setObjectName(QStringLiteral("extractPreview"));
    m_extract->setObjectName(QStringLiteral("extrae"));
    m_patternLabel->setBuddy(m_pattern);
    setContent(createContent(), new PageFoot(nullptr, m_hint, {m_preview, m_extract}, this));
    QList<QWidget *> controls = {m_pattern};
    tabThrough(controls << m_placeholders->controls() << m_preview << m_extract);
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
    mask->addWidget(m_pattern, 1);
    rows->addLayout(mask);
    rows->addWidget(m_placeholders);
    rows->addStretch();
    return content;
}

void ExtractPage::connectControls()
{
    connect(m_placeholders, &PlaceholderBox::clicked, m_pattern, &PatternBox::append);
    connect(m_extract, &QPushButton::clicked, this, &ExtractPage::run);
    connect(m_preview, &QPushButton::clicked, this, &ExtractPage::showPreview);
    m_outlook = new OutlookHint(
        m_context,
        [this] {
            return OutlookHint::Save{m_context.owner.selectedPaths(), preparing()};
        },
        this);
    connect(m_pattern, &QComboBox::editTextChanged, m_outlook, &OutlookHint::refresh);
    connect(m_outlook, &OutlookHint::changed, this, &ExtractPage::showHint);
}

void ExtractPage::selectionChanged()
{
    showHint();
    m_outlook->refresh();
}

void ExtractPage::showHint()
{
    const qsizetype count = m_context.owner.selectedCount();
    const QString hint = selectionHint(m_context.captions, count, Text::HintManyFiles);
    m_outlook->showIn(*m_hint, count == 0 ? hint : m_outlook->behind(hint));
}

/// What a save would write into a file, as the page is now.
OutlookReader::Prepare ExtractPage::preparing() const
{
    return [pattern = m_pattern->text()](const QString &path, const TagStore &store) -> Result<PreparedSave> {
        const Result<Extraction> extraction = prepareExtraction(path, pattern, store);
        if (!extraction || !extraction->isMatched)
            return tl::unexpected(extraction ? Error{ErrorCode::InvalidArgument, path, {}} : extraction.error());
        return PreparedSave{extraction->present, extraction->record};
    };
}

void ExtractPage::applyCaptions()
{
    const Captions &captions = m_context.captions;
    m_patternLabel->setText(captions.text(Caption::FileNameMask));
    m_pattern->setName(captions.text(Caption::FileNameMask));
    m_pattern->setToolTip(captions.text(Text::TipMask));
    m_placeholders->applyCaptions(captions);
    m_preview->setText(captions.text(Caption::Preview));
    m_preview->setToolTip(captions.text(Text::TipPreview));
    m_extract->setText(captions.text(Caption::SaveTags));
    m_extract->setToolTip(captions.text(Text::TipExtract));
    makeRoomy(m_preview);
    makeRoomy(m_extract, captions.text(Caption::Rename));
    for (QPushButton *button : {m_preview, m_extract})
        button->setAccessibleDescription(button->toolTip());
    selectionChanged();
    contentChanged();
}

void ExtractPage::applyIcons()
{
    m_preview->setIcon(themedIcon(QStringLiteral("eye"), palette()));
    m_extract->setIcon(themedIcon(QStringLiteral("save"), palette()));
}

QAbstractButton *ExtractPage::saveButton() const
{
    return m_extract;
}

void ExtractPage::run()
{
    const QStringList paths = m_context.owner.selectedPaths();
    const QString pattern = m_pattern->text();
    m_pattern->remember();
    ExtractionOutcome outcome;
    m_outlook->stop();
    const bool ran =
        m_context.owner.runRecorded(history::Kind::Extract, paths.size(), [&](const ProgressReport &progress) {
            m_outlook->waitForFile();
            outcome = runExtraction(paths, pattern, m_context.tagStore, m_context.state, progress);
            return failuresOf(paths, outcome.rows);
        });
    if (!ran)
        return;
    if (outcome.rows.hasError(ErrorCode::LowSpace))
        m_context.owner.showError(m_context.captions.text(Caption::LowDiskSpace));
    m_context.owner.refreshList();
    Q_EMIT finished();
    const auto written = std::ranges::count(outcome.isWritten, true);
    m_outlook->stop(); // the outcome stays until something changes
    m_hint->setText(m_context.captions.text(Text::HintExtracted).arg(written).arg(paths.size() - written));
    tellRefused(m_context.captions, paths, outcome.rows, window());
}

void ExtractPage::showPreview()
{
    m_pattern->remember();
    m_context.state.previewMode = PreviewMode::Extrae;
    preview::open(m_context, {m_context.owner.selectedPaths(), m_pattern->text(), {}}, window());
}

} // namespace ravlin
