// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/tags/multifilepage.h"

#include "core/app/idiomas.h"
#include "core/app/pageowner.h"
#include "core/naming/lostfields.h"
#include "core/naming/multiedit.h"
#include "core/naming/sessionchoices.h"
#include "core/tags/store/tageditor.h"
#include "core/tags/store/tagstore.h"
#include "ui/controls/conversionbox.h"
#include "ui/controls/icons.h"
#include "ui/controls/making.h"
#include "ui/controls/outcomebox.h"
#include "ui/controls/outlookhint.h"
#include "ui/controls/pagefoot.h"
#include "ui/controls/plain/plainlabel.h"
#include "ui/controls/refusedmark.h"
#include "ui/tags/digitsedit.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>
#include <limits>
#include <memory>

namespace ravlin {

MultiFilePage::MultiFilePage(const PageContext &context, QWidget *parent) : PageArea(parent), m_context(context)
{
    setObjectName(QStringLiteral("multiFilePage"));
    createControls();
    setContent(createContent(), new PageFoot(nullptr, m_hint, {m_save}, this));
    setTabOrder();
    connectControls();
    applyIcons();
    applyCaptions();
    updateEnabling();
}

void MultiFilePage::createControls()
{
    m_artist = made<QLineEdit>("Tmartista", this);
    m_album = made<QLineEdit>("tmalbum", this);
    m_year = made<DigitsEdit>("tma_o", this);
    m_genre = made<QComboBox>("cmestilo", this);
    m_comment = made<QLineEdit>("tmcomentarios", this);
    m_firstTrack = made<DigitsEdit>("tmpista", this);
    m_setsArtist = made<QCheckBox>("chmartista", this);
    m_setsAlbum = made<QCheckBox>("chmalbum", this);
    m_setsYear = made<QCheckBox>("chma_o", this);
    m_setsGenre = made<QCheckBox>("chmestilo", this);
    m_setsComment = made<QCheckBox>("chmcomentarios", this);
    m_setsTrack = made<QCheckBox>("chmpista", this);
    m_caseConversion = new ConversionBox(ConversionPairs[MultiCasePair], this);
    m_replaceConversion = new ConversionBox(ConversionPairs[MultiReplacePair], this);
    m_hint = made<PlainLabel>("multiHint", this);
    m_save = made<QPushButton>("multiple", this);

    // A text box limits its length, and would cut a long comment.
    for (QLineEdit *edit : {m_artist, m_album, m_comment})
        edit->setMaxLength(std::numeric_limits<int>::max());
    for (QLineEdit *edit :
        {m_artist, m_album, m_comment, static_cast<QLineEdit *>(m_year), static_cast<QLineEdit *>(m_firstTrack)})
        keepReadable(edit);
    m_genre->addItems(genreListEntries());
    guardAgainstWheel(m_genre);

    m_fields = {{{Caption::Artist, m_setsArtist, m_artist}, {Caption::Year, m_setsYear, m_year},
        {Caption::Album, m_setsAlbum, m_album}, {Caption::Genre, m_setsGenre, m_genre},
        {Caption::Comment, m_setsComment, m_comment}, {Caption::AutoTrack, m_setsTrack, m_firstTrack}}};
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
    // Each pair stands like a field below the others.
    const int conversions = static_cast<int>(m_fields.size()) / 2;
    fields->addWidget(m_caseConversion, conversions, 0, 1, 2, Qt::AlignLeft);
    fields->addWidget(m_replaceConversion, conversions, 3, 1, 2);
    for (ConversionBox *pair : {m_caseConversion, m_replaceConversion}) {
        pair->layout()->setSpacing(fields->horizontalSpacing());
        pair->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed); // show the whole choice
    }

    rows->addLayout(fields);
    rows->addStretch();
    return content;
}

void MultiFilePage::setTabOrder()
{
    QList<QWidget *> controls;
    for (const Field &field : m_fields)
        controls << field.check << field.box;
    tabThrough(controls << m_caseConversion->controls() << m_replaceConversion->controls() << m_save);
}

void MultiFilePage::connectControls()
{
    for (const Field &field : m_fields)
        connect(field.check, &QCheckBox::toggled, this, &MultiFilePage::updateEnabling);
    for (const ConversionBox *pair : {m_caseConversion, m_replaceConversion})
        connect(pair->checkBox(), &QCheckBox::toggled, this, &MultiFilePage::updateEnabling);
    connect(m_setsTrack, &QCheckBox::clicked, this, [this](bool checked) {
        if (checked)
            m_firstTrack->setFocus(Qt::TabFocusReason);
    });
    connect(m_save, &QPushButton::clicked, this, &MultiFilePage::run);
    m_outlook = new OutlookHint(
        m_context,
        [this] {
            const auto edit = std::make_shared<MultiEdit>(page());
            const auto prepare = [edit](const QString &path, const TagStore &store) { return edit->look(path, store); };
            return OutlookHint::Save{m_save->isEnabled() ? m_context.owner.selectedPaths() : QStringList(), prepare};
        },
        this);
    for (const QLineEdit *edit :
        {m_artist, m_album, m_comment, static_cast<QLineEdit *>(m_firstTrack), static_cast<QLineEdit *>(m_year)})
        connect(edit, &QLineEdit::textChanged, m_outlook, &OutlookHint::refresh);
    connect(m_genre, &QComboBox::currentIndexChanged, m_outlook, &OutlookHint::refresh);
    connect(m_outlook, &OutlookHint::changed, this, &MultiFilePage::showHint);
}

