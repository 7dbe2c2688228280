// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/id3/bytewindow.h"

#include <algorithm>

namespace ravlin {

// The buffer is left as it is on purpose: clearing it would cost more than most reads.
// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
ByteWindow::ByteWindow(platform::File &file, qint64 end) : m_file(&file), m_end(end) {}

// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
ByteWindow::ByteWindow(std::string_view memory) : m_memory(memory), m_end(static_cast<qint64>(memory.size())) {}

std::string_view ByteWindow::at(qint64 offset, qint64 size)
{
    if (offset < 0 || size <= 0 || size > m_end || offset > m_end - size || m_failed)
        return {};
    if (!m_file)
        return m_memory.substr(static_cast<size_t>(offset), static_cast<size_t>(size));

    const auto length = static_cast<size_t>(size);
    const auto capacity = static_cast<qint64>(m_buffer.size());
    if (size > capacity) {
        m_large.resize(size);
        return fill(m_large.data(), offset, size) ? std::string_view(m_large.constData(), length) : std::string_view();
    }
    if (offset < m_bufferOffset || offset + size > m_bufferOffset + m_bufferSize) {
        const qint64 wanted = std::min(capacity, m_end - offset);
        m_bufferSize = 0;
        if (!fill(m_buffer.data(), offset, wanted))
            return {};
        m_bufferOffset = offset;
        m_bufferSize = wanted;
    }
    return {m_buffer.data() + (offset - m_bufferOffset), length};
}

bool ByteWindow::fill(char *buffer, qint64 offset, qint64 size)
{
    const auto read = m_file->readAt({buffer, static_cast<size_t>(size)}, offset);
    if (!read) {
        m_failure = read.error();
        m_failed = true;
    } else if (*read < size) {
        m_failure = {ErrorCode::ChangedMeanwhile, {}, QStringLiteral("the file became shorter while it was read")};
        m_failed = true;
    }
    return !m_failed;
}

} // namespace ravlin
