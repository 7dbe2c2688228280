// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/online/freedb.h"

#include "core/app/idiomas.h"
#include "core/app/pageowner.h"
#include "core/app/programstate.h"
#include "core/app/settings.h"
#include "core/online/cddb/disclookup.h"
#include "core/tags/store/tagstore.h"
#include "ui/controls/icons.h"
#include "ui/controls/making.h"
#include "ui/controls/plain/messagebox.h"
#include "ui/controls/plain/plainlabel.h"
#include "ui/online/buscaweb.h"
#include "ui/online/discfieldsbox.h"
#include "ui/online/discsaving.h"
#include "ui/online/facinglists.h"
#include "ui/online/matchdialog.h"
#include "ui/online/rowlist.h"

#include <QCheckBox>
#include <QEvent>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QShowEvent>
#include <QTimer>
#include <QVBoxLayout>

#include <tuple>
#include <utility>

namespace ravlin {

namespace {

constexpr QStringView GeometryKey = u"freedb geometry";
constexpr QStringView SplitterPositionKey = u"freedb splitter Position";

constexpr QSize StartSize(920, 600);
constexpr int StartPosition = 6700; ///< of the splitter, in twips
constexpr int TickInterval = 100;   ///< milliseconds
constexpr int TickStep = 5;         ///< of the progress bar while the database is asked
constexpr int WholeProgress = 100;

} // namespace

freedb::freedb(const PageContext &context, std::function<QString()> firstArtist, QWidget *parent)
    : QDialog(parent), m_context(context), m_firstArtist(std::move(firstArtist))
{
    setObjectName(QStringLiteral("freedb"));
    setWindowTitle(QStringLiteral("freedb"));
    setWindowModality(Qt::WindowModal);
    setSizeGripEnabled(true);
    createControls();
    arrange();
    applyCaptions();
    applyIcons();
    loadFiles();
    connectControls();
    connectLookup();
    restorePlaces();
    updateEnabling();
    m_lists->files()->setFocus();
}

freedb::~freedb() = default;

void freedb::createControls()
{
    m_fields = new DiscFieldsBox(this);
    m_lists = made<FacingLists>("sp", this, m_context.captions);
    m_statusLine = made<PlainLabel>("status", this);
    m_statusLine->setWordWrap(true);
    m_statusLine->setTextInteractionFlags(Qt::TextSelectableByMouse); // so that a user can copy it
    m_progressBar = made<QProgressBar>("pb", this);
    m_progressBar->setTextVisible(false);
    m_progressBar->setRange(0, WholeProgress);
    m_progressBar->setValue(0);
    m_onlySelected = made<QCheckBox>("sel", this);
    m_searchAgain = made<QPushButton>("Pic", this);
    m_save = made<QPushButton>("Command2", this);
    m_save->setDefault(true);
    m_close = made<QPushButton>("cancel", this);
    m_timer = new QTimer(this);
    m_timer->setObjectName(QStringLiteral("timer1"));
    m_timer->setInterval(TickInterval);
    m_lookup = new DiscLookup(m_context.settings, m_context.fileSystem, this);
    m_outlook = new OutlookHint(
        m_context, [this] { return wouldSave(); }, this);
    m_saving = new DiscSaving(m_context.owner, m_context.tagStore, m_context.state, m_context.captions, this);
}

void freedb::arrange()
{
    auto *foot = new QHBoxLayout;
    foot->addWidget(m_searchAgain);
    foot->addStretch();
    foot->addWidget(m_onlySelected);
    foot->addWidget(m_save);
    foot->addWidget(m_close);
    auto *rows = new QVBoxLayout(this);
    rows->addWidget(m_fields);
    rows->addWidget(m_lists, 1);
    rows->addWidget(m_statusLine);
    rows->addWidget(m_progressBar);
    rows->addLayout(foot);
    tabThrough({m_fields->lastBox(), m_lists->files(), m_lists->findChild<QWidget *>(QStringLiteral("pbSplit")),
        m_lists->tracks(), m_searchAgain, m_onlySelected, m_save, m_close});
}

void freedb::connectControls()
{
    connect(m_save, &QPushButton::clicked, this, &freedb::save);
    connect(m_searchAgain, &QPushButton::clicked, this, &freedb::openSearch);
    connect(m_close, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_onlySelected, &QCheckBox::toggled, this, &freedb::updateEnabling);
    connect(m_lists, &FacingLists::fileSelectionEdited, this, &freedb::updateEnabling);
    connect(m_fields, &DiscFieldsBox::edited, this, &freedb::showStatus);
    connect(m_fields, &DiscFieldsBox::edited, m_outlook, &OutlookHint::refresh);
    connect(m_lists, &FacingLists::orderChanged, this, [this] {
        m_lookup->setOrder(m_lists->fileOrder());
        showStatus();
        m_outlook->refresh();
    });
    connect(m_outlook, &OutlookHint::changed, this, &freedb::showStatus);
    connect(m_saving, &DiscSaving::advanced, this, &freedb::showProgress);
}

void freedb::connectLookup()
{
    connect(m_timer, &QTimer::timeout, this, &freedb::tick);
    connect(m_lookup, &DiscLookup::measured, m_lists, &FacingLists::setPlayed);
    connect(m_lookup, &DiscLookup::notMeasured, m_lists, [this](int file, const Error &error) {
        m_lists->setFileRemark(file, m_context.captions.errorText(error.code));
    });
    connect(m_lookup, &DiscLookup::measuring, this, &freedb::showMeasuring);
    connect(m_lookup, &DiscLookup::measuringEnded, this, &freedb::endMeasuring);
    connect(m_lookup, &DiscLookup::askingBegan, this, &freedb::beginAsking);
    connect(m_lookup, &DiscLookup::incomplete, this, &freedb::tellIncomplete);
    connect(m_lookup, &DiscLookup::notFound, this, &freedb::tellNotFound);
    connect(m_lookup, &DiscLookup::choiceOffered, this, &freedb::offerChoice);
    // While the user chooses among several discs, the choice dialog reads them.
    connect(m_lookup, &DiscLookup::recordRead, this, [this](const DiscRecord &record) {
        if (m_choice == nullptr)
            showRecord(record);
    });
    connect(m_lookup, &DiscLookup::failed, this, [this](const LookupFailure &failure) {
        if (m_choice == nullptr)
            tellFailure(failure);
    });
}

void freedb::applyCaptions()
{
    const Captions &captions = m_context.captions;
    m_fields->applyCaptions(captions);
    m_lists->applyCaptions();
    m_progressBar->setAccessibleName(captions.text(Text::NameProgress));
    m_onlySelected->setText(captions.text(Caption::OnlySelected));
    m_onlySelected->setToolTip(captions.text(Text::TipOnlySelected));
    m_searchAgain->setText(captions.text(Caption::SearchAgain));
    m_searchAgain->setToolTip(captions.text(Text::TipSearchAgain));
    m_save->setText(captions.text(Caption::SaveTags));
    m_save->setToolTip(captions.text(Text::TipSaveDisc));
    m_close->setText(captions.text(Caption::Cancel));
}

void freedb::applyIcons()
{
    m_searchAgain->setIcon(themedIcon(QStringLiteral("search"), palette()));
    m_save->setIcon(themedIcon(QStringLiteral("save"), palette()));
    m_lists->setRemarkIcon(themedIcon(QStringLiteral("triangle-alert"), palette()));
}

void freedb::restorePlaces()
{
    const Settings &settings = m_context.settings;
    if (!restoreGeometry(QByteArray::fromBase64(settings.read(GeometryKey).toLatin1())))
        resize(StartSize.boundedTo(screen()->availableSize() * 9 / 10));
    bool isNumber = false;
    const int position = settings.read(SplitterPositionKey).toInt(&isNumber);
    m_lists->setPosition(isNumber ? position : StartPosition);
}

void freedb::loadFiles()
{
    const QStringList paths = m_context.owner.selectedPaths();
    m_lists->setFiles(paths, m_context.state.currentFolder);
    m_lookup->setFiles(paths);
}

void freedb::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (!event->spontaneous() && !m_hasBegun)
        m_timer->start();
}

