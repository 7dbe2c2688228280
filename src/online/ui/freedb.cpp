#include "online/ui/freedb.h"

#include "app/options.h"
#include "app/pageowner.h"
#include "app/settings.h"
#include "controls/ui/buscaweb.h"
#include "controls/ui/icons.h"
#include "controls/ui/making.h"
#include "controls/ui/outcomebox.h"
#include "controls/ui/splitpanel.h"
#include "files/listcolumns.h"
#include "online/discshown.h"
#include "online/playingtimes.h"
#include "online/ufreedb.h"
#include "online/ui/discfieldsbox.h"
#include "online/ui/matchdialog.h"
#include "online/ui/rowlist.h"

#include <QCheckBox>
#include <QEvent>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QShowEvent>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <cstdlib>
#include <tuple>

namespace ravlin {

namespace {

constexpr QStringView GeometryKey = u"freedb geometry";
constexpr QStringView SplitterPositionKey = u"freedb splitter Position";

constexpr int CaptionFiles = 10;
constexpr int CaptionTrack = 13;
constexpr int CaptionSave = 18;
constexpr int CaptionTime = 48;
constexpr int CaptionTitle = 54;
constexpr int CaptionFile = 55;
constexpr int CaptionCancel = 60;
constexpr int CaptionSearchAgain = 61;
constexpr int CaptionNotFound = 74;
constexpr int CaptionOnlySelected = 85;

constexpr int FileTimeColumn = 1;
enum TrackColumn
{
    Track,
    Title,
    Time
};

constexpr QSize StartSize(920, 600);
constexpr int StartPosition = 6700; ///< of the splitter, in twips
constexpr int SmallestPanel = 3000; ///< in twips; the titles stay readable
constexpr int TickInterval = 100;   ///< milliseconds
constexpr int TickStep = 5;         ///< of the progress bar while the database is asked
constexpr int WholeProgress = 100;
/// Files and tracks that differ by more are pointed out, in frames: encoders add less.
constexpr qint64 NotableDifference = qint64{2} * FramesPerSecond;

qint64 framesOf(const PlayedAudio &played)
{
    return qRound64(played.seconds() * FramesPerSecond);
}

/// Tells the window, from the thread that saves, how far it has come.
class ForwardedProgress final : public BatchProgress
{
public:
    ForwardedProgress(BatchProgress &progress, std::function<void(int)> tell)
        : m_progress(progress), m_tell(std::move(tell))
    {
    }
    void advance(const QString &path) override
    {
        m_progress.advance(path);
        m_tell(++m_done);
    }

private:
    BatchProgress &m_progress;
    std::function<void(int)> m_tell;
    int m_done = 0;
};

} // namespace

freedb::freedb(const FreedbContext &context, QWidget *parent) : QDialog(parent), m_context(context)
{
    setObjectName(QStringLiteral("freedb"));
    setWindowTitle(QStringLiteral("freedb"));
    setWindowModality(Qt::WindowModal);
    setSizeGripEnabled(true);
    createControls();
    arrange();
    applyCaptions();
    applyIcons();
    configureDatabase();
    loadFiles();
    connectControls();
    connectLookup();
    restorePlaces();
    updateEnabling();
    archivo->setFocus();
}

/// A drive that has to wake up first does not keep the window from going.
freedb::~freedb()
{
    m_times->leave();
}

void freedb::createControls()
{
    m_fields = new DiscFieldsBox(this);
    sp = made<SplitPanel>("sp", this);
    archivo = new RowList("archivo", 0, sp);
    correlacion = new RowList("correlacion", Title, sp);
    sp->setMinPanelSize(SmallestPanel);
    sp->setFirstPanel(archivo);
    sp->setSecondPanel(correlacion);
    archivo->rows().setRightAligned({FileTimeColumn});
    correlacion->rows().setRightAligned({Track, Time});
    correlacion->rows().setEditableColumn(Title);
    m_statusLine = made<QLabel>("status", this);
    m_statusLine->setTextFormat(Qt::PlainText);
    m_statusLine->setWordWrap(true);
    m_statusLine->setTextInteractionFlags(Qt::TextSelectableByMouse); // to be copied into a report
    pb = made<QProgressBar>("pb", this);
    pb->setTextVisible(false);
    pb->setRange(0, WholeProgress);
    pb->setValue(0);
    sel = made<QCheckBox>("sel", this);
    Pic = made<QPushButton>("Pic", this);
    Command2 = made<QPushButton>("Command2", this);
    Command2->setDefault(true);
    m_close = made<QPushButton>("cancel", this);
    timer1 = new QTimer(this);
    timer1->setObjectName(QStringLiteral("timer1"));
    timer1->setInterval(TickInterval);
    uFREEDB1 = new uFREEDB(this);
    uFREEDB1->setObjectName(QStringLiteral("uFREEDB1"));
    m_times = new PlayingTimes(m_context.fileSystem, this);
}

void freedb::arrange()
{
    auto *foot = new QHBoxLayout;
    foot->addWidget(Pic);
    foot->addStretch();
    foot->addWidget(sel);
    foot->addWidget(Command2);
    foot->addWidget(m_close);
    auto *rows = new QVBoxLayout(this);
    rows->addWidget(m_fields);
    rows->addWidget(sp, 1);
    rows->addWidget(m_statusLine);
    rows->addWidget(pb);
    rows->addLayout(foot);
    tabThrough({m_fields->lastBox(), archivo, sp->findChild<QWidget *>(QStringLiteral("pbSplit")), correlacion, Pic,
        sel, Command2, m_close});
}

/// In the order that the component's users keep to.
void freedb::configureDatabase()
{
    uFREEDB1->setIgnoresProxy(false);
    uFREEDB1->setUsesProxyForThisComputer(false);
    uFREEDB1->setTimeLimit(0);
    uFREEDB1->setServer(cdServer(m_context.settings));
    uFREEDB1->setMail(cdMail(m_context.settings));
    uFREEDB1->setClientName(QStringLiteral("ravlin"));
    uFREEDB1->setClientVersion(QString::fromLatin1(RAVLIN_VERSION).section(u'.', 0, 1));
}

void freedb::connectControls()
{
    connect(Command2, &QPushButton::clicked, this, &freedb::save);
    connect(Pic, &QPushButton::clicked, this, &freedb::openSearch);
    connect(m_close, &QPushButton::clicked, this, &QDialog::reject);
    connect(sel, &QCheckBox::toggled, this, &freedb::updateEnabling);
    connect(archivo, &RowList::selectionEdited, this, &freedb::updateEnabling);
    connect(m_fields, &DiscFieldsBox::edited, this, &freedb::showStatus);
    for (const RowList *list : {archivo, correlacion})
        connect(list, &RowList::orderChanged, this, &freedb::compareTimes);
    RowList::scrollTogether(archivo, correlacion);
}

void freedb::connectLookup()
{
    connect(timer1, &QTimer::timeout, this, &freedb::tick);
    connect(m_times, &PlayingTimes::measured, this, &freedb::takeMeasure);
    connect(m_times, &PlayingTimes::notMeasured, this, &freedb::takeFailure);
    connect(m_times, &PlayingTimes::finished, this, &freedb::query);
    // While the user chooses among several discs, the component reads them for that window.
    connect(uFREEDB1, &uFREEDB::notFound, this, &freedb::tellNotFound);
    connect(uFREEDB1, &uFREEDB::choiceOffered, this, &freedb::offerChoice);
    connect(uFREEDB1, &uFREEDB::recordRead, this, [this] {
        if (m_choice == nullptr)
            showRecord(uFREEDB1->record());
    });
    connect(uFREEDB1, &uFREEDB::failed, this, [this](const LookupFailure &failure) {
        if (m_choice == nullptr)
            tellFailure(failure);
    });
}

void freedb::applyCaptions()
{
    const Captions &captions = m_context.captions;
    m_fields->applyCaptions(captions);
    archivo->setHeaderTexts({captions.text(CaptionFile), captions.text(CaptionTime)});
    archivo->setAccessibleName(captions.text(CaptionFiles));
    correlacion->setHeaderTexts({captions.text(CaptionTrack), captions.text(CaptionTitle), captions.text(CaptionTime)});
    correlacion->setAccessibleName(captions.text(Text::NameTracks));
    for (RowList *list : {archivo, correlacion}) {
        list->setToolTip(captions.text(Text::TipMoveRow));
        list->setAccessibleDescription(list->toolTip());
    }
    sp->setBarAccessibleName(captions.text(Text::NameDiscSplitter));
    pb->setAccessibleName(captions.text(Text::NameProgress));
    sel->setText(captions.text(CaptionOnlySelected));
    sel->setToolTip(captions.text(Text::TipOnlySelected));
    Pic->setText(captions.text(CaptionSearchAgain));
    Pic->setToolTip(captions.text(Text::TipSearchAgain));
    Command2->setText(captions.text(CaptionSave));
    Command2->setToolTip(captions.text(Text::TipSaveDisc));
    m_close->setText(captions.text(CaptionCancel));
}

void freedb::applyIcons()
{
    Pic->setIcon(themedIcon(QStringLiteral("search"), palette()));
    Command2->setIcon(themedIcon(QStringLiteral("save"), palette()));
    for (RowList *list : {archivo, correlacion})
        list->rows().setRemarkIcon(themedIcon(QStringLiteral("triangle-alert"), palette()));
}

void freedb::restorePlaces()
{
    const Settings &settings = m_context.settings;
    if (!restoreGeometry(QByteArray::fromBase64(settings.read(GeometryKey).toLatin1())))
        resize(StartSize.boundedTo(screen()->availableSize() * 9 / 10));
    bool isNumber = false;
    const int position = settings.read(SplitterPositionKey).toInt(&isNumber);
    sp->setPosition(isNumber ? position : StartPosition);
}

void freedb::loadFiles()
{
    m_paths = m_context.owner.selectedPaths();
    m_played.resize(static_cast<std::size_t>(m_paths.size()));
    const QString &folder = m_context.state.currentFolder;
    std::vector<ListedLine> lines;
    lines.reserve(m_played.size());
    for (const QString &path : m_paths) {
        const QString name = path.startsWith(folder) ? path.sliced(folder.size()) : path;
        lines.push_back({static_cast<int>(lines.size()), {shownName(name), {}}, {}});
    }
    archivo->rows().setLines(std::move(lines));
    archivo->setCurrentIndex(archivo->model()->index(0, 0));
    archivo->clearSelection();
}

void freedb::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (!event->spontaneous() && !m_hasBegun)
        timer1->start();
}

