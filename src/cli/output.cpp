// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/output.h"

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

} // namespace ravlin::cli
