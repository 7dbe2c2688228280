// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/tags/singlefilepage.h"

#include "core/app/batch.h"
#include "core/app/idiomas.h"
#include "core/app/pageowner.h"
#include "core/tags/store/tageditor.h"
#include "core/tags/store/tagstore.h"
#include "ui/controls/conversionbox.h"
#include "ui/controls/elidedlabel.h"
#include "ui/controls/icons.h"
#include "ui/controls/making.h"
#include "ui/controls/wheelguard.h"
#include "ui/tags/digitsedit.h"
#include "ui/tags/streampanel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <limits>

namespace ravlin {

SingleFilePage::SingleFilePage(const SingleFilePageContext &context, QWidget *parent)
    : PageArea(parent), m_context(context), m_streamReader(context.fileSystem)
{
    setObjectName(QStringLiteral("singleFilePage"));
    createControls();
    setContent(createContent());
    setTabOrder();
    connectControls();
    applyIcons();
    applyCaptions();
    reset();
}

void SingleFilePage::createControls()
{
    Ttitulo = made<QLineEdit>("Ttitulo", this);
    tartista = made<QLineEdit>("tartista", this);
    talbum = made<QLineEdit>("talbum", this);
    ta_o = made<DigitsEdit>("ta_o", this);
    Tpista = made<DigitsEdit>("Tpista", this);
    tcomentarios = made<QLineEdit>("tcomentarios", this);
    cestilo = made<QComboBox>("cestilo", this);
    edita = made<QPushButton>("edita", this);
    nfile = made<QPushButton>("nfile", this);
    pfile = made<QPushButton>("pfile", this);
    eliminav1 = made<QPushButton>("eliminav1", this);
    eliminav2 = made<QPushButton>("eliminav2", this);
    m_conversion = new ConversionBox(ConversionPairs[SingleCasePair], this);
    m_fileName = made<ElidedLabel>("fileName", this);
    m_hint = made<QLabel>("saveHint", this);
    m_streamPanel = new StreamPanel(this);

    // A comment may be longer than a text box takes by itself, and would be saved cut.
    for (QLineEdit *edit : {Ttitulo, tartista, talbum, tcomentarios})
        edit->setMaxLength(std::numeric_limits<int>::max());
    cestilo->addItems(genreListEntries());
    guardAgainstWheel(cestilo);
    QFont bold = m_fileName->font();
    bold.setBold(true);
    m_fileName->setFont(bold);
    m_hint->setAlignment(Qt::AlignRight | Qt::AlignVCenter);

    m_fields = {{{Caption::Title, new QLabel(this), Ttitulo}, {Caption::Track, new QLabel(this), Tpista},
        {Caption::Artist, new QLabel(this), tartista}, {Caption::Year, new QLabel(this), ta_o},
        {Caption::Album, new QLabel(this), talbum}, {Caption::Genre, new QLabel(this), cestilo},
        {Caption::Comment, new QLabel(this), tcomentarios}}};
    for (const FieldLabel &field : m_fields)
        field.label->setBuddy(field.field);
}

QWidget *SingleFilePage::createContent()
{
    auto *content = new QWidget(this);
    auto *rows = new QVBoxLayout(content);

    auto *head = new QHBoxLayout;
    head->addWidget(m_fileName, 1);
    head->addWidget(pfile);
    head->addWidget(nfile);

    auto *fields = new QGridLayout;
    fields->addLayout(head, 0, 0, 1, 4);
    for (int i = 0; i < static_cast<int>(m_fields.size()); ++i) {
        const FieldLabel &field = m_fields[static_cast<std::size_t>(i)];
        const int row = 1 + i / 2;
        const int column = i % 2 * 2;
        const bool last = field.field == tcomentarios;
        fields->addWidget(field.label, row, column);
        fields->addWidget(field.field, row, column + 1, 1, last ? 3 : 1);
    }
    fields->setColumnStretch(1, 1);
    for (DigitsEdit *edit : {Tpista, ta_o})
        edit->setWidthForDigits(4);

    auto *side = new QVBoxLayout;
    side->addWidget(m_streamPanel);
    side->addStretch();
    side->addWidget(eliminav1);
    side->addWidget(eliminav2);

    auto *line = new QFrame(content);
    line->setFrameStyle(QFrame::VLine | QFrame::Plain);
    line->setForegroundRole(QPalette::Mid);
    auto *upper = new QHBoxLayout;
    upper->addLayout(fields, 1);
    upper->addWidget(line);
    upper->addLayout(side);

    auto *foot = new QHBoxLayout;
    foot->addWidget(m_conversion);
    foot->addWidget(m_hint, 1);
    foot->addWidget(edita);

    rows->addLayout(upper);
    rows->addLayout(foot);
    rows->addStretch();
    return content;
}

void SingleFilePage::setTabOrder()
{
    QList<QWidget *> controls = {pfile, nfile};
    for (const FieldLabel &field : m_fields)
        controls << field.field;
    tabThrough(controls << eliminav1 << eliminav2 << m_conversion->controls() << edita);
}

void SingleFilePage::connectControls()
{
    connect(edita, &QPushButton::clicked, this, &SingleFilePage::save);
    connect(nfile, &QPushButton::clicked, this, [this] { step(1); });
    connect(pfile, &QPushButton::clicked, this, [this] { step(-1); });
    connect(eliminav1, &QPushButton::clicked, this, [this] { removeTag(Caption::RemoveV1, &TagStore::RemoveV1); });
    connect(eliminav2, &QPushButton::clicked, this, [this] { removeTag(Caption::RemoveV2, &TagStore::RemoveV2); });
    connect(&m_streamReader, &StreamDetailsReader::ready, m_streamPanel, &StreamPanel::show);
}

void SingleFilePage::applyIcons()
{
    pfile->setIcon(themedIcon(QStringLiteral("chevron-left"), palette()));
    nfile->setIcon(themedIcon(QStringLiteral("chevron-right"), palette()));
    eliminav1->setIcon(themedIcon(QStringLiteral("eraser"), palette()));
    eliminav2->setIcon(themedIcon(QStringLiteral("eraser"), palette()));
    edita->setIcon(themedIcon(QStringLiteral("save"), palette()));
}

void SingleFilePage::applyCaptions()
{
    const Captions &captions = m_context.captions;
    for (const FieldLabel &field : m_fields) {
        field.label->setText(captions.text(field.caption));
        field.field->setAccessibleName(captions.text(field.caption));
    }
    pfile->setText(captions.text(Caption::PreviousFile));
    nfile->setText(captions.text(Caption::NextFile));
    edita->setText(captions.text(Caption::SaveTags));
    makeRoomy(edita);
    eliminav1->setText(captions.text(Caption::RemoveV1));
    eliminav2->setText(captions.text(Caption::RemoveV2));
    m_conversion->applyCaptions(captions);
    m_streamPanel->applyCaptions(captions);

    pfile->setToolTip(captions.text(Text::TipPreviousFile));
    nfile->setToolTip(captions.text(Text::TipNextFile));
    eliminav1->setToolTip(captions.text(Text::TipRemoveTag));
    eliminav2->setToolTip(captions.text(Text::TipRemoveTag));
    m_conversion->setPairToolTip(captions.text(Text::TipConvertOnSave));
    ta_o->setToolTip(captions.text(Text::TipYear));
    Tpista->setToolTip(captions.text(Text::TipTrack));
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
    setSavingEnabled(true);
    m_isShowingFile = true;
    // A file that cannot be read shows what was read of it, which may be nothing; that is all that is said.
    (void)m_context.tagStore.ReadTag(path, m_record);
    showPage(m_record);
    eliminav1->setEnabled(m_record.HasV1);
    eliminav2->setEnabled(m_record.HasV2);
    m_fileName->setFullText(platform::nameOf(path), path);
    m_streamPanel->clear();
    m_streamReader.request(path);
}

void SingleFilePage::reset()
{
    setSavingEnabled(false);
    m_isShowingFile = false;
    m_record = {};
    showPage(m_record);
    eliminav1->setEnabled(false);
    eliminav2->setEnabled(false);
    m_fileName->setFullText({});
    m_streamReader.cancel();
    m_streamPanel->clear();
}

void SingleFilePage::startEditing()
{
    Ttitulo->setFocus();
    Ttitulo->selectAll();
}

void SingleFilePage::setSavingEnabled(bool enabled)
{
    for (QPushButton *button : {edita, nfile, pfile})
        button->setEnabled(enabled);
    selectionChanged();
}

void SingleFilePage::selectionChanged()
{
    const Captions &captions = m_context.captions;
    const qsizetype count = m_context.owner.selectedCount();
    const bool many = count > 1;
    QString hint;
    if (many)
        hint = captions.text(Text::HintManyFiles).arg(count);
    else if (count == 0)
        hint = captions.text(Text::HintNoFile);
    m_hint->setText(edita->isEnabled() ? hint : QString());
    edita->setToolTip(many ? captions.text(Text::TipSaveManyFiles).arg(count) : captions.text(Text::TipSaveOneFile));
    edita->setAccessibleDescription(edita->toolTip());
}

TagRecord SingleFilePage::page() const
{
    TagRecord record;
    record.Artist = tartista->text();
    record.Album = talbum->text();
    record.Comment = tcomentarios->text();
    record.Year = ta_o->text();
    record.Genre = cestilo->currentText();
    record.Title = Ttitulo->text();
    record.Track = Tpista->text();
    return record;
}

void SingleFilePage::showPage(const TagRecord &record)
{
    const auto show = [](QLineEdit *edit, const QString &text) {
        edit->setText(text);
        edit->setCursorPosition(0); // the start of a long text is what one wants to see
    };
    show(tartista, record.Artist);
    show(talbum, record.Album);
    show(ta_o, record.Year);
    cestilo->setCurrentIndex(genreListIndex(record.Genre));
    show(Ttitulo, record.Title);
    show(Tpista, record.Track);
    show(tcomentarios, record.Comment);
}

void SingleFilePage::save()
{
    const QStringList paths = m_context.owner.selectedPaths();
    PageSave::Conversion convert;
    if (const ConversionChoice choice = m_conversion->choice(); choice.on)
        convert = [choice](const QString &text) { return applyConversion(ConversionKind::Case, choice, text); };
    PageSave pageSave(m_context.tagStore, page(), convert);
    BatchOutcome outcome;
    const bool ran = m_context.owner.runWithProgress(paths.size(), [&](const ProgressReport &progress) {
        outcome = runBatch(
            paths, m_context.state, progress, [&pageSave](const QString &path) { return pageSave.save(path); },
            TagWritingPolicy);
    });
    if (!ran)
        return;
    showPage(pageSave.page());
    if (outcome.hasError(ErrorCode::LowSpace))
        m_context.owner.showError(m_context.captions.text(Caption::LowDiskSpace));
    listAgain();
}

void SingleFilePage::step(qsizetype rows)
{
    if (m_context.owner.moveCurrent(rows))
        ShowCurrent();
    tartista->setFocus();
}

void SingleFilePage::removeTag(Caption caption, Result<void> (TagStore::*remove)(const QString &))
{
    const QStringList paths = m_context.owner.selectedPaths();
    if (!m_context.owner.ask(m_context.captions.text(caption) + u'?'))
        return;
    TagStore &store = m_context.tagStore;
    const bool ran = m_context.owner.runWithProgress(paths.size(), [&](const ProgressReport &progress) {
        // Files that fail are passed over without a message.
        (void)runBatch(
            paths, m_context.state, progress, [&store, remove](const QString &path) { return (store.*remove)(path); },
            RowByRowPolicy);
    });
    if (ran)
        listAgain();
}

void SingleFilePage::listAgain()
{
    m_context.owner.refreshList();
    ShowCurrent();
}

} // namespace ravlin
