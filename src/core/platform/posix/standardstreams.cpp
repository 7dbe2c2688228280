// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/standardstreams.h"

#include "core/platform/filesystem.h"
#include "core/platform/posix/systemerror.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <clocale>
#include <csignal>
#include <cwchar>

namespace ravlin::platform {
namespace {

int descriptorOf(StandardStream stream)
{
    return stream == StandardStream::Output ? STDOUT_FILENO : STDERR_FILENO;
}

/// Waits until a stream that another program has made non-blocking takes bytes again.
void waitUntilWritable(int descriptor)
{
    constexpr int ForEver = -1;
    pollfd request{descriptor, POLLOUT, 0};
    uninterrupted([&request] { return ::poll(&request, 1, ForEver); });
}

} // namespace

void restrictLibrarySearch() {}

QStringList programArguments(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments += decodePath(QByteArray(argv[i]));
    return arguments;
}

std::optional<QString> commandLineText(int argc, char **argv)
{
    if (argc > 2)
        return std::nullopt;
    return argc > 1 ? decodePath(QByteArray(argv[1])) : QString();
}

void prepareStandardStreams()
{
    std::signal(SIGPIPE, SIG_IGN);
    // open() takes the lowest free number. Read-only, so that writing still fails as it should.
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (::fcntl(descriptor, F_GETFD) == -1 && errno == EBADF && ::open("/dev/null", O_RDONLY) != descriptor)
            return;
    }
    // For displayWidth. Any language will do whose characters are Unicode.
    if (std::setlocale(LC_CTYPE, "C.UTF-8") == nullptr)
        std::setlocale(LC_CTYPE, "");
}

void outliveFileSizeLimit()
{
    // A handler, for whatever we start would inherit an ignored signal.
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGXFSZ, &action, nullptr);
}

bool hasStream(StandardStream)
{
    return true; // whoever closed it wants to read nothing
}

bool isTerminal(StandardStream stream)
{
    return ::isatty(descriptorOf(stream)) == 1;
}

int displayWidth(char32_t character)
{
    static_assert(sizeof(wchar_t) == sizeof(char32_t), "wchar_t holds any character");
    return ::wcwidth(static_cast<wchar_t>(character));
}

Result<bool> writeTo(StandardStream stream, QByteArrayView bytes)
{
    const int descriptor = descriptorOf(stream);
    while (!bytes.isEmpty()) {
        const ssize_t written =
            uninterrupted([&] { return ::write(descriptor, bytes.data(), static_cast<size_t>(bytes.size())); });
        if (written >= 0) {
            bytes = bytes.sliced(written);
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            waitUntilWritable(descriptor);
        } else if (errno == EPIPE) {
            return false;
        } else {
            return systemError(errno, {}, "write");
        }
    }
    return true;
}

} // namespace ravlin::platform
