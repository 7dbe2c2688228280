#include "app/ui/openwindows.h"

#include <QCoreApplication>
#include <QEvent>

#include <ranges>

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
    // Closing one may close or delete others, and may open one.
    const QList<QPointer<QWidget>> windows = m_windows;
    for (const QPointer<QWidget> &window : windows | std::views::reverse) {
        if (window && window != kept && window->isVisible())
            window->close();
    }
}

bool OpenWindows::eventFilter(QObject *watched, QEvent *event)
{
    // A window that comes back from being minimised is shown by the system, not opened.
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
