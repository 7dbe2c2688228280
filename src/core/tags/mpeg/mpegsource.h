// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/error.h"

#include <QByteArrayView>

#include <optional>
#include <span>
#include <vector>

namespace ravlin::platform {
class File;
}

/// Reading for the stream analysis: a source of bytes and a window that moves over it.
namespace ravlin::mpeg {

/// Bytes that can be read at any offset.
class ByteSource
{
public:
    virtual ~ByteSource() = default;
    virtual qint64 size() const = 0;
    /// Reads up to buffer.size() bytes from offset; fewer only at the end.
    virtual Result<qint64> readAt(std::span<char> buffer, qint64 offset) = 0;
};

/// Bytes in memory that somebody else keeps.
class MemorySource final : public ByteSource
{
public:
    explicit MemorySource(QByteArrayView bytes) : m_bytes(bytes) {}
    qint64 size() const override { return m_bytes.size(); }
    Result<qint64> readAt(std::span<char> buffer, qint64 offset) override;

private:
    QByteArrayView m_bytes;
};

/// An open file that somebody else keeps. Its size is the one at the start; a file that shrinks
/// meanwhile just ends earlier.
class FileSource final : public ByteSource
{
public:
    FileSource(platform::File &file, qint64 size) : m_file(file), m_size(size) {}
    qint64 size() const override { return m_size; }
    Result<qint64> readAt(std::span<char> buffer, qint64 offset) override;

private:
    platform::File &m_file;
    qint64 m_size;
};

/// A block of a source in memory, moved forward (or back) as bytes are asked for. The buffer is the
/// caller's, so that many files share one.
class ByteWindow
{
public:
    /// Bytes read at once. Blocks of this size stay in the processor's second-level cache while
    /// they are walked: measured faster than mapping the file and than larger blocks
    /// (docs/decisions/0005-analyser-reading.md).
    static constexpr qsizetype Size = 128 * 1024;
    /// Bytes that at() can be asked for.
    static constexpr qsizetype MaximumWanted = Size / 2;

    ByteWindow(ByteSource &source, std::vector<char> &buffer);

    /// The bytes from offset to the end of the window; at least wanted of them unless the end comes
    /// first. They are valid until the next call.
    std::span<const uchar> at(qint64 offset, qsizetype wanted)
    {
        const qint64 available = m_start + m_length - offset;
        if (offset >= m_start && (available >= wanted || (available >= 0 && m_start + m_length == m_end)))
            return {m_bytes + (offset - m_start), size_t(available)};
        return load(offset);
    }

    /// Where the bytes end that at() gives: the end of the source, or what setEnd() said.
    qint64 end() const { return m_end; }
    /// Hides what comes from offset on.
    void setEnd(qint64 offset);
    /// The first failure to read; after it the source seems to end there.
    const std::optional<Error> &error() const { return m_error; }

private:
    std::span<const uchar> load(qint64 offset);

    ByteSource &m_source;
    std::vector<char> &m_buffer;
    const uchar *m_bytes = nullptr;
    qint64 m_start = 0;  ///< offset of the window in the source
    qint64 m_length = 0; ///< bytes in the window
    qint64 m_end = 0;
    std::optional<Error> m_error;
};

} // namespace ravlin::mpeg