void MultiFilePage::updateEnabling()
{
    bool any = m_caseConversion->choice().on || m_replaceConversion->choice().on;
    for (const Field &field : m_fields) {
        field.box->setEnabled(field.check->isChecked());
        any = any || field.check->isChecked();
    }
    m_save->setEnabled(any);
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
    showHint();
    m_outlook->refresh();
}

void MultiFilePage::showHint()
{
    const Captions &captions = m_context.captions;
    const qsizetype count = m_context.owner.selectedCount();
    const QString hint = selectionHint(captions, count, Text::HintManyFiles);
    m_outlook->showIn(*m_hint, !m_save->isEnabled() ? captions.text(Text::HintNothingChosen)
                               : count == 0         ? hint
                                                    : m_outlook->behind(hint));
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
    m_save->setText(captions.text(Caption::SaveTags));
    makeRoomy(m_save, captions.text(Caption::Rename));
    alignColumns();
    applyToolTips();
    selectionChanged();
    contentChanged();
}

/// Puts the lists of the conversions below the fields.
void MultiFilePage::alignColumns()
{
    QList<QWidget *> left{m_caseConversion->checkBox()};
    QList<QWidget *> right{m_replaceConversion->checkBox()};
    for (std::size_t i = 0; i < m_fields.size(); ++i)
        (i % 2 == 0 ? left : right) << m_fields[i].check;
    makeEquallyWide(left);
    makeEquallyWide(right);
}

void MultiFilePage::applyToolTips()
{
    const Captions &captions = m_context.captions;
    for (const Field &field : m_fields)
        field.check->setToolTip(captions.text(Text::TipApplyField));
    m_year->setToolTip(captions.text(Text::TipYear));
    m_setsTrack->setToolTip(captions.text(Text::TipAutoTrack));
    m_firstTrack->setToolTip(captions.text(Text::TipFirstTrack));
    for (ConversionBox *pair : {m_caseConversion, m_replaceConversion})
        pair->setPairToolTip(captions.text(Text::TipConvertEach));
    m_save->setToolTip(captions.text(Text::TipApplyToAll));
    m_save->setAccessibleDescription(m_save->toolTip());
}

void MultiFilePage::applyIcons()
{
    m_save->setIcon(themedIcon(QStringLiteral("save"), palette()));
}

MultiEditPage MultiFilePage::page() const
{
    MultiEditPage page;
    page.boxes.Artist = m_artist->text();
    page.boxes.Album = m_album->text();
    page.boxes.Year = m_year->text();
    page.boxes.Genre = m_genre->currentText();
    page.boxes.Comment = m_comment->text();
    page.boxes.Track = m_firstTrack->text();
    page.setsArtist = m_setsArtist->isChecked();
    page.setsAlbum = m_setsAlbum->isChecked();
    page.setsYear = m_setsYear->isChecked();
    page.setsGenre = m_setsGenre->isChecked();
    page.setsComment = m_setsComment->isChecked();
    page.setsTrack = m_setsTrack->isChecked();
    page.letterCase = m_caseConversion->choice();
    page.replacement = m_replaceConversion->choice();
    return page;
}

/// Shows the boxes' texts after the conversions.
void MultiFilePage::showConverted(const TagRecord &boxes)
{
    m_artist->setText(boxes.Artist);
    m_album->setText(boxes.Album);
    m_comment->setText(boxes.Comment);
}

QAbstractButton *MultiFilePage::saveButton() const
{
    return m_save;
}

/// The year that is typed is not saved, and why.
void MultiFilePage::refuseYear()
{
    const QString reason = remarkNotSaved(&TagRecord::Year, m_year->text(), m_context.captions);
    m_outlook->showIn(*m_hint, reason);
    markRefused(m_year, reason, [this] { showHint(); });
}

void MultiFilePage::run()
{
    const QStringList paths = m_context.owner.selectedPaths();
    MultiEdit edit(page());
    if (edit.fieldNotStorable(m_context.tagStore) == TagEdits::Field(&TagRecord::Year)) {
        refuseYear();
        return;
    }
    BatchOutcome outcome;
    m_outlook->stop();
    const bool ran =
        m_context.owner.runRecorded(history::Kind::Multi, paths.size(), [&](const ProgressReport &progress) {
            m_outlook->waitForFile();
            outcome = runMultiEdit(paths, edit, m_context.tagStore, m_context.state, progress);
            return failuresOf(paths, outcome);
        });
    if (!ran)
        return;
    if (!m_context.tagStore.savesOnlyEdited())
        showConverted(edit.page().boxes);
    if (outcome.hasError(ErrorCode::LowSpace))
        m_context.owner.showError(m_context.captions.text(Caption::LowDiskSpace));
    m_context.owner.refreshList();
    selectionChanged();
    Q_EMIT finished();
    tellRefused(m_context.captions, paths, outcome, window());
}

} // namespace ravlin
