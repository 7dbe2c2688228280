// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/tags/singlefilepage.h"

#include "core/app/batch.h"
#include "core/app/idiomas.h"
#include "core/app/notice.h"
#include "core/app/pageowner.h"
#include "core/naming/lostfields.h"
#include "core/tags/store/removalsize.h"
#include "core/tags/store/tageditor.h"
#include "core/tags/store/tagstore.h"
#include "ui/controls/conversionbox.h"
#include "ui/controls/elidedlabel.h"
#include "ui/controls/icons.h"
#include "ui/controls/making.h"
#include "ui/controls/outcomebox.h"
#include "ui/controls/outlookhint.h"
#include "ui/controls/pagefoot.h"
#include "ui/controls/plain/plainlabel.h"
#include "ui/controls/refusedmark.h"
#include "ui/tags/digitsedit.h"
#include "ui/tags/streampanel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QLineEdit>
#include <QPushButton>

#include <limits>

namespace ravlin {

namespace {

constexpr qsizetype FewFiles = 50; ///< whose headers are read faster than anybody notices

/// What the removal of a tag takes with it.
QString whatGoes(const Captions &captions, qsizetype count, Caption removal)
{
    if (removal == Caption::RemoveV1) // holds nothing but the fields of the page
        return fileCountText(captions, count);
    return count == 1 ? captions.text(Text::AskRemoveOne)
                      : captions.text(Text::AskRemoveMany).arg(captions.locale().toString(count));
}

} // namespace

SingleFilePage::SingleFilePage(const PageContext &context, QWidget *parent)
    : PageArea(parent), m_context(context), m_streamReader(context.fileSystem)
{
    setObjectName(QStringLiteral("singleFilePage"));
    createControls();
    setContent(createContent(), new PageFoot(m_conversion, m_hint, {m_save}, this));
    setTabOrder();
    connectControls();
    applyIcons();
    applyCaptions();
    reset();
}

void SingleFilePage::createControls()
{
    m_title = made<QLineEdit>("Ttitulo", this);
    m_artist = made<QLineEdit>("tartista", this);
    m_album = made<QLineEdit>("talbum", this);
    m_year = made<DigitsEdit>("ta_o", this);
    m_track = made<DigitsEdit>("Tpista", this);
    m_comment = made<QLineEdit>("tcomentarios", this);
    m_genre = made<QComboBox>("cestilo", this);
    m_save = made<QPushButton>("edita", this);
    m_next = made<QPushButton>("nfile", this);
    m_previous = made<QPushButton>("pfile", this);
    m_removeV1 = made<QPushButton>("eliminav1", this);
    m_removeV2 = made<QPushButton>("eliminav2", this);
    m_conversion = new ConversionBox(ConversionPairs[SingleCasePair], this);
    m_fileName = made<ElidedLabel>("fileName", this);
    m_hint = made<PlainLabel>("saveHint", this);
    m_streamPanel = new StreamPanel(this);

    // A text box limits its length, and would cut a long comment.
    for (QLineEdit *edit : {m_title, m_artist, m_album, m_comment})
        edit->setMaxLength(std::numeric_limits<int>::max());
    for (QLineEdit *edit :
        {m_title, m_artist, m_album, m_comment, static_cast<QLineEdit *>(m_year), static_cast<QLineEdit *>(m_track)})
        keepReadable(edit);
    m_genre->addItems(genreListEntries());
    guardAgainstWheel(m_genre);
    QFont bold = m_fileName->font();
    bold.setBold(true);
    m_fileName->setFont(bold);

    m_fields = {{{Caption::Title, new PlainLabel(this), m_title}, {Caption::Track, new PlainLabel(this), m_track},
        {Caption::Artist, new PlainLabel(this), m_artist}, {Caption::Year, new PlainLabel(this), m_year},
        {Caption::Album, new PlainLabel(this), m_album}, {Caption::Genre, new PlainLabel(this), m_genre},
        {Caption::Comment, new PlainLabel(this), m_comment}}};
    for (const FieldLabel &field : m_fields)
        field.label->setBuddy(field.field);
}

QWidget *SingleFilePage::createContent()
{
    auto *content = new QWidget(this);
    auto *rows = new QVBoxLayout(content);

    auto *head = new QHBoxLayout;
    head->addWidget(m_fileName, 1);
    head->addWidget(m_previous);
    head->addWidget(m_next);

    auto *fields = new QGridLayout;
    fields->addLayout(head, 0, 0, 1, 4);
    for (int i = 0; i < static_cast<int>(m_fields.size()); ++i) {
        const FieldLabel &field = m_fields[static_cast<std::size_t>(i)];
        const int row = 1 + i / 2;
        const int column = i % 2 * 2;
        const bool last = field.field == m_comment;
        fields->addWidget(field.label, row, column);
        fields->addWidget(field.field, row, column + 1, 1, last ? 3 : 1);
    }
    fields->setColumnStretch(1, 1);
    m_conversion->layout()->setSpacing(fields->horizontalSpacing()); // stands like a field below the others

    auto *side = new QVBoxLayout;
    side->addWidget(m_streamPanel);
    side->addStretch();
    side->addWidget(m_removeV1);
    side->addWidget(m_removeV2);

    auto *line = new QFrame(content);
    line->setFrameStyle(QFrame::VLine | QFrame::Plain);
    line->setForegroundRole(QPalette::Mid);
    auto *upper = new QHBoxLayout;
    upper->addLayout(fields, 1);
    upper->addWidget(line);
    upper->addLayout(side);

    rows->addLayout(upper);
    rows->addStretch();
    return content;
}

void SingleFilePage::setTabOrder()
{
    QList<QWidget *> controls = {m_previous, m_next};
    for (const FieldLabel &field : m_fields)
        controls << field.field;
    tabThrough(controls << m_removeV1 << m_removeV2 << m_conversion->controls() << m_save);
}

void SingleFilePage::connectControls()
{
    connect(m_save, &QPushButton::clicked, this, &SingleFilePage::save);
    connect(m_next, &QPushButton::clicked, this, [this] { step(1); });
    connect(m_previous, &QPushButton::clicked, this, [this] { step(-1); });
    connect(m_removeV1, &QPushButton::clicked, this, [this] { removeTag(Caption::RemoveV1, &TagStore::RemoveV1); });
    connect(m_removeV2, &QPushButton::clicked, this, [this] { removeTag(Caption::RemoveV2, &TagStore::RemoveV2); });
    connect(&m_streamReader, &StreamDetailsReader::ready, m_streamPanel, &StreamPanel::show);
    m_outlook = new OutlookHint(
        m_context,
        [this] {
            return OutlookHint::Save{m_context.owner.selectedPaths(), preparing()};
        },
        this);
    for (const QLineEdit *edit :
        {m_title, m_artist, m_album, m_comment, static_cast<QLineEdit *>(m_track), static_cast<QLineEdit *>(m_year)})
        connect(edit, &QLineEdit::textChanged, m_outlook, &OutlookHint::refresh);
    connect(m_genre, &QComboBox::currentIndexChanged, m_outlook, &OutlookHint::refresh);
    connect(m_outlook, &OutlookHint::changed, this, &SingleFilePage::showHint);
}

void SingleFilePage::applyIcons()
{
    m_previous->setIcon(themedIcon(QStringLiteral("chevron-left"), palette()));
    m_next->setIcon(themedIcon(QStringLiteral("chevron-right"), palette()));
    m_removeV1->setIcon(themedIcon(QStringLiteral("eraser"), palette()));
    m_removeV2->setIcon(themedIcon(QStringLiteral("eraser"), palette()));
    m_save->setIcon(themedIcon(QStringLiteral("save"), palette()));
}

void SingleFilePage::applyCaptions()
{
    const Captions &captions = m_context.captions;
    for (const FieldLabel &field : m_fields) {
        field.label->setText(captions.text(field.caption));
        field.field->setAccessibleName(captions.text(field.caption));
    }
    m_previous->setText(captions.text(Caption::PreviousFile));
    m_next->setText(captions.text(Caption::NextFile));
    m_save->setText(captions.text(Caption::SaveTags));
    makeRoomy(m_save, captions.text(Caption::Rename));
    m_removeV1->setText(captions.text(Caption::RemoveV1));
    m_removeV2->setText(captions.text(Caption::RemoveV2));
    m_conversion->applyCaptions(captions);
    QList<QWidget *> left{m_conversion->checkBox()};
    for (std::size_t i = 0; i < m_fields.size(); i += 2)
        left << m_fields[i].label;
    makeEquallyWide(left);
    m_streamPanel->applyCaptions(captions);

    m_previous->setToolTip(captions.text(Text::TipPreviousFile));
    m_next->setToolTip(captions.text(Text::TipNextFile));
    m_removeV1->setToolTip(captions.text(Text::TipRemoveTag));
    m_removeV2->setToolTip(captions.text(Text::TipRemoveTag));
    m_conversion->setPairToolTip(captions.text(Text::TipConvertOnSave));
    m_year->setToolTip(captions.text(Text::TipYear));
    m_track->setToolTip(captions.text(Text::TipTrack));
    selectionChanged();
    contentChanged();
}

void SingleFilePage::ShowCurrent()
{
    const QString path = m_context.owner.currentPath();
    if (path.isEmpty()) {
        reset();
        return;
    }
    leaveEdits();
    setSavingEnabled(true);
    m_isShowingFile = true;
    m_path = path;
    // Shows whatever could be read; a failed read shows nothing.
    m_shownState = {};
    const Result<void> read = m_context.tagStore.ReadTag(path, m_record, &m_shownState);
    m_isTagTooLarge = !read && read.error().code == ErrorCode::TagTooLarge;
    selectionChanged();
    showPage(m_record);
    m_removeV1->setEnabled(m_record.HasV1);
    m_removeV2->setEnabled(m_record.HasV2);
    m_fileName->setFullText(platform::nameOf(path), path);
    m_streamPanel->clear();
    m_streamReader.request(path);
}

void SingleFilePage::reset()
{
    leaveEdits();
    setSavingEnabled(false);
    m_isShowingFile = false;
    m_path.clear();
    m_isTagTooLarge = false;
    m_record = {};
    showPage(m_record);
    m_removeV1->setEnabled(false);
    m_removeV2->setEnabled(false);
    m_fileName->setFullText({});
    m_streamReader.cancel();
    m_streamPanel->clear();
}

void SingleFilePage::startEditing()
{
    m_title->setFocus();
    m_title->selectAll();
}

void SingleFilePage::setSavingEnabled(bool enabled)
{
    for (QPushButton *button : {m_save, m_next, m_previous})
        button->setEnabled(enabled);
    selectionChanged();
}

void SingleFilePage::selectionChanged()
{
    showHint();
    m_outlook->refresh();
}

void SingleFilePage::showHint()
{
    const Captions &captions = m_context.captions;
    const qsizetype count = m_context.owner.selectedCount();
    const bool many = count > 1;
    QString hint;
    if (count == 0)
        hint = captions.text(Text::HintNoFile);
    else if (!many && m_isTagTooLarge) // it is not saved at all
        hint = captions.errorText(ErrorCode::TagTooLarge);
    else
        hint = m_outlook->behind(selectionHint(captions, count, Text::HintManyFiles));
    m_outlook->showIn(*m_hint, m_save->isEnabled() ? hint : QString());
    m_save->setToolTip(many              ? captions.text(Text::TipSaveManyFiles).arg(count)
                       : m_isTagTooLarge ? captions.errorText(ErrorCode::TagTooLarge)
                                         : captions.text(Text::TipSaveOneFile));
    m_save->setAccessibleDescription(m_save->toolTip());
}

TagRecord SingleFilePage::page() const
{
    TagRecord record;
    record.Artist = m_artist->text();
    record.Album = m_album->text();
    record.Comment = m_comment->text();
    record.Year = m_year->text();
    record.Genre = m_genre->currentText();
    record.Title = m_title->text();
    record.Track = m_track->text();
    return record;
}

void SingleFilePage::showPage(const TagRecord &record)
{
    const auto show = [](QLineEdit *edit, const QString &text) {
        edit->setText(text);
        edit->setCursorPosition(0); // show the start of a long text
    };
    show(m_artist, record.Artist);
    show(m_album, record.Album);
    show(m_year, record.Year);
    m_genre->setCurrentIndex(genreListIndex(record.Genre));
    show(m_title, record.Title);
    show(m_track, record.Track);
    show(m_comment, record.Comment);
    m_shown = page();
}

std::optional<UnsavedEdits> SingleFilePage::unsavedEdits() const
{
    if (!m_isShowingFile)
        return {};
    const TagRecord typed = page();
    return typed == m_shown ? std::nullopt : std::optional(UnsavedEdits{m_path, typed});
}

/// Tells what was typed before the page shows something else.
void SingleFilePage::leaveEdits()
{
    if (const std::optional<UnsavedEdits> edits = unsavedEdits())
        Q_EMIT editsLeft(*edits);
}

void SingleFilePage::putBack(const TagRecord &typed)
{
    const TagRecord filled = m_shown;
    showPage(typed);
    m_shown = filled;
}

QAbstractButton *SingleFilePage::saveButton() const
{
    return m_save;
}

/// What a save would write into a file, as the page is now.
OutlookReader::Prepare SingleFilePage::preparing() const
{
    return [page = page(), edits = edits()](const QString &path, const TagStore &store) {
        return store.readForSaving(path).map([&](const TagRecord &present) {
            if (store.savesOnlyEdited())
                return PreparedSave{present, edits.appliedTo(present)};
            TagRecord record = page;
            record.HasV1 = present.HasV1;
            record.HasV2 = present.HasV2;
            record.HasPicture = present.HasPicture;
            return PreparedSave{present, record};
        });
    };
}

/// What was typed since the page was filled.
TagEdits SingleFilePage::edits() const
{
    return TagEdits::between(m_shown, page());
}

/// Whether a text that was typed can't be stored. Marks its box then; nothing is to be saved.
bool SingleFilePage::isRefused()
{
    const TagEdits typed = edits();
    const auto field = fieldNotStorable(typed);
    if (!m_context.tagStore.savesOnlyEdited() || !field)
        return false;
    const QString reason = remarkNotSaved(*field, *typed.text(*field), m_context.captions);
    m_outlook->showIn(*m_hint, reason);
    // The box for the genre holds nothing else.
    markRefused(*field == TagEdits::Field(&TagRecord::Year) ? m_year : m_track, reason, [this] { showHint(); });
    return true;
}

void SingleFilePage::save()
{
    const QStringList paths = m_context.owner.selectedPaths();
    if (paths.isEmpty()) { // what was typed stays
        m_context.owner.showError(m_context.captions.text(Text::HintNoFile));
        return;
    }
    if (isRefused())
        return;
    PageSave::Conversion convert;
    if (const ConversionChoice choice = m_conversion->choice(); choice.on)
        convert = [choice](const QString &text) { return applyConversion(ConversionKind::Case, choice, text); };
    const UnsavedEdits typed{m_path, page()};
    PageSave pageSave(m_context.tagStore, EditedPage{typed.record, m_shown, m_path, m_shownState}, convert);
    BatchOutcome outcome;
    m_outlook->stop();
    const bool ran =
        m_context.owner.runRecorded(history::Kind::Single, paths.size(), [&](const ProgressReport &progress) {
            m_outlook->waitForFile();
            outcome = runBatch(
                paths, m_context.state, progress, [&pageSave](const QString &path) { return pageSave.save(path); },
                TagWritingPolicy);
            return failuresOf(paths, outcome);
        });
    if (!ran)
        return;
    showPage(pageSave.page());
    if (outcome.hasError(ErrorCode::LowSpace))
        m_context.owner.showError(m_context.captions.text(Caption::LowDiskSpace));
    listAgain();
    if (outcome.doneCount() < paths.size())
        Q_EMIT editsLeft(typed);
    tellRefused(m_context.captions, paths, outcome, window());
}

void SingleFilePage::step(qsizetype rows)
{
    if (m_context.owner.moveCurrent(rows))
        ShowCurrent();
    m_artist->setFocus();
}

/// What the history would take to keep these files' ID3v2 tags, if that is more than the options allow.
QStringList SingleFilePage::aboveLimit(const QStringList &paths)
{
    const qint64 allowed = m_context.state.options.historyMegabytes * 1024LL * 1024;
    qint64 needed = 0;
    const auto measure = [&](const ProgressReport &) { needed = removalSize(m_context.fileSystem, paths, allowed); };
    if (paths.size() <= FewFiles)
        measure({});
    else if (!m_context.owner.runWithProgress(paths.size(), measure))
        return {};
    if (needed <= allowed)
        return {};
    const QLocale locale = m_context.captions.locale();
    return {m_context.captions.text(Text::AskHistoryLimit)
                .arg(locale.formattedDataSize(needed, 0), locale.formattedDataSize(allowed, 0)),
        m_context.captions.text(Text::HistoryLimitFurther)};
}

void SingleFilePage::removeTag(Caption caption, Result<void> (TagStore::*remove)(const QString &))
{
    const QStringList paths = m_context.owner.selectedPaths();
    const Captions &captions = m_context.captions;
    QStringList meaning{whatGoes(captions, paths.size(), caption)};
    if (caption == Caption::RemoveV2)
        meaning << aboveLimit(paths);
    if (!m_context.owner.ask(captions.text(caption) + u'?', meaning.join(u'\n')))
        return;
    TagStore &store = m_context.tagStore;
    BatchOutcome outcome;
    const bool ran =
        m_context.owner.runRecorded(history::Kind::RemoveTags, paths.size(), [&](const ProgressReport &progress) {
            // Skip files that fail, without a message unless they were refused.
            outcome = runBatch(
                paths, m_context.state, progress,
                [&store, remove](const QString &path) { return (store.*remove)(path); }, RowByRowPolicy);
            return failuresOf(paths, outcome);
        });
    if (!ran)
        return;
    listAgain();
    tellRefused(captions, paths, outcome, window());
}

void SingleFilePage::listAgain()
{
    m_context.owner.refreshList();
    ShowCurrent();
}

} // namespace ravlin
