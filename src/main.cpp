// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/app/programstate.h"
#include "core/platform/standardstreams.h"
#include "ui/app/principal.h"
#include "ui/app/program.h"
#include "ui/controls/icons.h"
#include "ui/controls/making.h"
#include "ui/controls/plain/messagebox.h"

#include <QApplication>
#include <QDir>
#include <QTimer>

#include <optional>
#include <tuple>

using namespace Qt::StringLiterals;

namespace {

using ravlin::platform::StandardStream;

ravlin::Captions storedLanguage()
{
    ravlin::Captions captions;
    captions.chooseAtStart(ravlin::Settings());
    return captions;
}

/// What the option asks for; empty if the word is none.
QString answerTo(const QString &option)
{
    using ravlin::Text;
    if (option == u"--version")
        return u"ravlin %1\n"_s.arg(QStringLiteral(RAVLIN_VERSION));
    if (option != u"--help" && option != u"-h")
        return {};
    const ravlin::Captions captions = storedLanguage();
    return u"%1\n%2\n\n  --help     %3\n  --version  %4\n"_s.arg(captions.text(Text::UsageLine),
        captions.text(Text::UsageWhat), captions.text(Text::UsageHelp), captions.text(Text::UsageVersion));
}

/// Prints the text or, where nothing printed is read, shows it in a box. Returns false if it could not be written.
bool tell(StandardStream stream, const QString &text, int &argc, char *argv[])
{
    ravlin::platform::prepareStandardStreams();
    if (ravlin::platform::hasStream(stream))
        return ravlin::platform::writeTo(stream, text.toUtf8()).has_value();
    const QApplication application(argc, argv);
    ravlin::MessageBox(ravlin::MessageBox::Information, u"ravlin!"_s, text, ravlin::MessageBox::Ok).exec();
    return true;
}

int refuse(const QString &text)
{
    std::ignore = ravlin::platform::writeTo(StandardStream::Error, u"ravlin: %1\n"_s.arg(text).toUtf8());
    return 2;
}

} // namespace

int main(int argc, char *argv[])
{
    ravlin::platform::restrictLibrarySearch();
    ravlin::platform::outliveFileSizeLimit();
    const QString answer = answerTo(ravlin::platform::programArguments(argc, argv).value(0));
    if (!answer.isEmpty())
        return tell(StandardStream::Output, answer, argc, argv) ? 0 : 1;

    QApplication application(argc, argv); // takes the options of Qt out of the arguments
    QApplication::setApplicationName(QStringLiteral("ravlin"));
    QApplication::setApplicationDisplayName(QStringLiteral("ravlin!"));
    QApplication::setApplicationVersion(QStringLiteral(RAVLIN_VERSION));
    // A Flatpak gives the desktop entry its own name, by which the window finds its icon.
    QApplication::setDesktopFileName(qEnvironmentVariable("FLATPAK_ID", QStringLiteral("ravlin")));
    QApplication::setWindowIcon(ravlin::programIcon());
    const std::optional<QString> commandLine = ravlin::platform::commandLineText(argc, argv);
    if (!commandLine)
        return refuse(storedLanguage().text(ravlin::Text::OneFolderOnly));

    ravlin::openContextMenusByKey(&application);

    ravlin::Program program;
    ravlin::principal window(program);
    window.chooseAtFirstRun();
    window.show();
    // Show the window before reading its folder.
    const QString opened = ravlin::folderOfCommandLine(*commandLine, QDir::currentPath());
    QTimer::singleShot(0, &window, [&window, opened] { window.openAtStart(opened); });
    return QApplication::exec();
}
