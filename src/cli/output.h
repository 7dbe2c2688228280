// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/error.h"

#include <QByteArray>
#include <QByteArrayView>

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

} // namespace ravlin::cli
