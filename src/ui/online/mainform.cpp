// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/online/mainform.h"

#include "core/app/idiomas.h"
#include "core/app/settings.h"
#include "core/app/showntext.h"
#include "ui/controls/elidedlabel.h"
#include "ui/controls/making.h"
#include "ui/controls/plain/messagebox.h"
#include "ui/controls/plain/plainlabel.h"

#include <QDir>
#include <QFileDialog>
#include <QFormLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QProgressBar>
#include <QPushButton>
#include <QStandardPaths>
#include <QStatusBar>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <utility>

using namespace Qt::StringLiterals;

namespace ravlin {

namespace {

constexpr QStringView PlaceKey = u"update geometry";
constexpr QStringView FolderKey = u"update folder"; ///< last download folder
constexpr std::chrono::milliseconds EstimateTick = std::chrono::seconds(1);
constexpr std::chrono::milliseconds ProgressTick(250);
constexpr QSize StartSize(720, 560);

enum Column
{
    FileColumn,
    PercentColumn,
    DescriptionColumn,
    VersionColumn,
    ColumnCount
};

QString chooseBySystem(QWidget *parent, const QString &title, const QString &start)
{
    QFileDialog dialog(parent, title, start);
    dialog.setObjectName(u"destination"_s);
    dialog.setFileMode(QFileDialog::Directory);
    dialog.setOption(QFileDialog::ShowDirsOnly);
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles().value(0) : QString();
}

QTreeWidgetItem *itemOf(const VersionRecord &record)
{
    auto *item = new QTreeWidgetItem(
        {shownLine(record.fileName), QString(), shownLine(record.description), shownLine(record.version)});
    for (const Column column : {FileColumn, DescriptionColumn, VersionColumn})
        item->setToolTip(column, item->text(column));
    return item;
}

} // namespace

mainform::mainform(Settings &settings, const Captions &captions, platform::FileSystem &fileSystem, QWidget *parent,
    const QString &address, const QString &version)
    : QDialog(parent), m_settings(settings), m_captions(captions), m_address(address), m_version(version),
      m_chooseFolder([this](const QString &title, const QString &start) { return chooseBySystem(this, title, start); }),
      m_check(fileSystem), m_download(fileSystem),
      m_queue(m_download,
          {[this](const QString &path, const std::function<void(bool)> &answer) { askToReplace(path, answer); },
              [this](const QString &fileName, const UpdateFailure &failure, const std::function<void()> &goOn) {
                  tellFailure(fileName, failure, goOn);
              }})
{
    setObjectName(u"mainform"_s);
    setSizeGripEnabled(true);
    createControls();
    createLayout();
    applyCaptions();
    connectControls();
    showState(ConnectionState::None);
    enableControls();
    restorePlace();
    m_fileList->setFocus();
}

void mainform::createControls()
{
    m_title = made<PlainLabel>("labeltitle", this);
    QFont large = m_title->font();
    large.setPointSizeF(large.pointSizeF() * 3 / 2);
    large.setBold(true);
    m_title->setFont(large);
    m_statusFrame = made<QGroupBox>("frame1", this);
    m_filesFrame = made<QGroupBox>("frame2", this);
    m_action = made<ElidedLabel>("labelstatus1", m_statusFrame);
    m_name = made<ElidedLabel>("labelfname", m_statusFrame);
    m_sizeCaption = made<PlainLabel>("label1", m_statusFrame);
    m_size = made<PlainLabel>("labelfs", m_statusFrame);
    m_destination = made<ElidedLabel>("labeldest", m_statusFrame);
    m_received = made<ElidedLabel>("labelst", m_statusFrame);
    m_estimate = made<PlainLabel>("estimate", m_statusFrame);
    m_checks = made<ElidedLabel>("checks", m_statusFrame);
    m_progressBar = made<QProgressBar>("progressbar1", m_statusFrame);
    m_progressBar->setTextVisible(false);
    m_progressBar->setValue(0);
    m_fileList = made<QTreeWidget>("filelist", m_filesFrame);
    m_fileList->setColumnCount(ColumnCount);
    m_fileList->setRootIsDecorated(false);
    m_fileList->setItemsExpandable(false);
    m_fileList->setUniformRowHeights(true);
    m_fileList->setAlternatingRowColors(true);
    m_fileList->setAllColumnsShowFocus(true);
    m_fileList->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_fileList->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_fileList->header()->setStretchLastSection(true);
    m_fileList->header()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_get = made<QPushButton>("cmdget", this);
    m_get->setDefault(true);
    m_cancel = made<QPushButton>("cancel", this);
    m_cancel->setAutoDefault(false);
    m_statusBar = made<QStatusBar>("autoupdst", this);
    m_statusBar->setSizeGripEnabled(false);
    m_state = made<ElidedLabel>("state", m_statusBar);
    m_statusBar->addWidget(m_state, 1);
    m_notThere = made<ElidedLabel>("failures", m_statusBar);
    m_statusBar->addWidget(m_notThere, 1);
    m_notThere->hide();
    m_estimateTimer = made<QTimer>("timer1", this);
    m_estimateTimer->setInterval(EstimateTick);
    m_progressTimer = made<QTimer>("timertimeout", this);
    m_progressTimer->setInterval(ProgressTick);
}

QGroupBox *mainform::statusFrame()
{
    auto *size = new QHBoxLayout;
    size->addWidget(m_sizeCaption);
    size->addWidget(m_size);
    size->addStretch();
    size->addWidget(m_estimate);
    auto *rows = new QVBoxLayout(m_statusFrame);
    rows->addWidget(m_action);
    rows->addWidget(m_name);
    rows->addWidget(m_destination);
    rows->addLayout(size);
    rows->addWidget(m_progressBar);
    rows->addWidget(m_received);
    rows->addWidget(m_checks);
    return m_statusFrame;
}

void mainform::createLayout()
{
    auto *list = new QVBoxLayout(m_filesFrame);
    list->addWidget(m_fileList);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_get);
    buttons->addWidget(m_cancel);
    auto *rows = new QVBoxLayout(this);
    rows->addWidget(m_title);
    rows->addWidget(m_filesFrame, 1);
    rows->addWidget(statusFrame());
    rows->addLayout(buttons);
    rows->addWidget(m_statusBar);
}

