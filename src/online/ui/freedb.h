#pragma once

#include "online/discapply.h"
#include "online/disccontents.h"
#include "online/lookupfailure.h"
#include "online/xmcdrecord.h"
#include "platform/error.h"
#include "platform/filesystem.h"

#include <QDialog>
#include <QPointer>
#include <QStringList>

#include <functional>
#include <optional>
#include <vector>

class QCheckBox;
class QLabel;
class QProgressBar;
class QPushButton;
class QTimer;

namespace ravlin {

class Captions;
class DiscFieldsBox;
class MatchDialog;
class PageOwner;
class PlayingTimes;
class RowList;
class Settings;
class SplitPanel;
class TagStore;
class uFREEDB;
struct ProgramState;

/// What the window works with. All of it outlives the window.
struct FreedbContext
{
    PageOwner &owner;
    const ProgramState &state;
    TagStore &tagStore;
    const Captions &captions;
    Settings &settings;
    std::function<QString()> firstArtist; ///< what the main list shows as its first row's artist
    platform::FileSystem &fileSystem = platform::FileSystem::native();
};

/// The window that looks the selected files up in a CD database, lets the user put files and tracks side by side, and
/// writes album, track numbers and titles into the files' tags.
///
/// Once it is shown it measures the files' playing times and asks the database for the disc that they make; all of that
/// happens while the window can be used, and ends when it is closed. Nothing is written but by `Command2`, which is
/// enabled once a disc has been found: row by row the files get the tracks that stand beside them.
class freedb : public QDialog
{
    Q_OBJECT

public:
    /// The files are those that are selected in the main window now, in its order.
    explicit freedb(const FreedbContext &context, QWidget *parent = nullptr);
    ~freedb() override;

    /// Does nothing while tags are being saved.
    void done(int result) override;

protected:
    void showEvent(QShowEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void createControls();
    void arrange();
    void configureDatabase();
    void connectControls();
    void connectLookup();
    void applyCaptions();
    void applyIcons();
    void restorePlaces();
    void loadFiles();

    void tick();
    void measure();
    void showMeasuring();
    void takeMeasure(int file, const PlayedAudio &played);
    void takeFailure(int file, const Error &error);
    void query();
    void tellNotFound();
    void tellFailure(const LookupFailure &failure);
    void offerChoice();
    void endChoice(int result);
    void showRecord(const DiscRecord &record);
    void openSearch();
    void search(const QString &text);
    void beginAsking();
    void endLookup(const QString &status);

    std::vector<PlayedAudio> playedAudio() const;
    void compareTimes();
    void showStatus();
    void updateEnabling();

    std::vector<DiscFile> filesToSave() const;
    void save();
    void showSaving(int done, int count);
    void tellOutcome(const BatchOutcome &outcome, const std::vector<DiscFile> &files);

    FreedbContext m_context;
    QStringList m_paths;                              ///< by a row's id in archivo
    std::vector<std::optional<PlayedAudio>> m_played; ///< likewise, as far as measured
    std::optional<LookupFailure> m_notMeasured;       ///< the first file that could not be
    int m_measured = 0;
    bool m_hasBegun = false; ///< the first tick has come
    bool m_queriesOnceMeasured = true;
    bool m_isSaving = false;
    std::optional<DiscRecord> m_record; ///< what correlacion shows
    int m_differing = 0;                ///< rows whose playing times differ
    QString m_status;

    DiscFieldsBox *m_fields = nullptr; ///< tartista, talbum, ta_o, testilo
    SplitPanel *sp = nullptr;
    RowList *archivo = nullptr;
    RowList *correlacion = nullptr;
    QLabel *m_statusLine = nullptr;
    QProgressBar *pb = nullptr;
    QCheckBox *sel = nullptr;
    QPushButton *Pic = nullptr;
    QPushButton *Command2 = nullptr;
    QPushButton *m_close = nullptr;
    QTimer *timer1 = nullptr;
    uFREEDB *uFREEDB1 = nullptr;
    PlayingTimes *m_times = nullptr;
    QPointer<MatchDialog> m_choice;
};

} // namespace ravlin
