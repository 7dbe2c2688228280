// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/error.h"
#include "ui/controls/outlookhint.h"
#include "ui/controls/pagecontext.h"

#include <QDialog>
#include <QPointer>

#include <functional>

class QCheckBox;
class QProgressBar;
class QPushButton;
class QTimer;

namespace ravlin {

class DiscFieldsBox;
class DiscLookup;
class DiscSaving;
class FacingLists;
class MatchDialog;
class PlainLabel;

struct DiscRecord;
struct LookupFailure;

/// The window that looks the selected files up in a CD database, lets the user put files and tracks side by side, and
/// writes album, track numbers and titles into the files' tags.
///
/// When shown, it measures the files' playing times and asks the database for the disc they make, while the window
/// stays usable. Closing the window ends this. Only `Command2`, which is enabled once a disc was found, writes: each
/// file gets the track beside it.
class freedb : public QDialog
{
    Q_OBJECT

public:
    /// Takes the files that are selected in the main window now, in its order. firstArtist returns the artist in the
    /// first row of the main list.
    freedb(const PageContext &context, std::function<QString()> firstArtist, QWidget *parent = nullptr);
    ~freedb() override;

    /// Does nothing while tags are being saved.
    void done(int result) override;

protected:
    void showEvent(QShowEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void createControls();
    void arrange();
    void connectControls();
    void connectLookup();
    void applyCaptions();
    void applyIcons();
    void restorePlaces();
    void loadFiles();

    void tick();
    void begin();
    void showMeasuring(int done, int count);
    void endMeasuring();
    void beginAsking();
    void endLookup(const QString &status);
    void tellIncomplete(int file, const Error &error);
    void tellNotFound();
    void tellFailure(const LookupFailure &failure);
    void offerChoice();
    void endChoice(int result);
    void showRecord(const DiscRecord &record);
    void openSearch();

    OutlookHint::Save wouldSave() const;
    void save();
    void showProgress(int done, int count);
    void setStatus(const QString &status);
    void showStatus();
    void updateEnabling();

    const PageContext m_context;
    const std::function<QString()> m_firstArtist;
    bool m_hasBegun = false; ///< after the first tick
    QString m_status;

    DiscFieldsBox *m_fields = nullptr; ///< tartista, talbum, ta_o, testilo
    FacingLists *m_lists = nullptr;    ///< archivo, correlacion
    PlainLabel *m_statusLine = nullptr;
    QProgressBar *m_progressBar = nullptr;
    QCheckBox *m_onlySelected = nullptr;
    QPushButton *m_searchAgain = nullptr;
    QPushButton *m_save = nullptr;
    QPushButton *m_close = nullptr;
    QTimer *m_timer = nullptr;
    DiscLookup *m_lookup = nullptr;
    DiscSaving *m_saving = nullptr;
    OutlookHint *m_outlook = nullptr;
    QPointer<MatchDialog> m_choice;
};

} // namespace ravlin