void freedb::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && m_times != nullptr)
        applyIcons();
}

void freedb::done(int result)
{
    if (m_isSaving)
        return;
    timer1->stop();
    m_times->cancel();
    uFREEDB1->cancel();
    Settings &settings = m_context.settings;
    settings.write(GeometryKey, QString::fromLatin1(saveGeometry().toBase64()));
    settings.write(SplitterPositionKey, QString::number(sp->position()));
    // The values count for this run all the same; the file is tried again at the end of the program.
    std::ignore = settings.save();
    QDialog::done(result);
}

// Looking up

/// The first tick begins; the others show that the database is being asked.
void freedb::tick()
{
    if (!m_hasBegun)
        measure();
    else if (uFREEDB1->isBusy())
        pb->setValue(pb->value() >= WholeProgress ? 0 : pb->value() + TickStep);
}

void freedb::measure()
{
    m_hasBegun = true;
    if (m_paths.isEmpty()) {
        endLookup(m_context.captions.text(Text::HintNoFile));
        return;
    }
    if (m_paths.size() > MaximumTracks) {
        if (m_queriesOnceMeasured)
            tellFailure({LookupFailureKind::BadContents,
                QStringLiteral("a disc has no more than %1 tracks").arg(MaximumTracks)});
        return;
    }
    m_times->measure(m_paths);
    showMeasuring();
}

