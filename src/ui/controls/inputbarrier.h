// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMouseEvent>
#include <QObject>
#include <QPointer>
#include <QWidget>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace ravlin {

/// While it exists, the user's input (mouse, keys, shortcuts, wheel, touch, drops, input methods, closing) reaches one
/// window only. Input for other windows is dropped, with two exceptions made good when the barrier goes: the main
/// window is closed if the user requested it, and a mouse button pressed before the barrier gets its release, without
/// which the widget under it would stay pressed.
///
/// Everything else (painting, timers, resizing) goes on. Accessibility clients call widgets directly and pass the
/// barrier; so does code that calls click() or trigger().
class InputBarrier : public QObject
{
    Q_OBJECT

public:
    /// Owns neither window; both may go before the barrier does. closeRequested is called when the user first wants the
    /// main window closed.
    InputBarrier(QWidget *openWindow, QWidget *mainWindow, std::function<void()> closeRequested = {});
    ~InputBarrier() override;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool isOfOpenWindow(const QObject *watched) const;
    bool isMainWindow(const QObject *watched) const;
    bool holdBackClose(const QObject *watched, QEvent *event);
    void dropInput(QObject *watched, QEvent *event);

    QPointer<QWidget> m_openWindow;
    QPointer<QWidget> m_mainWindow;
    std::function<void()> m_onCloseRequest;
    bool m_closeRequested = false;
    Qt::MouseButtons m_heldButtons; ///< pressed before the barrier and not released since
    std::vector<std::pair<QPointer<QObject>, std::unique_ptr<QEvent>>> m_releases;
};

} // namespace ravlin
