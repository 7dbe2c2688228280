// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/app/openwindows.h"

#include <QCoreApplication>
#include <QEvent>

#include <algorithm>
#include <utility>

namespace ravlin {

namespace {

bool isProgramWindow(const QWidget *widget)
{
    const Qt::WindowType type = widget->windowType();
    return widget->isWindow() && type != Qt::Popup && type != Qt::ToolTip;
}

} // namespace

OpenWindows::OpenWindows(QObject *parent) : QObject(parent)
{
    QCoreApplication::instance()->installEventFilter(this);
}

void OpenWindows::closeAllBut(const QWidget *kept)
{
    // Closing a window may close, delete or open others.
    QList<QPointer<QWidget>> windows = m_windows;
    std::reverse(windows.begin(), windows.end());
    for (const QPointer<QWidget> &window : std::as_const(windows)) {
        if (window && window != kept && window->isVisible())
            window->close();
    }
}

bool OpenWindows::eventFilter(QObject *watched, QEvent *event)
{
    // A minimised window that comes back is shown by the system, not opened.
    if (event->type() == QEvent::Show && watched->isWidgetType() && !event->spontaneous()) {
        auto *widget = static_cast<QWidget *>(watched);
        if (isProgramWindow(widget)) {
            m_windows.removeIf([widget](const QPointer<QWidget> &window) { return !window || window == widget; });
            m_windows.append(widget);
        }
    }
    return false;
}

} // namespace ravlin
