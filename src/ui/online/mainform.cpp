// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/online/mainform.h"

#include "core/app/settings.h"
#include "core/online/update/updatedescriptor.h"
#include "ui/controls/elidedlabel.h"
#include "ui/controls/making.h"

#include <QDir>
#include <QFileDialog>
#include <QFormLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QStandardPaths>
#include <QStatusBar>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <tuple>
#include <utility>

using namespace Qt::StringLiterals;

namespace ravlin {

namespace {

constexpr QStringView PlaceKey = u"update geometry";
constexpr QStringView FolderKey = u"update folder"; ///< that was downloaded into last
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
    auto *item = new QTreeWidgetItem({record.fileName, QString(), record.description, record.version});
    for (const Column column : {FileColumn, DescriptionColumn, VersionColumn})
        item->setToolTip(column, u"<qt>%1</qt>"_s.arg(item->text(column).toHtmlEscaped()));
    return item;
}

} // namespace

mainform::mainform(const UpdateContext &context, QWidget *parent)
    : QDialog(parent), m_context(context),
      m_chooseFolder([this](const QString &title, const QString &start) { return chooseBySystem(this, title, start); }),
      m_check(context.fileSystem), m_download(context.fileSystem),
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
    filelist->setFocus();
}

void mainform::createControls()
{
    labeltitle = made<QLabel>("labeltitle", this);
    QFont large = labeltitle->font();
    large.setPointSizeF(large.pointSizeF() * 3 / 2);
    large.setBold(true);
    labeltitle->setFont(large);
    frame1 = made<QGroupBox>("frame1", this);
    frame2 = made<QGroupBox>("frame2", this);
    labelstatus1 = made<ElidedLabel>("labelstatus1", frame1);
    labelfname = made<ElidedLabel>("labelfname", frame1);
    label1 = made<QLabel>("label1", frame1);
    labelfs = made<QLabel>("labelfs", frame1);
    labeldest = made<ElidedLabel>("labeldest", frame1);
    labelst = made<ElidedLabel>("labelst", frame1);
    m_estimate = made<QLabel>("estimate", frame1);
    m_checks = made<ElidedLabel>("checks", frame1);
    progressbar1 = made<QProgressBar>("progressbar1", frame1);
    progressbar1->setTextVisible(false);
    progressbar1->setValue(0);
    filelist = made<QTreeWidget>("filelist", frame2);
    filelist->setColumnCount(ColumnCount);
    filelist->setRootIsDecorated(false);
    filelist->setItemsExpandable(false);
    filelist->setUniformRowHeights(true);
    filelist->setAlternatingRowColors(true);
    filelist->setAllColumnsShowFocus(true);
    filelist->setSelectionMode(QAbstractItemView::ExtendedSelection);
    filelist->setEditTriggers(QAbstractItemView::NoEditTriggers);
    filelist->header()->setStretchLastSection(true);
    filelist->header()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    cmdget = made<QPushButton>("cmdget", this);
    cmdget->setDefault(true);
    m_cancel = made<QPushButton>("cancel", this);
    m_cancel->setAutoDefault(false);
    autoupdst = made<QStatusBar>("autoupdst", this);
    autoupdst->setSizeGripEnabled(false);
    m_state = made<ElidedLabel>("state", autoupdst);
    autoupdst->addWidget(m_state, 1);
    timer1 = made<QTimer>("timer1", this);
    timer1->setInterval(EstimateTick);
    timertimeout = made<QTimer>("timertimeout", this);
    timertimeout->setInterval(ProgressTick);
}

QGroupBox *mainform::statusFrame()
{
    auto *size = new QHBoxLayout;
    size->addWidget(label1);
    size->addWidget(labelfs);
    size->addStretch();
    size->addWidget(m_estimate);
    auto *rows = new QVBoxLayout(frame1);
    rows->addWidget(labelstatus1);
    rows->addWidget(labelfname);
    rows->addWidget(labeldest);
    rows->addLayout(size);
    rows->addWidget(progressbar1);
    rows->addWidget(labelst);
    rows->addWidget(m_checks);
    return frame1;
}

void mainform::createLayout()
{
    auto *list = new QVBoxLayout(frame2);
    list->addWidget(filelist);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cmdget);
    buttons->addWidget(m_cancel);
    auto *rows = new QVBoxLayout(this);
    rows->addWidget(labeltitle);
    rows->addWidget(frame2, 1);
    rows->addWidget(statusFrame());
    rows->addLayout(buttons);
    rows->addWidget(autoupdst);
}

