// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMouseEvent>
#include <QObject>
#include <QPointer>
#include <QWidget>

#include <memory>
#include <utility>
#include <vector>

namespace ravlin {

/// While it exists, the user's input (mouse, keys, shortcuts, wheel, touch, drops, input methods, closing) reaches one
/// window only. Whatever comes for another one is dropped and stays dropped, with two exceptions, both made up for when
/// the barrier goes: the main window is closed if that was asked for, and a mouse button that was down before gets its
/// release, without which the widget under it would stay pressed.
///
/// Everything else (painting, timers, resizing) goes on. Programs that act through the accessibility interface call
/// widgets directly and aren't held up; neither is code that calls click() or trigger().
class InputBarrier : public QObject
{
    Q_OBJECT

public:
    /// Both windows are the caller's and may go before the barrier does.
    InputBarrier(QWidget *openWindow, QWidget *mainWindow);
    ~InputBarrier() override;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool isOfOpenWindow(const QObject *watched) const;
    bool isMainWindow(const QObject *watched) const;
    bool holdBackClose(const QObject *watched, QEvent *event);
    void dropInput(QObject *watched, QEvent *event);

    QPointer<QWidget> m_openWindow;
    QPointer<QWidget> m_mainWindow;
    bool m_closeRequested = false;
    Qt::MouseButtons m_heldButtons; ///< down before the barrier and not released since
    std::vector<std::pair<QPointer<QObject>, std::unique_ptr<QEvent>>> m_releases;
};

} // namespace ravlin