void freedb::takeMeasure(int file, const PlayedAudio &played)
{
    ++m_measured;
    m_played[static_cast<std::size_t>(file)] = played;
    archivo->rows().setCell(file, FileTimeColumn, shownTime(framesOf(played)));
    showMeasuring();
}

/// Without all playing times there is no disc to ask for.
void freedb::takeFailure(int file, const Error &error)
{
    ++m_measured;
    const QString reason = m_context.captions.errorText(error.code);
    const std::vector<ListedLine> &lines = archivo->rows().lines();
    const auto line = std::ranges::find(lines, file, &ListedLine::id);
    archivo->rows().setRemark(static_cast<int>(line - lines.begin()), reason);
    if (!m_notMeasured)
        m_notMeasured = {LookupFailureKind::BadContents, line->cells.front() + QStringLiteral(": ") + reason};
    showMeasuring();
}

void freedb::showMeasuring()
{
    if (!m_queriesOnceMeasured)
        return; // another search has taken the query's place
    pb->setValue(WholeProgress * m_measured / static_cast<int>(m_paths.size()));
    m_status = m_context.captions.text(Text::LookupMeasuring).arg(m_measured).arg(m_paths.size());
    showStatus();
}

std::vector<PlayedAudio> freedb::playedAudio() const
{
    std::vector<PlayedAudio> files;
    for (const ListedLine &line : archivo->rows().lines())
        files.push_back(m_played[static_cast<std::size_t>(line.id)].value_or(PlayedAudio()));
    return files;
}