void mainform::applyCaptions()
{
    setWindowTitle(m_captions.text(Caption::ProgramUpdate));
    m_title->setText(m_captions.text(Caption::ProgramUpdate));
    m_statusFrame->setTitle(m_captions.text(Caption::UpdateStatus));
    m_filesFrame->setTitle(m_captions.text(Caption::FileList));
    m_sizeCaption->setText(m_captions.text(Caption::FileSize));
    m_name->setFullText(m_captions.text(Caption::FileName));
    m_destination->setFullText(m_captions.text(Caption::Destination));
    m_get->setText(m_captions.text(Caption::Download));
    m_get->setToolTip(m_captions.text(Text::TipDownload));
    m_cancel->setText(m_captions.text(Caption::Cancel));
    m_fileList->setHeaderLabels({m_captions.text(Caption::File), m_captions.text(Caption::Percent),
        m_captions.text(Caption::Description), m_captions.text(Caption::Version)});
    m_fileList->setAccessibleName(m_captions.text(Caption::FileList));
    m_progressBar->setAccessibleName(m_captions.text(Caption::Download));
    m_statusBar->setAccessibleName(m_captions.text(Text::NameStatusBar));
    m_download.setLeadingText(m_captions.text(Caption::UpdateStatus) + m_captions.mark(u':') + u' ');
    const int letter = fontMetrics().averageCharWidth();
    constexpr int FileLetters = 28;
    constexpr int PercentLetters = 12;
    constexpr int DescriptionLetters = 36;
    m_fileList->setColumnWidth(FileColumn, FileLetters * letter);
    m_fileList->setColumnWidth(PercentColumn, PercentLetters * letter);
    m_fileList->setColumnWidth(DescriptionColumn, DescriptionLetters * letter);
}

void mainform::connectControls()
{
    connect(m_get, &QPushButton::clicked, this, &mainform::download);
    connect(m_cancel, &QPushButton::clicked, this, [this] {
        if (m_check.isBusy() || m_queue.isBusy())
            abort();
        else
            reject();
    });
    connect(m_fileList, &QTreeWidget::itemSelectionChanged, this, &mainform::enableControls);
    connect(&m_check, &VersionCheck::stateChanged, this, &mainform::showState);
    connect(&m_download, &InetRetreive::stateChanged, this, &mainform::showState);
    connect(&m_download, &InetRetreive::sizeTold, this, &mainform::showSize);
    connect(&m_queue, &DownloadQueue::begun, this, &mainform::showBegun);
    connect(&m_queue, &DownloadQueue::downloaded, this,
        [this](int, const QString &path, bool isChecked) { showDownloaded(path, isChecked); });
    connect(&m_queue, &DownloadQueue::finished, this, &mainform::showFinished);
    connect(m_estimateTimer, &QTimer::timeout, this, &mainform::showEstimate);
    connect(m_progressTimer, &QTimer::timeout, this, &mainform::showProgress);
}

void mainform::restorePlace()
{
    const QByteArray place = QByteArray::fromBase64(m_settings.read(PlaceKey).toLatin1());
    if (!restoreGeometry(place))
        resize(StartSize);
}

