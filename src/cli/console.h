// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/error.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace ravlin::cli {

/// Buffers bytes for one stream. Writes nothing more after a failure.
class Output
{
public:
    /// Writes all bytes. Returns false if the reader has gone.
    using Sink = std::function<Result<bool>(QByteArrayView)>;

    Output(Sink sink, bool isTerminal) : m_sink(std::move(sink)), m_isTerminal(isTerminal) {}

    void write(QByteArrayView bytes);
    void flush();

    bool isTerminal() const { return m_isTerminal; }
    /// Whether writing is pointless: it failed, or the reader has gone.
    bool isBroken() const { return m_readerGone || m_error; }
    /// Why writing failed. A reader that has gone is not an error: it has seen what it wanted.
    const std::optional<Error> &error() const { return m_error; }

private:
    Sink m_sink;
    bool m_isTerminal;
    bool m_readerGone = false;
    std::optional<Error> m_error;
    QByteArray m_pending;
};

/// The program's exit status.
enum ExitStatus
{
    Success = 0,
    Failure = 1,
    Usage = 2
};

/// Takes a command's results and messages; remembers whether anything failed. Messages are written at once, after the
/// program's name. Whatever a text holds, it stays on its line and commands no terminal (see cli/text.h).
class Console
{
public:
    Console(Output out, Output err) : m_out(std::move(out)), m_err(std::move(err)) {}

    Output &out() { return m_out; }

    /// Writes a line to the results. Bytes of a path stay as they are; a line break in the text is escaped.
    void print(const QString &text);
    /// A warning, which is not a failure.
    void warn(const QString &text);
    /// A failure of one file. moreLines follow the text, each on a line of its own.
    void fail(const QString &path, const QString &text, const QStringList &moreLines = {});
    void fail(const QString &path, const Error &error);
    /// Called for each failure that has an error.
    void setFailureWatch(std::function<void(const QString &path, const Error &error)> watch)
    {
        m_failureWatch = std::move(watch);
    }
    /// Reports a wrong command line and the command whose help to read; empty means the program's. Returns the exit
    /// status.
    int refuse(const QString &command, const QString &text);

    /// Success, or Failure once fail() was called.
    int status() const { return m_status; }
    /// Flushes. Returns the given exit status, or Failure if the results could not be written.
    int finish(int status);

private:
    void message(const QString &text, const QStringList &moreLines = {});

    Output m_out;
    Output m_err;
    std::function<void(const QString &, const Error &)> m_failureWatch;
    int m_status = Success;
};

/// Describes an error in one line of English.
QString describe(const Error &error);

} // namespace ravlin::cli