void freedb::query()
{
    compareTimes();
    if (!m_queriesOnceMeasured) { // another search has taken its place
        if (!uFREEDB1->isBusy())
            timer1->stop();
        return;
    }
    if (m_notMeasured) {
        tellFailure(*m_notMeasured);
        return;
    }
    const std::vector<PlayedAudio> files = playedAudio();
    uFREEDB1->Query(offsetText(files), offsetTextWithUsualDelay(files));
    beginAsking();
}

void freedb::beginAsking()
{
    m_status = m_context.captions.text(Text::LookupAsking).arg(cdServer(m_context.settings));
    pb->setValue(0);
    timer1->start();
    showStatus();
    updateEnabling();
}

void freedb::endLookup(const QString &status)
{
    if (m_hasBegun) // else its first tick is still wanted
        timer1->stop();
    pb->setValue(0);
    m_status = status;
    showStatus();
    updateEnabling();
}

void freedb::tellNotFound()
{
    const Captions &captions = m_context.captions;
    endLookup(captions.text(CaptionNotFound) + QStringLiteral("; ") + captions.text(Text::LookupHintSearch));
    auto *box =
        new QMessageBox(QMessageBox::Information, windowTitle(), captions.text(CaptionNotFound), QMessageBox::Ok, this);
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
    const Result<DiscContents> contents = DiscContents::parse(offsetText(playedAudio()));
    const bool areMeasured = std::ranges::all_of(m_played, &std::optional<PlayedAudio>::has_value);
    endLookup(m_context.captions.text(Text::MatchTitle));
    m_choice = new MatchDialog(
        m_context.captions, *uFREEDB1, areMeasured && contents ? std::optional(*contents) : std::nullopt, this);
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
    m_record = record;
    m_fields->setFields({record.artist, record.album, record.year, record.genre});
    std::vector<ListedLine> lines;
    for (const DiscTrack &track : record.tracks) {
        const int index = static_cast<int>(lines.size());
        lines.push_back(
            {index, {QString::number(index + 1), shownTitle(track), shownTime(trackFrames(record, index))}, {}});
    }
    correlacion->rows().setLines(std::move(lines));
    correlacion->setCurrentIndex(correlacion->model()->index(0, 0));
    correlacion->clearSelection();
    endLookup(m_context.captions.text(Text::LookupFound).arg(record.tracks.size()));
}

void freedb::openSearch()
{
    auto *window = new buscaweb(m_context.captions, m_context.firstArtist(), this);
    window->setAttribute(Qt::WA_DeleteOnClose);
    connect(window, &buscaweb::searchRequested, this, &freedb::search);
    window->open();
}

void freedb::search(const QString &text)
{
    if (cddb::SearchWords::of(text).isEmpty())
        return;
    m_queriesOnceMeasured = false;
    uFREEDB1->setSearchText(text);
    uFREEDB1->Search();
    beginAsking();
}

// What is shown

/// Points out the tracks whose length is not that of the file beside them.
void freedb::compareTimes()
{
    const Captions &captions = m_context.captions;
    const std::vector<ListedLine> &files = archivo->rows().lines();
    m_differing = 0;
    for (int row = 0; row < correlacion->rows().rowCount() && m_record; ++row) {
        const int track = correlacion->rows().lines()[static_cast<std::size_t>(row)].id;
        const std::optional<qint64> length = trackFrames(*m_record, track);
        const bool hasFile = static_cast<std::size_t>(row) < files.size();
        const std::optional<PlayedAudio> played =
            hasFile ? m_played[static_cast<std::size_t>(files[static_cast<std::size_t>(row)].id)] : std::nullopt;
        QString remark;
        if (const qint64 more = length && played ? framesOf(*played) - *length : 0;
            std::abs(more) > NotableDifference) {
            const QString seconds = QString::number(double(std::abs(more)) / FramesPerSecond, 'f', 1);
            remark = captions.text(more > 0 ? Text::LookupFileLonger : Text::LookupFileShorter).arg(seconds);
            ++m_differing;
        }
        correlacion->rows().setRemark(row, remark);
    }
    showStatus();
}