void mainform::done(int result)
{
    m_check.cancel();
    m_queue.cancel();
    m_estimateTimer->stop();
    m_progressTimer->stop();
    m_settings.write(PlaceKey, QString::fromLatin1(saveGeometry().toBase64()));
    QDialog::done(result);
}

void mainform::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    // Once the window is visible.
    if (!std::exchange(m_hasChecked, true))
        QTimer::singleShot(0, this, &mainform::check);
}

void mainform::autoupdate(const QString &descriptor)
{
    if (descriptor.isEmpty())
        return;
    m_title->setText(u"autoupdate"_s);
    const QString text = QString(descriptor).remove(u'"');
    const qsizetype first = text.indexOf(u";;"_s);
    [[maybe_unused]] const qsizetype second = first < 0 ? -1 : text.indexOf(u";;"_s, first + 2);
}

void mainform::check()
{
    const auto tell = [this](const UpdateResult<VersionFile> &file) {
        if (file) {
            showVersions(*file);
            return;
        }
        if (file.error().kind == UpdateFailureKind::NoAddress) { // nothing is wrong
            openBox(MessageBox::Information, "packages", updateFailureText(m_captions, file.error()), {}, [](int) {});
        } else {
            showState(ConnectionState::Failed);
            tellFailure({}, file.error(), [] {});
        }
        enableControls();
    };
    const UpdateResult<QUrl> url = versionFileUrl(m_address);
    if (!url) {
        tell(tl::unexpected(url.error()));
        return;
    }
    m_versionFileUrl = *url;
    m_check.check(*url, tell);
}

void mainform::showVersions(const VersionFile &file)
{
    showStatus(u"ready to download"_s);
    m_versionFile = file;
    for (const VersionRecord &record : file.records)
        m_fileList->addTopLevelItem(itemOf(record));
    m_fileList->setCurrentItem(m_fileList->topLevelItem(0), FileColumn, QItemSelectionModel::NoUpdate);
    enableControls();
    const bool isNewer = isNewerVersion(file.version, m_version);
    const QString text = isNewer ? m_captions.text(Caption::NewVersion) + u": "_s + file.version
                                 : m_captions.text(Caption::LastVersion) + u": "_s + m_version;
    openBox(MessageBox::Information, "version", text, {}, [](int) {});
}

void mainform::showState(ConnectionState state)
{
    showStatus(state == ConnectionState::ResponseComplete ? u"download..."_s : connectionStateText(state));
}

void mainform::showStatus(const QString &text)
{
    m_state->setFullText(text);
}

void mainform::download()
{
    if (m_queue.isBusy() || m_check.isBusy())
        return;
    const QString folder = chooseFolder();
    if (folder.isEmpty())
        return;
    std::vector<DownloadQueue::Entry> entries;
    for (int row = 0; row < m_fileList->topLevelItemCount(); ++row) {
        QTreeWidgetItem *item = m_fileList->topLevelItem(row);
        item->setText(PercentColumn, {});
        if (item->isSelected())
            entries.push_back({row, m_versionFile.records[std::size_t(row)]});
    }
    m_entries = entries;
    m_failures.clear();
    m_checkedNames.clear();
    m_uncheckedNames.clear();
    m_checks->setFullText({});
    showFailures();
    m_queue.start(m_versionFileUrl, folder, std::move(entries));
    enableControls();
}

QString mainform::chooseFolder()
{
    QString start = m_settings.read(FolderKey);
    if (start.isEmpty() || !QDir(start).exists())
        start = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
    const QString chosen = m_chooseFolder(m_captions.text(Caption::SelectFolder), start);
    if (chosen.isEmpty())
        return {};
    const QString folder = QDir::toNativeSeparators(chosen);
    m_settings.write(FolderKey, folder);
    return folder;
}

void mainform::showBegun(int row, const QString &fileName, const QString &path)
{
    m_row = row;
    m_fileName = fileName;
    m_action->setFullText(m_captions.text(Caption::DownloadingFile) + u' ' + fileName);
    m_name->setFullText(m_captions.text(Caption::FileName) + u": "_s + fileName);
    m_destination->setFullText(m_captions.text(Caption::Destination) + u": "_s + path);
    m_size->clear();
    m_received->setFullText({});
    m_estimate->clear();
    m_progressBar->setRange(0, 1);
    m_progressBar->setValue(0);
    m_fileList->scrollToItem(m_fileList->topLevelItem(row));
}

void mainform::showSize()
{
    const DownloadProgress &progress = m_download.progress();
    m_size->setText(progress.sizeText());
    m_received->setFullText(progress.firstText());
    // Without a size the bar just shows activity.
    m_progressBar->setRange(0, progress.isTotalKnown() ? int(progress.total()) : 0);
    m_progressBar->setValue(0);
    m_rate = {};
    m_rate.measure({}, 0);
    m_clock.start();
    m_estimateTimer->start();
    m_progressTimer->start();
}

