// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/app/programstate.h"
#include "core/platform/standardstreams.h"
#include "ui/app/principal.h"
#include "ui/app/program.h"
#include "ui/controls/icons.h"
#include "ui/controls/making.h"

#include <QApplication>
#include <QDir>
#include <QTimer>

namespace {

/// The command line as one text, made absolute, because windows show full paths.
QString commandLine(int argc, char *argv[])
{
    const QString text = ravlin::platform::commandLineText(argc, argv);
    if (text.isEmpty())
        return {};
    return QDir::toNativeSeparators(QDir::cleanPath(QDir::current().absoluteFilePath(text)));
}

} // namespace

int main(int argc, char *argv[])
{
    ravlin::platform::restrictLibrarySearch();
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("ravlin"));
    QApplication::setApplicationDisplayName(QStringLiteral("ravlin!"));
    QApplication::setApplicationVersion(QStringLiteral(RAVLIN_VERSION));
    // A Flatpak gives the desktop entry its own name, by which the window finds its icon.
    QApplication::setDesktopFileName(qEnvironmentVariable("FLATPAK_ID", QStringLiteral("ravlin")));
    QApplication::setWindowIcon(ravlin::programIcon());

    ravlin::openContextMenusByKey(&application);

    ravlin::Program program;
    ravlin::principal window(program);
    window.chooseAtFirstRun();
    window.show();
    // Show the window before reading its folder.
    const QString opened = ravlin::folderOfCommandLine(commandLine(argc, argv));
    QTimer::singleShot(0, &window, [&window, opened] { window.openAtStart(opened); });
    return QApplication::exec();
}
