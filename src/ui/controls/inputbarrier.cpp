// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controls/inputbarrier.h"

#include <QApplication>
#include <QWindow>

namespace ravlin {

namespace {

bool isInput(QEvent::Type type)
{
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::ShortcutOverride:
    case QEvent::Shortcut:
    case QEvent::Wheel:
    case QEvent::ContextMenu:
    case QEvent::InputMethod:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TabletPress:
    case QEvent::TabletMove:
    case QEvent::TabletRelease:
    case QEvent::Gesture:
    case QEvent::NativeGesture:
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
        return true;
    default:
        return false;
    }
}

bool isDrop(QEvent::Type type)
{
    return type == QEvent::DragEnter || type == QEvent::DragMove || type == QEvent::Drop;
}

/// Unlike menus and tooltips, which come and go by themselves.
bool isLastingWindow(const QObject *watched)
{
    Qt::WindowType type = Qt::Widget;
    if (const auto *widget = qobject_cast<const QWidget *>(watched); widget && widget->isWindow())
        type = widget->windowType();
    else if (const auto *window = qobject_cast<const QWindow *>(watched))
        type = window->type();
    return type == Qt::Window || type == Qt::Dialog;
}

} // namespace

InputBarrier::InputBarrier(QWidget *openWindow, QWidget *mainWindow, std::function<void()> closeRequested)
    : m_openWindow(openWindow), m_mainWindow(mainWindow), m_onCloseRequest(std::move(closeRequested)),
      m_heldButtons(QGuiApplication::mouseButtons())
{
    qApp->installEventFilter(this);
}

InputBarrier::~InputBarrier()
{
    qApp->removeEventFilter(this);
    for (auto &[receiver, release] : m_releases) {
        if (receiver)
            QCoreApplication::postEvent(receiver, release.release());
    }
    // Later, so that the code that ran the work can finish with the window first.
    if (m_closeRequested && m_mainWindow)
        QMetaObject::invokeMethod(m_mainWindow, &QWidget::close, Qt::QueuedConnection);
}

bool InputBarrier::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Close)
        return holdBackClose(watched, event);
    if (!isInput(event->type()) || isOfOpenWindow(watched))
        return false;
    dropInput(watched, event);
    return true;
}

bool InputBarrier::isOfOpenWindow(const QObject *watched) const
{
    if (!m_openWindow)
        return false;
    if (const auto *widget = qobject_cast<const QWidget *>(watched))
        return widget->window() == m_openWindow;
    return watched == m_openWindow->windowHandle();
}

bool InputBarrier::isMainWindow(const QObject *watched) const
{
    return m_mainWindow && (watched == m_mainWindow || watched == m_mainWindow->windowHandle());
}

bool InputBarrier::holdBackClose(const QObject *watched, QEvent *event)
{
    if (isOfOpenWindow(watched) || !isLastingWindow(watched))
        return false;
    event->ignore();
    if (isMainWindow(watched) && !std::exchange(m_closeRequested, true) && m_onCloseRequest)
        m_onCloseRequest();
    return true;
}

void InputBarrier::dropInput(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonRelease) {
        const Qt::MouseButton button = static_cast<QMouseEvent *>(event)->button();
        if (m_heldButtons.testFlag(button)) {
            m_heldButtons.setFlag(button, false);
            m_releases.emplace_back(watched, event->clone());
        }
    }
    // An accepted key never becomes a shortcut; a drop that isn't accepted shows as forbidden.
    event->setAccepted(!isDrop(event->type()));
}

} // namespace ravlin
