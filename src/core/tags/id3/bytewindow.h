// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

#include <array>
#include <string_view>

namespace ravlin {

/// Random access to the bytes of a file (or of memory) with one small read-ahead buffer, for parsers that look at
/// headers and skip most of what lies between. Never allocates for sizes that a header only claims: a request beyond
/// the end is refused before anything is read. Reads at most what at() asks for, rounded up to one buffer.
class ByteWindow
{
public:
    /// Reads from the file, up to end (bytes from its start).
    ByteWindow(platform::File &file, qint64 end);
    /// Reads from memory, which must outlive the window.
    explicit ByteWindow(std::string_view memory);

    qint64 end() const { return m_end; }
    /// The bytes [offset, offset + size), valid until the next call; empty when they are beyond the end or cannot be
    /// read (failure() tells).
    std::string_view at(qint64 offset, qint64 size);
    /// True when a read of the file failed; what was there is unknown then.
    bool failed() const { return m_failed; }
    const Error &failure() const { return m_failure; }

private:
    bool fill(char *buffer, qint64 offset, qint64 size);

    platform::File *m_file = nullptr;
    std::string_view m_memory;
    qint64 m_end = 0;
    qint64 m_bufferOffset = 0;
    qint64 m_bufferSize = 0;
    QByteArray m_large;
    Error m_failure;
    bool m_failed = false;
    std::array<char, 4096> m_buffer; // not initialised: it is filled before use
};

} // namespace ravlin