void mainform::applyCaptions()
{
    const Captions &captions = m_context.captions;
    setWindowTitle(captions.text(Caption::ProgramUpdate));
    labeltitle->setText(captions.text(Caption::ProgramUpdate));
    frame1->setTitle(captions.text(Caption::UpdateStatus));
    frame2->setTitle(captions.text(Caption::FileList));
    label1->setText(captions.text(Caption::FileSize));
    labelfname->setFullText(captions.text(Caption::FileName));
    labeldest->setFullText(captions.text(Caption::Destination));
    cmdget->setText(captions.text(Caption::Download));
    cmdget->setToolTip(captions.text(Text::TipDownload));
    m_cancel->setText(captions.text(Caption::Cancel));
    filelist->setHeaderLabels({captions.text(Caption::File), captions.text(Caption::Percent),
        captions.text(Caption::Description), captions.text(Caption::Version)});
    filelist->setAccessibleName(captions.text(Caption::FileList));
    progressbar1->setAccessibleName(captions.text(Caption::Download));
    autoupdst->setAccessibleName(captions.text(Text::NameStatusBar));
    m_download.setLeadingText(captions.text(Caption::UpdateStatus) + u": "_s);
    const int letter = fontMetrics().averageCharWidth();
    constexpr int FileLetters = 28;
    constexpr int PercentLetters = 12;
    constexpr int DescriptionLetters = 36;
    filelist->setColumnWidth(FileColumn, FileLetters * letter);
    filelist->setColumnWidth(PercentColumn, PercentLetters * letter);
    filelist->setColumnWidth(DescriptionColumn, DescriptionLetters * letter);
}

void mainform::connectControls()
{
    connect(cmdget, &QPushButton::clicked, this, &mainform::download);
    connect(m_cancel, &QPushButton::clicked, this, [this] {
        if (m_check.isBusy() || m_queue.isBusy())
            abort();
        else
            reject();
    });
    connect(filelist, &QTreeWidget::itemSelectionChanged, this, &mainform::enableControls);
    connect(&m_check, &VersionCheck::stateChanged, this, &mainform::showState);
    connect(&m_download, &InetRetreive::stateChanged, this, &mainform::showState);
    connect(&m_download, &InetRetreive::sizeTold, this, &mainform::showSize);
    connect(&m_queue, &DownloadQueue::begun, this, &mainform::showBegun);
    connect(&m_queue, &DownloadQueue::downloaded, this,
        [this](int, const QString &path, bool isChecked) { showDownloaded(path, isChecked); });
    connect(&m_queue, &DownloadQueue::finished, this, &mainform::showFinished);
    connect(timer1, &QTimer::timeout, this, &mainform::showEstimate);
    connect(timertimeout, &QTimer::timeout, this, &mainform::showProgress);
}

void mainform::restorePlace()
{
    const QByteArray place = QByteArray::fromBase64(m_context.settings.read(PlaceKey).toLatin1());
    if (!restoreGeometry(place))
        resize(StartSize);
}

void mainform::done(int result)
{
    m_check.cancel();
    m_queue.cancel();
    timer1->stop();
    timertimeout->stop();
    m_context.settings.write(PlaceKey, QString::fromLatin1(saveGeometry().toBase64()));
    QDialog::done(result);
}

void mainform::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    // Once the window is there.
    if (!std::exchange(m_hasChecked, true))
        QTimer::singleShot(0, this, &mainform::check);
}

void mainform::autoupdate(const QString &descriptor)
{
    if (descriptor.isEmpty())
        return;
    labeltitle->setText(u"autoupdate"_s);
    std::ignore = DescriptorSeparators::of(descriptor);
}

void mainform::check()
{
    const auto tell = [this](const UpdateResult<VersionFile> &file) {
        if (file) {
            showVersions(*file);
            return;
        }
        showState(ConnectionState::Failed);
        tellFailure({}, file.error(), [] {});
        enableControls();
    };
    const UpdateResult<QUrl> url = versionFileUrl(m_context.address);
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
        filelist->addTopLevelItem(itemOf(record));
    filelist->setCurrentItem(filelist->topLevelItem(0), FileColumn, QItemSelectionModel::NoUpdate);
    enableControls();
    const Captions &captions = m_context.captions;
    const bool isNewer = isNewerVersion(file.version, m_context.version);
    const QString text = isNewer ? captions.text(Caption::NewVersion) + u": "_s + file.version
                                 : captions.text(Caption::LastVersion) + u": "_s + m_context.version;
    openBox(QMessageBox::Information, "version", text, {}, [](int) {});
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
    for (int row = 0; row < filelist->topLevelItemCount(); ++row) {
        QTreeWidgetItem *item = filelist->topLevelItem(row);
        item->setText(PercentColumn, {});
        if (item->isSelected())
            entries.push_back({row, m_versionFile.records[std::size_t(row)]});
    }
    m_checkedNames.clear();
    m_uncheckedNames.clear();
    m_checks->setFullText({});
    m_queue.start(m_versionFileUrl, folder, std::move(entries));
    enableControls();
}

QString mainform::chooseFolder()
{
    QString start = m_context.settings.read(FolderKey);
    if (start.isEmpty() || !QDir(start).exists())
        start = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
    const QString chosen = m_chooseFolder(m_context.captions.text(Caption::SelectFolder), start);
    if (chosen.isEmpty())
        return {};
    const QString folder = QDir::toNativeSeparators(chosen);
    m_context.settings.write(FolderKey, folder);
    return folder;
}