void freedb::showStatus()
{
    const Captions &captions = m_context.captions;
    QStringList lines;
    if (!m_status.isEmpty())
        lines << m_status;
    if (m_record) {
        const int files = archivo->rows().rowCount();
        const int tracks = correlacion->rows().rowCount();
        if (files != tracks)
            lines << captions.text(files > tracks ? Text::LookupMoreFiles : Text::LookupMoreTracks)
                         .arg(files)
                         .arg(tracks);
        if (m_differing > 0)
            lines << captions.text(Text::LookupTimesDiffer).arg(m_differing);
        lines << m_fields->remarks(captions);
    }
    m_statusLine->setText(lines.join(u'\n'));
}

void freedb::updateEnabling()
{
    const bool isIdle = !uFREEDB1->isBusy() && m_choice == nullptr && !m_isSaving;
    const bool hasFiles = !m_paths.isEmpty() && (!sel->isChecked() || archivo->selectionModel()->hasSelection());
    Command2->setEnabled(m_record && isIdle && hasFiles);
}

// Saving

std::vector<DiscFile> freedb::filesToSave() const
{
    const std::vector<bool> selected = archivo->selectionFlags();
    const std::vector<ListedLine> &files = archivo->rows().lines();
    const std::vector<ListedLine> &tracks = correlacion->rows().lines();
    std::vector<DiscFile> chosen;
    for (std::size_t row = 0; row < files.size(); ++row) {
        if (sel->isChecked() && !selected[row])
            continue;
        DiscFile file{m_paths[files[row].id], {}};
        if (row < tracks.size())
            file.row = {tracks[row].cells[Track], tracks[row].cells[Title]};
        chosen.push_back(std::move(file));
    }
    return chosen;
}

void freedb::save()
{
    const std::vector<DiscFile> files = filesToSave();
    const DiscFields fields = m_fields->fields();
    const int count = static_cast<int>(files.size());
    BatchOutcome outcome;
    m_isSaving = true;
    const QString statusBefore = m_status;
    m_status = m_context.captions.text(Text::LookupSaving);
    showStatus();
    showSaving(0, count);
    const bool ran = m_context.owner.runWithProgress(count, [&](BatchProgress &progress) {
        ForwardedProgress forwarded(progress, [this, count](int done) {
            QMetaObject::invokeMethod(
                this, [this, done, count] { showSaving(done, count); }, Qt::QueuedConnection);
        });
        outcome = saveDisc(files, fields, m_context.tagStore, m_context.state, forwarded);
    });
    m_isSaving = false;
    if (!ran) {
        endLookup(statusBefore);
        return;
    }
    m_context.owner.refreshList();
    m_status = m_context.captions.text(Text::LookupSaved).arg(outcome.doneCount());
    showStatus();
    pb->setValue(WholeProgress);
    tellOutcome(outcome, files);
}

/// What is told after the end comes too late.
void freedb::showSaving(int done, int count)
{
    if (m_isSaving && count > 0)
        pb->setValue(WholeProgress * done / count);
}

void freedb::tellOutcome(const BatchOutcome &outcome, const std::vector<DiscFile> &files)
{
    const Captions &captions = m_context.captions;
    QStringList lines;
    for (qsizetype row = 0; row < outcome.rowCount(); ++row) {
        if (outcome.outcome(row) == RowOutcome::Done)
            continue;
        const Error *error = outcome.error(row);
        const QString reason =
            error != nullptr ? captions.errorText(error->code) : captions.text(Text::OutcomeUntouched);
        lines << shownName(files[static_cast<std::size_t>(row)].path) + QStringLiteral(": ") + reason;
    }
    if (lines.isEmpty())
        return;
    const QString headline = captions.text(Text::OutcomeSave).arg(outcome.doneCount()).arg(lines.size());
    QDialog *box = nullptr;
    if (outcome.hasError(ErrorCode::LowSpace)) {
        auto *refusal = new QMessageBox(
            QMessageBox::Critical, windowTitle(), captions.errorText(ErrorCode::LowSpace), QMessageBox::Ok, this);
        refusal->setObjectName(QStringLiteral("error"));
        refusal->setInformativeText(headline);
        box = refusal;
    } else {
        box = new OutcomeBox(captions, headline, lines, this);
    }
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

} // namespace ravlin
