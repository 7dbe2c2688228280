// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/console.h"

#include "cli/text.h"
#include "core/app/idiomas.h"

using namespace Qt::StringLiterals;

namespace ravlin::cli {

void Output::write(QByteArrayView bytes)
{
    constexpr qsizetype PieceSize = 64 * 1024;
    if (isBroken())
        return;
    m_pending.append(bytes);
    if (m_pending.size() >= PieceSize)
        flush();
}

void Output::flush()
{
    if (!isBroken() && !m_pending.isEmpty()) {
        const Result<bool> written = m_sink(m_pending);
        if (!written)
            m_error = written.error();
        else
            m_readerGone = !*written;
    }
    m_pending.resize(0); // keeps the memory
}

void Console::print(const QString &text)
{
    m_out.write(encodedLine(text, m_out.isTerminal() ? Reader::Terminal : Reader::Program) + '\n');
}

void Console::message(const QString &text, const QStringList &moreLines)
{
    if (m_out.isTerminal())
        m_out.flush(); // keeps results and messages in order
    const Reader reader = m_err.isTerminal() ? Reader::Terminal : Reader::Log;
    m_err.write("ravlin-cli: " + encodedLine(text, reader) + '\n');
    for (const QString &line : moreLines)
        m_err.write(encodedLine(line, reader) + '\n');
    m_err.flush();
}

void Console::warn(const QString &text)
{
    message(text);
}

void Console::fail(const QString &path, const QString &text, const QStringList &moreLines)
{
    m_status = Failure;
    message((path.isEmpty() ? u"\"\""_s : path) + u": "_s + text, moreLines);
}

void Console::fail(const QString &path, const Error &error)
{
    if (m_failureWatch)
        m_failureWatch(path, error);
    fail(path, describe(error));
}

int Console::refuse(const QString &command, const QString &text)
{
    const QString program = command.isEmpty() ? u"ravlin-cli"_s : u"ravlin-cli "_s + command;
    message((command.isEmpty() ? QString() : command + u": "_s) + text, {u"Try '"_s + program + u" --help'."_s});
    return Usage;
}

int Console::finish(int status)
{
    m_out.flush();
    if (m_out.error())
        message(u"the output cannot be written ("_s + m_out.error()->detail + u')');
    return m_out.isBroken() ? int(Failure) : status;
}

QString describe(const Error &error)
{
    Captions english;
    english.fill();
    const QString meaning = english.errorText(error.code);
    // The other codes need no detail.
    const bool hasMore = error.code == ErrorCode::Io || error.code == ErrorCode::InvalidArgument ||
                         error.code == ErrorCode::Unsupported || error.code == ErrorCode::TooLarge ||
                         error.code == ErrorCode::VerifyFailed || error.code == ErrorCode::Settings ||
                         error.code == ErrorCode::NotMp3Content || error.code == ErrorCode::NotStorable;
    return hasMore && !error.detail.isEmpty() ? meaning + u" ("_s + error.detail + u')' : meaning;
}

} // namespace ravlin::cli
