// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/error.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <functional>
#include <optional>

namespace ravlin::cli {

/// Collects bytes for one stream and passes them on in large pieces. After a failure nothing more is written.
class Output
{
public:
    /// Writes all bytes; false: nobody reads them any more.
    using Sink = std::function<Result<bool>(QByteArrayView)>;

    Output(Sink sink, bool isTerminal) : m_sink(std::move(sink)), m_isTerminal(isTerminal) {}

    void write(QByteArrayView bytes);
    void flush();

    bool isTerminal() const { return m_isTerminal; }
    /// Whether writing has become pointless: it failed, or the reader has gone.
    bool isBroken() const { return m_readerGone || m_error; }
    /// Why writing failed. A reader that has gone is none: it has seen what it wanted.
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

/// Where a command's results and messages go; remembers whether anything failed. Messages are written at once and
/// carry the program's name.
class Console
{
public:
    Console(Output out, Output err) : m_out(std::move(out)), m_err(std::move(err)) {}

    Output &out() { return m_out; }

    /// A line on the results' stream; a path in it is written as its own bytes.
    void print(const QString &line);
    /// Something that the user should know, but no failure.
    void warn(const QString &text);
    /// What failed, and for which file.
    void fail(const QString &path, const QString &text);
    void fail(const QString &path, const Error &error);
    /// The command line makes no sense. command: whose help tells more; empty for the program's. Returns the exit
    /// status.
    int refuse(const QString &command, const QString &text);

    /// Success, or Failure after a call of fail().
    int status() const { return m_status; }
    /// Writes what is pending. Returns the exit status: the given one, or Failure if the results could not be written.
    int finish(int status);

private:
    void message(const QString &text);

    Output m_out;
    Output m_err;
    int m_status = Success;
};

/// What an error means, in one line of English.
QString describe(const Error &error);

} // namespace ravlin::cli