void freedb::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && m_lookup != nullptr)
        applyIcons();
}

void freedb::done(int result)
{
    if (m_saving->isUnderWay())
        return;
    m_timer->stop();
    m_lookup->cancel();
    Settings &settings = m_context.settings;
    settings.write(GeometryKey, QString::fromLatin1(saveGeometry().toBase64()));
    settings.write(SplitterPositionKey, QString::number(m_lists->position()));
    // The values apply to this run anyway; the file is written again when the program ends.
    std::ignore = settings.save();
    QDialog::done(result);
}

// Looking up

/// The first tick starts the work; later ones show that the database is being asked.
void freedb::tick()
{
    if (!m_hasBegun)
        begin();
    else if (m_lookup->isAsking())
        m_progressBar->setValue(m_progressBar->value() >= WholeProgress ? 0 : m_progressBar->value() + TickStep);
}

void freedb::begin()
{
    m_hasBegun = true;
    if (m_lists->hasFiles(false))
        m_lookup->begin();
    else
        endLookup(m_context.captions.text(Text::HintNoFile));
}

void freedb::showMeasuring(int done, int count)
{
    showProgress(done, count);
    setStatus(m_context.captions.text(Text::LookupMeasuring).arg(done).arg(count));
}

void freedb::endMeasuring()
{
    m_lists->compareLengths();
    showStatus();
    if (!m_lookup->isAsking())
        m_timer->stop();
}

void freedb::beginAsking()
{
    m_progressBar->setValue(0);
    m_timer->start();
    setStatus(m_context.captions.text(Text::LookupAsking).arg(cdServer(m_context.settings)));
    updateEnabling();
}

