// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/mpeg/mpegsource.h"

#include "core/platform/filesystem.h"

#include <algorithm>
#include <cstring>

namespace ravlin::mpeg {

Result<qint64> MemorySource::readAt(std::span<char> buffer, qint64 offset)
{
    if (offset < 0 || offset >= m_bytes.size() || buffer.empty())
        return 0;
    const qint64 count = std::min<qint64>(qint64(buffer.size()), m_bytes.size() - offset);
    std::memcpy(buffer.data(), m_bytes.data() + offset, size_t(count));
    return count;
}

Result<qint64> FileSource::readAt(std::span<char> buffer, qint64 offset)
{
    return m_file.readAt(buffer, offset);
}

ByteWindow::ByteWindow(ByteSource &source, std::vector<char> &buffer)
    : m_source(source), m_buffer(buffer), m_end(source.size())
{
    const auto needed = size_t(std::clamp<qint64>(m_end, 1, Size));
    if (m_buffer.size() < needed)
        m_buffer.resize(needed);
    m_bytes = reinterpret_cast<const uchar *>(m_buffer.data());
}

void ByteWindow::setEnd(qint64 offset)
{
    m_end = std::clamp<qint64>(offset, 0, m_end);
    m_length = std::clamp<qint64>(m_end - m_start, 0, m_length);
}

std::span<const uchar> ByteWindow::load(qint64 offset)
{
    if (offset < 0 || offset >= m_end)
        return {};
    m_start = offset;
    m_length = 0;
    const qint64 wanted = std::min<qint64>(qint64(m_buffer.size()), m_end - offset);
    const Result<qint64> got = m_source.readAt(std::span(m_buffer.data(), size_t(wanted)), offset);
    if (!got && !m_error)
        m_error = got.error();
    m_length = got ? std::clamp<qint64>(*got, 0, wanted) : 0;
    if (m_length < wanted)
        m_end = offset + m_length;
    return {m_bytes, size_t(m_length)};
}

} // namespace ravlin::mpeg
