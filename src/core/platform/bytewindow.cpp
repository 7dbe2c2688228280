// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/bytewindow.h"

#include <algorithm>
#include <cstring>

namespace ravlin::platform {

Result<qint64> MemorySource::readAt(std::span<char> buffer, qint64 offset)
{
    if (offset < 0 || offset >= m_bytes.size() || buffer.empty())
        return 0;
    const qint64 count = std::min<qint64>(qint64(buffer.size()), m_bytes.size() - offset);
    std::memcpy(buffer.data(), m_bytes.data() + offset, size_t(count));
    return count;
}

Result<qint64> FileSourceWithStart::readAt(std::span<char> buffer, qint64 offset)
{
    const qint64 kept = std::min(m_size, StartSize);
    if (offset < 0 || offset + std::ssize(buffer) > kept)
        return m_file.readAt(buffer, offset);
    if (m_start.isEmpty()) {
        QByteArray start(kept, Qt::Uninitialized);
        const auto got = m_file.readAt({start.data(), size_t(kept)}, 0);
        if (!got || *got < kept) // the file has become shorter
            return m_file.readAt(buffer, offset);
        m_start = std::move(start);
    }
    std::memcpy(buffer.data(), m_start.constData() + offset, buffer.size());
    return std::ssize(buffer);
}

ByteWindow::ByteWindow(ByteSource &source, std::span<char> buffer)
    : m_source(&source), m_buffer(buffer), m_bytes(reinterpret_cast<const uchar *>(buffer.data())), m_end(source.size())
{
}

ByteWindow::ByteWindow(std::string_view memory)
    : m_bytes(reinterpret_cast<const uchar *>(memory.data())), m_length(std::ssize(memory)), m_end(m_length)
{
}

void ByteWindow::setEnd(qint64 offset)
{
    m_end = std::clamp<qint64>(offset, 0, m_end);
    m_length = std::clamp<qint64>(m_end - m_start, 0, m_length);
}

std::span<const uchar> ByteWindow::load(qint64 offset)
{
    if (offset < 0 || offset >= m_end || !m_source)
        return {};
    m_start = offset;
    m_length = 0;
    const qint64 wanted = std::min<qint64>(std::ssize(m_buffer), m_end - offset);
    const Result<qint64> got = m_source->readAt(m_buffer.first(size_t(wanted)), offset);
    if (!got && !m_error)
        m_error = got.error();
    m_length = got ? std::clamp<qint64>(*got, 0, wanted) : 0;
    if (m_length < wanted)
        m_end = offset + m_length;
    return {m_bytes, size_t(m_length)};
}

std::string_view ByteWindow::exactly(qint64 offset, qint64 size)
{
    if (offset < 0 || size <= 0 || size > m_end || offset > m_end - size || m_error)
        return {};
    if (m_source && size > std::ssize(m_buffer)) {
        m_large.resize(size);
        return fill({m_large.data(), size_t(size)}, offset) ? std::string_view(m_large.constData(), size_t(size))
                                                            : std::string_view();
    }
    if (offset < m_start || offset + size > m_start + m_length) {
        const qint64 wanted = std::min<qint64>(std::ssize(m_buffer), m_end - offset);
        m_length = 0;
        if (!fill(m_buffer.first(size_t(wanted)), offset))
            return {};
        m_start = offset;
        m_length = wanted;
    }
    return {reinterpret_cast<const char *>(m_bytes) + (offset - m_start), size_t(size)};
}

bool ByteWindow::fill(std::span<char> buffer, qint64 offset)
{
    const Result<qint64> read = m_source->readAt(buffer, offset);
    if (!read)
        m_error = read.error();
    else if (*read < std::ssize(buffer))
        m_error = Error{ErrorCode::ChangedMeanwhile, {}, QStringLiteral("the file became shorter while it was read")};
    return !m_error;
}

} // namespace ravlin::platform