void freedb::endLookup(const QString &status)
{
    if (m_hasBegun) // else the first tick is still needed
        m_timer->stop();
    m_progressBar->setValue(0);
    setStatus(status);
    updateEnabling();
}

void freedb::tellIncomplete(int file, const Error &error)
{
    const Captions &captions = m_context.captions;
    tellFailure({LookupFailureKind::BadContents,
        m_lists->fileName(file) + captions.mark(u':') + u' ' + captions.errorText(error.code)});
}

void freedb::tellNotFound()
{
    const Captions &captions = m_context.captions;
    endLookup(
        captions.text(Caption::DiscNotFound) + captions.mark(u';') + u' ' + captions.text(Text::LookupHintSearch));
    auto *box = new MessageBox(
        MessageBox::Information, windowTitle(), captions.text(Caption::DiscNotFound), MessageBox::Ok, this);
    box->setObjectName(QStringLiteral("notFound"));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

void freedb::tellFailure(const LookupFailure &failure)
{
    endLookup(lookupFailureText(m_context.captions, failure));
}

void freedb::offerChoice()
{
    endLookup(m_context.captions.text(Text::MatchTitle));
    m_choice = new MatchDialog(m_context.captions, m_lookup->database(), m_lookup->contents(), this);
    m_choice->setAttribute(Qt::WA_DeleteOnClose);
    connect(m_choice, &QDialog::finished, this, &freedb::endChoice);
    updateEnabling();
    m_choice->open();
}

void freedb::endChoice(int result)
{
    const MatchDialog *choice = m_choice;
    m_choice = nullptr;
    if (result == QDialog::Accepted)
        showRecord(choice->chosen());
    else
        endLookup(m_context.captions.text(Text::LookupNoneChosen));
}

void freedb::showRecord(const DiscRecord &record)
{
    m_fields->setFields({record.artist, record.album, record.year, record.genre});
    m_lists->setDisc(record);
    endLookup(m_context.captions.text(Text::LookupFound).arg(record.tracks.size()));
}

void freedb::openSearch()
{
    auto *window = new buscaweb(m_context.captions, m_firstArtist(), this);
    window->setAttribute(Qt::WA_DeleteOnClose);
    connect(window, &buscaweb::searchRequested, m_lookup, &DiscLookup::search);
    window->open();
}

// Saving

/// What the save button would write now.
OutlookHint::Save freedb::wouldSave() const
{
    if (!m_save->isEnabled())
        return {};
    OutlookHint::Save save;
    QHash<QString, DiscRow> rows;
    for (const DiscFile &file : m_lists->pairedFiles(m_onlySelected->isChecked())) {
        save.paths << file.path;
        rows.insert(file.path, file.row);
    }
    save.prepare = [rows, disc = m_fields->fields()](const QString &path, const TagStore &store) {
        return store.readForSaving(path).map([&](const TagRecord &present) {
            const bool onlyChosen = store.savesOnlyEdited();
            const TagEdits edits = discEdits(disc, rows.value(path), onlyChosen);
            return PreparedSave{present, (onlyChosen ? edits.storable() : edits).appliedTo(present)};
        });
    };
    return save;
}

void freedb::save()
{
    if (m_context.tagStore.savesOnlyEdited() && m_fields->refuse(m_context.captions))
        return;
    const std::vector<DiscFile> files = m_lists->pairedFiles(m_onlySelected->isChecked());
    const QString statusBefore = m_status;
    setStatus(m_context.captions.text(Text::LookupSaving));
    m_progressBar->setValue(0);
    m_outlook->stop();
    m_outlook->waitForFile();
    const std::optional<qsizetype> saved = m_saving->save(files, m_fields->fields());
    if (!saved) {
        endLookup(statusBefore);
        return;
    }
    m_outlook->refresh();
    setStatus(m_context.captions.text(Text::LookupSaved).arg(*saved));
    m_progressBar->setValue(WholeProgress);
}

// What is shown

void freedb::showProgress(int done, int count)
{
    m_progressBar->setValue(count > 0 ? WholeProgress * done / count : 0);
}

void freedb::setStatus(const QString &status)
{
    m_status = status;
    showStatus();
}

void freedb::showStatus()
{
    QStringList lines;
    if (!m_status.isEmpty())
        lines << m_status;
    m_fields->setOnlyEdited(m_context.tagStore.savesOnlyEdited());
    if (m_lists->hasDisc())
        lines << m_lists->remarks() << m_fields->remarks(m_context.captions);
    if (const QString outlook = m_outlook->behind({}); !outlook.isEmpty())
        lines << outlook;
    m_statusLine->setText(lines.join(u'\n'));
}

void freedb::updateEnabling()
{
    const bool isIdle = !m_lookup->isAsking() && m_choice == nullptr && !m_saving->isUnderWay();
    m_save->setEnabled(m_lists->hasDisc() && isIdle && m_lists->hasFiles(m_onlySelected->isChecked()));
    m_outlook->refresh();
}

} // namespace ravlin
