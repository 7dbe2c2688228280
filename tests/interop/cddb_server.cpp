// SPDX-License-Identifier: GPL-3.0-or-later
// The tests' CD database as a program, for tests that are scripts.
//
// Usage: cddb_server [--level N] [--no-search] [--no-album] [--latin1] [--encrypted] [--fault NAME [--only COMMAND]]
// Prints "host:port" and then each requested address on a line of its own. Ends when its standard input does.
#include "support/cddbserver.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <cstdio>
#include <unistd.h>

using namespace ravlin::test;

namespace {

/// Removes an option and its value from the list. Returns the value, empty if the option is not there.
QByteArray taken(QStringList &words, QLatin1String option)
{
    const qsizetype place = words.indexOf(QString(option));
    if (place < 0 || place + 1 >= words.size())
        return {};
    words.removeAt(place);
    return words.takeAt(place).toUtf8();
}

bool configure(CddbServer &server, QStringList words)
{
    if (const QByteArray level = taken(words, QLatin1String("--level")); !level.isEmpty())
        server.setNewestLevel(level.toInt());
    const QByteArray fault = taken(words, QLatin1String("--fault"));
    const QByteArray only = taken(words, QLatin1String("--only"));
    if (!fault.isEmpty()) {
        if (!faultFromName(fault))
            return false;
        server.setFault(*faultFromName(fault), only);
    }
    server.setKnowsSearch(words.removeAll(QStringLiteral("--no-search")) == 0);
    server.setKnowsAlbum(words.removeAll(QStringLiteral("--no-album")) == 0);
    server.setAlwaysLatin1(words.removeAll(QStringLiteral("--latin1")) > 0);
    words.removeAll(QStringLiteral("--encrypted"));
    return words.isEmpty();
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments().sliced(1);
    using Security = CddbServer::Security;
    CddbServer server(words.contains(QStringLiteral("--encrypted")) ? Security::Encrypted : Security::Plain);
    if (!configure(server, words)) {
        std::fputs("cddb_server: what?\n", stderr);
        return 2;
    }
    server.setListener([](const QByteArray &target) {
        std::puts(target.constData());
        std::fflush(stdout);
    });
    std::puts(qPrintable(server.hostAndPort()));
    std::fflush(stdout);
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &application, [] {
        char bytes[16];
        if (read(STDIN_FILENO, bytes, sizeof bytes) <= 0)
            QCoreApplication::quit();
    });
    return QCoreApplication::exec();
}
