// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/tags/multifilepage.h"

#include "core/app/idiomas.h"
#include "core/app/pageowner.h"
#include "core/app/selectionhint.h"
#include "core/naming/multiedit.h"
#include "core/naming/sessionchoices.h"
#include "core/tags/store/tageditor.h"
#include "core/tags/store/tagstore.h"
#include "ui/controls/conversionbox.h"
#include "ui/controls/icons.h"
#include "ui/controls/making.h"
#include "ui/controls/wheelguard.h"
#include "ui/tags/digitsedit.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>
#include <limits>

namespace ravlin {

MultiFilePage::MultiFilePage(const MultiFilePageContext &context, QWidget *parent)
    : PageArea(parent), m_context(context)
{
    setObjectName(QStringLiteral("multiFilePage"));
    createControls();
    setContent(createContent());
    setTabOrder();
    connectControls();
    applyIcons();
    applyCaptions();
    updateEnabling();
}

void MultiFilePage::createControls()
{
    Tmartista = made<QLineEdit>("Tmartista", this);
    tmalbum = made<QLineEdit>("tmalbum", this);
    tma_o = made<DigitsEdit>("tma_o", this);
    cmestilo = made<QComboBox>("cmestilo", this);
    tmcomentarios = made<QLineEdit>("tmcomentarios", this);
    tmpista = made<DigitsEdit>("tmpista", this);
    chmartista = made<QCheckBox>("chmartista", this);
    chmalbum = made<QCheckBox>("chmalbum", this);
    chma_o = made<QCheckBox>("chma_o", this);
    chmestilo = made<QCheckBox>("chmestilo", this);
    chmcomentarios = made<QCheckBox>("chmcomentarios", this);
    chmpista = made<QCheckBox>("chmpista", this);
    m_caseConversion = new ConversionBox(ConversionPairs[MultiCasePair], this);
    m_replaceConversion = new ConversionBox(ConversionPairs[MultiReplacePair], this);
    m_hint = made<QLabel>("multiHint", this);
    multiple = made<QPushButton>("multiple", this);

    // A comment may be longer than a text box takes by itself, and would be written cut.
    for (QLineEdit *edit : {Tmartista, tmalbum, tmcomentarios})
        edit->setMaxLength(std::numeric_limits<int>::max());
    cmestilo->addItems(genreListEntries());
    guardAgainstWheel(cmestilo);
    m_hint->setAlignment(Qt::AlignRight | Qt::AlignVCenter);

    m_fields = {{{Caption::Artist, chmartista, Tmartista}, {Caption::Year, chma_o, tma_o},
        {Caption::Album, chmalbum, tmalbum}, {Caption::Genre, chmestilo, cmestilo},
        {Caption::Comment, chmcomentarios, tmcomentarios}, {Caption::AutoTrack, chmpista, tmpista}}};
}

QWidget *MultiFilePage::createContent()
{
    auto *content = new QWidget(this);
    auto *rows = new QVBoxLayout(content);

    auto *fields = new QGridLayout;
    for (int i = 0; i < static_cast<int>(m_fields.size()); ++i) {
        const Field &field = m_fields[static_cast<std::size_t>(i)];
        fields->addWidget(field.check, i / 2, i % 2 * 3);
        fields->addWidget(field.box, i / 2, i % 2 * 3 + 1);
    }
    fields->setColumnStretch(1, 1);
    fields->setColumnMinimumWidth(2, fontMetrics().averageCharWidth());
    for (DigitsEdit *edit : {tma_o, tmpista})
        edit->setWidthForDigits(4);

    auto *conversions = new QHBoxLayout;
    conversions->addWidget(m_caseConversion);
    conversions->addSpacing(fontMetrics().averageCharWidth() * 2);
    conversions->addWidget(m_replaceConversion);
    conversions->addStretch();

    auto *foot = new QHBoxLayout;
    foot->addWidget(m_hint, 1);
    foot->addWidget(multiple);

    rows->addLayout(fields);
    rows->addLayout(conversions);
    rows->addLayout(foot);
    rows->addStretch();
    return content;
}

void MultiFilePage::setTabOrder()
{
    QList<QWidget *> controls;
    for (const Field &field : m_fields)
        controls << field.check << field.box;
    tabThrough(controls << m_caseConversion->controls() << m_replaceConversion->controls() << multiple);
}

void MultiFilePage::connectControls()
{
    for (const Field &field : m_fields)
        connect(field.check, &QCheckBox::toggled, this, &MultiFilePage::updateEnabling);
    for (const ConversionBox *pair : {m_caseConversion, m_replaceConversion})
        connect(pair->checkBox(), &QCheckBox::toggled, this, &MultiFilePage::updateEnabling);
    connect(chmpista, &QCheckBox::clicked, this, [this](bool checked) {
        if (checked)
            tmpista->setFocus(Qt::TabFocusReason);
    });
    connect(multiple, &QPushButton::clicked, this, &MultiFilePage::run);
}

void MultiFilePage::updateEnabling()
{
    bool any = m_caseConversion->choice().on || m_replaceConversion->choice().on;
    for (const Field &field : m_fields) {
        field.box->setEnabled(field.check->isChecked());
        any = any || field.check->isChecked();
    }
    multiple->setEnabled(any);
    selectionChanged();
}

void MultiFilePage::showChoices(const SessionChoices &choices)
{
    m_caseConversion->setChoice(choices.conversions[MultiCasePair]);
    m_replaceConversion->setChoice(choices.conversions[MultiReplacePair]);
}

void MultiFilePage::storeChoices(SessionChoices &choices) const
{
    choices.conversions[MultiCasePair] = m_caseConversion->choice();
    choices.conversions[MultiReplacePair] = m_replaceConversion->choice();
}

void MultiFilePage::selectionChanged()
{
    const Captions &captions = m_context.captions;
    m_hint->setText(multiple->isEnabled()
                        ? selectionHint(captions, m_context.owner.selectedCount(), Text::HintManyFiles)
                        : captions.text(Text::HintNothingChosen));
}

void MultiFilePage::applyCaptions()
{
    const Captions &captions = m_context.captions;
    for (const Field &field : m_fields) {
        field.check->setText(captions.text(field.caption));
        field.box->setAccessibleName(captions.text(field.caption));
    }
    m_caseConversion->applyCaptions(captions);
    m_replaceConversion->applyCaptions(captions);
    multiple->setText(captions.text(Caption::SaveTags));
    makeRoomy(multiple);
    applyToolTips();
    selectionChanged();
    contentChanged();
}

void MultiFilePage::applyToolTips()
{
    const Captions &captions = m_context.captions;
    for (const Field &field : m_fields)
        field.check->setToolTip(captions.text(Text::TipApplyField));
    tma_o->setToolTip(captions.text(Text::TipYear));
    chmpista->setToolTip(captions.text(Text::TipAutoTrack));
    tmpista->setToolTip(captions.text(Text::TipFirstTrack));
    for (ConversionBox *pair : {m_caseConversion, m_replaceConversion})
        pair->setPairToolTip(captions.text(Text::TipConvertEach));
    multiple->setToolTip(captions.text(Text::TipApplyToAll));
    multiple->setAccessibleDescription(multiple->toolTip());
}

void MultiFilePage::applyIcons()
{
    multiple->setIcon(themedIcon(QStringLiteral("save"), palette()));
}

MultiEditPage MultiFilePage::page() const
{
    MultiEditPage page;
    page.boxes.Artist = Tmartista->text();
    page.boxes.Album = tmalbum->text();
    page.boxes.Year = tma_o->text();
    page.boxes.Genre = cmestilo->currentText();
    page.boxes.Comment = tmcomentarios->text();
    page.boxes.Track = tmpista->text();
    page.setsArtist = chmartista->isChecked();
    page.setsAlbum = chmalbum->isChecked();
    page.setsYear = chma_o->isChecked();
    page.setsGenre = chmestilo->isChecked();
    page.setsComment = chmcomentarios->isChecked();
    page.setsTrack = chmpista->isChecked();
    page.letterCase = m_caseConversion->choice();
    page.replacement = m_replaceConversion->choice();
    return page;
}

/// What the conversions made of the boxes' texts.
void MultiFilePage::showConverted(const TagRecord &boxes)
{
    Tmartista->setText(boxes.Artist);
    tmalbum->setText(boxes.Album);
    tmcomentarios->setText(boxes.Comment);
}

void MultiFilePage::run()
{
    const QStringList paths = m_context.owner.selectedPaths();
    MultiEdit edit(page());
    BatchOutcome outcome;
    const bool ran = m_context.owner.runWithProgress(paths.size(), [&](const ProgressReport &progress) {
        outcome = runMultiEdit(paths, edit, m_context.tagStore, m_context.state, progress);
    });
    if (!ran)
        return;
    showConverted(edit.page().boxes);
    if (outcome.hasError(ErrorCode::LowSpace))
        m_context.owner.showError(m_context.captions.text(Caption::LowDiskSpace));
    m_context.owner.refreshList();
    Q_EMIT finished();
}

} // namespace ravlin
