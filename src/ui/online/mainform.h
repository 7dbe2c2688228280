// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/update/downloadqueue.h"
#include "core/online/update/updateaddress.h"
#include "core/online/update/versioncheck.h"
#include "ui/controls/plain/messagebox.h"

#include <QDialog>
#include <QElapsedTimer>
#include <QTimer>

#include <functional>

class QGroupBox;
class QProgressBar;
class QPushButton;
class QStatusBar;
class QTreeWidget;

namespace ravlin {

class Captions;
class ElidedLabel;
class PlainLabel;
class Settings;

/// The window that looks for a newer version when it opens, lists the files of the newest one, and downloads the
/// selected ones into a folder the user chooses. It never runs any of them.
///
/// Waits for the network on the event loop, so the window stays usable. The cancel button ends what is under way, and
/// closes the window if nothing is. Closing it ends everything and leaves nothing half done.
class mainform : public QDialog
{
    Q_OBJECT

public:
    /// Asks the user for a folder, given a title and a folder to start in. Returns an empty text for none.
    using ChooseFolder = std::function<QString(const QString &title, const QString &start)>;

    /// The references must outlive the window. version: of this program.
    mainform(Settings &settings, const Captions &captions, platform::FileSystem &fileSystem, QWidget *parent = nullptr,
        const QString &address = updateAddress(), const QString &version = runningVersion());

    void setChooseFolder(ChooseFolder choose) { m_chooseFolder = std::move(choose); }

    /// Takes an update descriptor: sets the title and finds the descriptor's first two separators, whose places nothing
    /// uses yet. Nothing calls it.
    void autoupdate(const QString &descriptor);

    void done(int result) override;

protected:
    void showEvent(QShowEvent *event) override;

private:
    void createControls();
    void createLayout();
    QGroupBox *statusFrame();
    void connectControls();
    void applyCaptions();
    void restorePlace();

    void check();
    void showVersions(const VersionFile &file);
    void showState(ConnectionState state);
    void showStatus(const QString &text);

    void download();
    QString chooseFolder();
    void showBegun(int row, const QString &fileName, const QString &path);
    void showSize();
    void showProgress();
    void showEstimate();
    void showDownloaded(const QString &path, bool isChecked);
    void showFailures();
    void showFinished(bool hasReachedEnd);
    void tellUntried();
    void resetProgress();
    void abort();
    void enableControls();

    using Then = std::function<void(int)>;
    void openBox(MessageBox::Icon icon, const char *name, const QString &text, const QString &reason, const Then &then);
    void tellFailure(const QString &fileName, const UpdateFailure &failure, const std::function<void()> &goOn);
    void askToReplace(const QString &path, const std::function<void(bool)> &answer);

    Settings &m_settings;
    const Captions &m_captions;
    const QString m_address;
    const QString m_version;
    ChooseFolder m_chooseFolder;
    VersionCheck m_check;
    InetRetreive m_download;
    DownloadQueue m_queue;
    QUrl m_versionFileUrl;
    VersionFile m_versionFile;
    bool m_hasChecked = false;
    int m_row = -1; ///< of the current file
    QString m_fileName;
    std::vector<DownloadQueue::Entry> m_entries; ///< of this run
    QStringList m_failures;                      ///< names of files with the reason why they are not there
    QStringList m_checkedNames;                  ///< verified by a checksum
    QStringList m_uncheckedNames;                ///< without one
    TransferRate m_rate;
    QElapsedTimer m_clock; ///< since the file's size was known

    PlainLabel *m_title = nullptr;
    QGroupBox *m_statusFrame = nullptr;
    QGroupBox *m_filesFrame = nullptr;
    ElidedLabel *m_action = nullptr;
    ElidedLabel *m_name = nullptr;
    PlainLabel *m_sizeCaption = nullptr;
    PlainLabel *m_size = nullptr;
    ElidedLabel *m_destination = nullptr;
    ElidedLabel *m_received = nullptr;
    PlainLabel *m_estimate = nullptr;
    ElidedLabel *m_checks = nullptr; ///< which files had a checksum
    QProgressBar *m_progressBar = nullptr;
    QTreeWidget *m_fileList = nullptr;
    QPushButton *m_get = nullptr;
    QPushButton *m_cancel = nullptr;
    QStatusBar *m_statusBar = nullptr;
    ElidedLabel *m_state = nullptr;    ///< in m_statusBar
    ElidedLabel *m_notThere = nullptr; ///< beside it: which files failed
    QTimer *m_estimateTimer = nullptr;
    QTimer *m_progressTimer = nullptr;
};

} // namespace ravlin