void mainform::showProgress()
{
    const DownloadProgress &progress = m_download.progress();
    if (progress.isTotalKnown())
        m_progressBar->setValue(int(progress.value()));
    m_received->setFullText(m_download.progressText());
    m_fileList->topLevelItem(m_row)->setText(PercentColumn, progress.percentText());
}

void mainform::showEstimate()
{
    const DownloadProgress &progress = m_download.progress();
    m_rate.measure(std::chrono::milliseconds(m_clock.elapsed()), progress.received());
    const std::optional<qint64> seconds =
        progress.isTotalKnown() ? m_rate.secondsFor(progress.total() - progress.value()) : std::nullopt;
    m_estimate->setText(seconds ? estimateText(m_captions.text(Caption::EstimatedTime), *seconds) : QString());
}

void mainform::showDownloaded(const QString &path, bool isChecked)
{
    m_estimateTimer->stop();
    m_progressTimer->stop();
    showProgress();
    m_estimate->clear();
    m_progressBar->setMaximum(std::max(m_progressBar->maximum(), 1));
    m_progressBar->setValue(m_progressBar->maximum());
    showStatus(u"download completed successfully. file saved to "_s + path);
    (isChecked ? m_checkedNames : m_uncheckedNames) << m_fileName;
    QStringList remarks;
    for (const auto &[text, names] :
        {std::pair(Text::UpdateUnchecked, m_uncheckedNames), std::pair(Text::UpdateChecked, m_checkedNames)}) {
        if (!names.isEmpty())
            remarks << m_captions.text(text).arg(names.join(u", "_s));
    }
    m_checks->setFullText(remarks.join(m_captions.mark(u';') + u' '));
}

void mainform::showFinished(bool hasReachedEnd)
{
    if (hasReachedEnd)
        m_received->setFullText(m_captions.text(Caption::DownloadFinished));
    else
        tellUntried();
    enableControls();
}

/// Names the files behind the one whose failure ended the run.
void mainform::tellUntried()
{
    for (const DownloadQueue::Entry &entry : m_entries) {
        if (entry.row > m_row)
            m_failures << entry.record.fileName;
    }
    showFailures();
}

/// The state's texts are the same whichever file they are about, and the next file's take their place.
void mainform::showFailures()
{
    m_notThere->setVisible(!m_failures.isEmpty());
    m_notThere->setFullText(m_captions.text(Text::UpdateNotDownloaded).arg(m_failures.join(u", "_s)));
}

void mainform::resetProgress()
{
    m_estimateTimer->stop();
    m_progressTimer->stop();
    m_estimate->clear();
    m_progressBar->setRange(0, 1);
    m_progressBar->setValue(0);
}

void mainform::abort()
{
    m_check.cancel();
    m_queue.cancel();
    resetProgress();
    showStatus(u"download aborted"_s);
    enableControls();
}

void mainform::enableControls()
{
    m_get->setEnabled(!m_check.isBusy() && !m_queue.isBusy() && !m_fileList->selectedItems().isEmpty());
}

void mainform::openBox(
    MessageBox::Icon icon, const char *name, const QString &text, const QString &reason, const Then &then)
{
    const auto buttons =
        icon == MessageBox::Question ? MessageBox::Yes | MessageBox::No : MessageBox::StandardButtons(MessageBox::Ok);
    auto *box = new MessageBox(icon, windowTitle(), text, buttons, this);
    box->setObjectName(QLatin1String(name));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setFurtherText(reason);
    if (icon == MessageBox::Question)
        box->setDefaultButton(MessageBox::No);
    connect(box, &MessageBox::finished, this, then);
    box->open();
}

void mainform::tellFailure(const QString &fileName, const UpdateFailure &failure, const std::function<void()> &goOn)
{
    resetProgress();
    if (failure.kind != UpdateFailureKind::Web && !fileName.isEmpty())
        showStatus(u"download aborted"_s);
    const QString reason = updateFailureText(m_captions, failure);
    if (!fileName.isEmpty()) {
        m_failures << fileName + u" ("_s + reason + u')';
        showFailures();
    }
    openBox(MessageBox::Critical, "error", u"error"_s,
        fileName.isEmpty() ? reason : fileName + m_captions.mark(u':') + u' ' + reason, [goOn](int) { goOn(); });
}

void mainform::askToReplace(const QString &path, const std::function<void(bool)> &answer)
{
    openBox(MessageBox::Question, "replace", m_captions.text(Text::UpdateReplace).arg(path), {},
        [answer](int button) { answer(button == MessageBox::Yes); });
}

} // namespace ravlin
