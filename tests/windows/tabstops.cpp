#include "app/ui/principal.h"
#include "app/ui/program.h"

#include <QApplication>
#include <QTabBar>
#include <QTest>

#include <cstdio>

namespace {

constexpr int MostStops = 60;

/// How many times the tab key is struck, from where the focus is after the start, until a control has it; -1: never.
int stopsTo(const QString &folder, const QString &name)
{
    ravlin::Program program;
    ravlin::principal window(program);
    window.show();
    QApplication::setActiveWindow(&window);
    window.openAtStart(folder);
    QCoreApplication::processEvents();
    for (int stops = 0; stops < MostStops; ++stops) {
        const QWidget *const focus = QApplication::focusWidget();
        const bool isBar = name == QStringLiteral("QTabBar") && qobject_cast<const QTabBar *>(focus) != nullptr;
        if (focus != nullptr && (focus->objectName() == name || isBar))
            return stops;
        QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget() : &window, Qt::Key_Tab);
    }
    return -1;
}

} // namespace

/// Usage: tabstops FOLDER CONTROL...
/// Tells the test of the installed program, which has nothing but a keyboard, where the window's controls are.
int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("ravlin"));
    const QStringList arguments = QApplication::arguments();
    for (const QString &name : arguments.mid(2))
        std::printf("%s %d\n", qPrintable(name), stopsTo(arguments.value(1), name));
    return 0;
}
