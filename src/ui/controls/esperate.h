// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QElapsedTimer>
#include <QString>
#include <QTimer>
#include <QWidget>

#include <chrono>

class QFrame;
class QLabel;
class QProgressBar;
class QPushButton;

namespace ravlin {

/// The wait window: how far a long operation has come.
///
/// The state (steps done and steps in all) is there from BeginProgress() on; the window itself comes up only once the
/// work has lasted ShowDelay and some is left, so that short work doesn't flash on the screen. It takes no focus away.
/// The user may close it, or click its frame, which does nothing to the work; the next BeginProgress() brings it back.
/// Work that can be stopped has a button for it; Esc and closing the window then ask for the stop, too, and the window
/// stays until the work has ended.
///
/// Used by the interface thread alone, whose event loop it needs to come up; see Busy.
class esperate : public QWidget
{
    Q_OBJECT

public:
    static constexpr std::chrono::milliseconds ShowDelay{300};

    explicit esperate(QWidget *parent = nullptr);

    /// Starts anew with 0 of this many steps done. 0 steps (or fewer) stand for a number that is not known.
    void BeginProgress(int steps);
    /// One more step is done; beyond the last one nothing changes.
    void StepProgress() { advance(1); }
    /// Closes the window. The state stays until the next BeginProgress().
    void EndProgress();

    /// As many calls of StepProgress() in one.
    void advance(int steps);
    /// For work that learns only on its way how many steps it has.
    void setSteps(int steps);
    /// Bytes done out of so many, instead of steps.
    void setBytes(qint64 done, qint64 total);
    /// Whether the work can be stopped; to be told before it begins.
    void setStoppable(bool stoppable);
    /// The caption of the button that stops the work.
    void setStopText(const QString &text);
    /// The file at work, shown with its middle left out where it is too long.
    void setCurrentFile(const QString &file);

    int value() const;
    int maximum() const;

Q_SIGNALS:
    /// The user wants the work to end; once for each work.
    void stopRequested();

protected:
    void showEvent(QShowEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void showCount();
    void showIfDue();
    bool isNearlyDone(std::chrono::milliseconds elapsed) const;
    void centre();
    void requestStop();

    QFrame *m_frame;
    QLabel *m_file;
    QLabel *m_count;
    QProgressBar *m_bar;
    QPushButton *m_stop;
    QTimer m_dueTimer;
    QElapsedTimer m_elapsed;
    bool m_atWork = false;
    bool m_isStoppable = false;
    bool m_dismissed = false; ///< by the user, for the rest of this work
};

} // namespace ravlin