void mainform::showBegun(int row, const QString &fileName, const QString &path)
{
    const Captions &captions = m_context.captions;
    m_row = row;
    m_fileName = fileName;
    labelstatus1->setFullText(captions.text(Caption::DownloadingFile) + u' ' + fileName);
    labelfname->setFullText(captions.text(Caption::FileName) + u": "_s + fileName);
    labeldest->setFullText(captions.text(Caption::Destination) + u": "_s + path);
    labelfs->clear();
    labelst->setFullText({});
    m_estimate->clear();
    progressbar1->setRange(0, 1);
    progressbar1->setValue(0);
    filelist->scrollToItem(filelist->topLevelItem(row));
}

void mainform::showSize()
{
    const DownloadProgress &progress = m_download.progress();
    labelfs->setText(progress.sizeText());
    labelst->setFullText(progress.firstText());
    // Without a size the bar only shows that something goes on.
    progressbar1->setRange(0, progress.isTotalKnown() ? int(progress.total()) : 0);
    progressbar1->setValue(0);
    m_rate = {};
    m_rate.measure({}, 0);
    m_clock.start();
    timer1->start();
    timertimeout->start();
}

void mainform::showProgress()
{
    const DownloadProgress &progress = m_download.progress();
    if (progress.isTotalKnown())
        progressbar1->setValue(int(progress.value()));
    labelst->setFullText(m_download.progressText());
    filelist->topLevelItem(m_row)->setText(PercentColumn, progress.percentText());
}

void mainform::showEstimate()
{
    const DownloadProgress &progress = m_download.progress();
    m_rate.measure(std::chrono::milliseconds(m_clock.elapsed()), progress.received());
    const std::optional<qint64> seconds =
        progress.isTotalKnown() ? m_rate.secondsFor(progress.total() - progress.value()) : std::nullopt;
    m_estimate->setText(seconds ? estimateText(m_context.captions.text(Caption::EstimatedTime), *seconds) : QString());
}

void mainform::showDownloaded(const QString &path, bool isChecked)
{
    timer1->stop();
    timertimeout->stop();
    showProgress();
    m_estimate->clear();
    progressbar1->setMaximum(std::max(progressbar1->maximum(), 1));
    progressbar1->setValue(progressbar1->maximum());
    showStatus(u"download completed successfully. file saved to "_s + path);
    (isChecked ? m_checkedNames : m_uncheckedNames) << m_fileName;
    QStringList remarks;
    for (const auto &[text, names] :
        {std::pair(Text::UpdateUnchecked, m_uncheckedNames), std::pair(Text::UpdateChecked, m_checkedNames)}) {
        if (!names.isEmpty())
            remarks << m_context.captions.text(text).arg(names.join(u", "_s));
    }
    m_checks->setFullText(remarks.join(u"; "_s));
}

void mainform::showFinished(bool hasReachedEnd)
{
    if (hasReachedEnd)
        labelst->setFullText(m_context.captions.text(Caption::DownloadFinished));
    enableControls();
}

/// Ends what is under way, at the user's wish.
void mainform::abort()
{
    m_check.cancel();
    m_queue.cancel();
    timer1->stop();
    timertimeout->stop();
    m_estimate->clear();
    progressbar1->setRange(0, 1);
    progressbar1->setValue(0);
    showStatus(u"download aborted"_s);
    enableControls();
}

void mainform::enableControls()
{
    cmdget->setEnabled(!m_check.isBusy() && !m_queue.isBusy() && !filelist->selectedItems().isEmpty());
}

void mainform::openBox(
    QMessageBox::Icon icon, const char *name, const QString &text, const QString &reason, const Then &then)
{
    const auto buttons = icon == QMessageBox::Question ? QMessageBox::Yes | QMessageBox::No
                                                       : QMessageBox::StandardButtons(QMessageBox::Ok);
    auto *box = new QMessageBox(icon, windowTitle(), text, buttons, this);
    box->setObjectName(QLatin1String(name));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setTextFormat(Qt::PlainText);
    box->setInformativeText(reason);
    if (icon == QMessageBox::Question)
        box->setDefaultButton(QMessageBox::No);
    connect(box, &QMessageBox::finished, this, then);
    box->open();
}

void mainform::tellFailure(const QString &fileName, const UpdateFailure &failure, const std::function<void()> &goOn)
{
    timer1->stop();
    timertimeout->stop();
    m_estimate->clear();
    progressbar1->setRange(0, 1);
    progressbar1->setValue(0);
    if (failure.kind != UpdateFailureKind::Web && !fileName.isEmpty())
        showStatus(u"download aborted"_s);
    const QString reason = updateFailureText(m_context.captions, failure);
    openBox(QMessageBox::Critical, "error", u"error"_s, fileName.isEmpty() ? reason : fileName + u": "_s + reason,
        [goOn](int) { goOn(); });
}

void mainform::askToReplace(const QString &path, const std::function<void(bool)> &answer)
{
    openBox(QMessageBox::Question, "replace", m_context.captions.text(Text::UpdateReplace).arg(path), {},
        [answer](int button) { answer(button == QMessageBox::Yes); });
}

} // namespace ravlin
