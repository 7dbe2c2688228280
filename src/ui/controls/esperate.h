// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QElapsedTimer>
#include <QString>
#include <QTimer>
#include <QWidget>

#include <chrono>

class QFrame;
class QProgressBar;
class QPushButton;

namespace ravlin {

class PlainLabel;

/// The wait window: how far a long operation has come.
///
/// The state (steps done and steps in all) exists from BeginProgress() on; the window appears only once the work has
/// lasted ShowDelay and some is left, so that short work doesn't flash on the screen. The user may close it, or click
/// its frame, without effect on the work; the next BeginProgress() brings it back. For work that can be stopped it has
/// a button, takes the focus, and Esc does what the button does; if closing it stops the work, too, it stays until the
/// work ends.
///
/// Used by the interface thread alone, and appears by its event loop; see Busy.
class esperate : public QWidget
{
    Q_OBJECT

public:
    static constexpr std::chrono::milliseconds ShowDelay{300};

    /// How the user can stop the work.
    enum class Stopping
    {
        No,
        ByButton,
        ByButtonOrClosing
    };

    explicit esperate(QWidget *parent = nullptr);

    /// Starts anew with 0 of this many steps done. 0 steps (or fewer): the number is unknown.
    void BeginProgress(int steps);
    /// One more step is done; does nothing beyond the last one.
    void StepProgress() { advance(1); }
    /// Closes the window. The state stays until the next BeginProgress().
    void EndProgress();

    /// The same for several steps.
    void advance(int steps);
    /// For work that learns only on its way how many steps it has.
    void setSteps(int steps);
    /// Bytes done out of so many, instead of steps.
    void setBytes(qint64 done, qint64 total);
    /// Call it before the work begins.
    void setStopping(Stopping way);
    /// The caption of the button that stops the work.
    void setStopText(const QString &text);
    /// The current file; a name that is too long loses its middle.
    void setCurrentFile(const QString &file);

    int value() const;
    int maximum() const;

Q_SIGNALS:
    /// The user wants the work to end; emitted once for each work.
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
    PlainLabel *m_file;
    PlainLabel *m_count;
    QProgressBar *m_bar;
    QPushButton *m_stop;
    QTimer m_dueTimer;
    QElapsedTimer m_elapsed;
    bool m_atWork = false;
    Stopping m_stopping = Stopping::No;
    bool m_dismissed = false; ///< by the user, for the rest of this work
};

} // namespace ravlin
