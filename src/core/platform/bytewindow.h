// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

#include <QByteArray>
#include <QByteArrayView>

#include <optional>
#include <span>
#include <string_view>

/// Random access for parsers: a source of bytes and a window that moves over it.
namespace ravlin::platform {

/// Bytes that can be read at any offset.
class ByteSource
{
public:
    virtual ~ByteSource() = default;
    virtual qint64 size() const = 0;
    /// Reads up to buffer.size() bytes from offset; fewer only at the end.
    virtual Result<qint64> readAt(std::span<char> buffer, qint64 offset) = 0;
};

/// Bytes in memory. Does not own them.
class MemorySource final : public ByteSource
{
public:
    explicit MemorySource(QByteArrayView bytes) : m_bytes(bytes) {}
    qint64 size() const override { return m_bytes.size(); }
    Result<qint64> readAt(std::span<char> buffer, qint64 offset) override;

private:
    QByteArrayView m_bytes;
};

/// The first size bytes of an open file. Does not own it.
class FileSource final : public ByteSource
{
public:
    FileSource(File &file, qint64 size) : m_file(file), m_size(size) {}
    qint64 size() const override { return m_size; }
    Result<qint64> readAt(std::span<char> buffer, qint64 offset) override { return m_file.readAt(buffer, offset); }

private:
    File &m_file;
    qint64 m_size;
};

/// The same for parsers that go over the start of a file several times: that is read once and kept.
class FileSourceWithStart final : public ByteSource
{
public:
    FileSourceWithStart(File &file, qint64 size) : m_file(file), m_size(size) {}
    qint64 size() const override { return m_size; }
    Result<qint64> readAt(std::span<char> buffer, qint64 offset) override;

private:
    static constexpr qint64 StartSize = 8192;

    File &m_file;
    const qint64 m_size;
    QByteArray m_start; ///< empty: not read yet
};

/// A block of a source in memory, moved as bytes are requested. Each move fills the whole buffer, or what the source
/// has left. The buffer is the caller's and its size sets the reading pattern: small for headers that lie far apart,
/// large for walking a whole file.
///
/// A request beyond the end is refused before anything is read or allocated, so a size that a file only claims costs
/// nothing.
class ByteWindow
{
public:
    ByteWindow(ByteSource &source, std::span<char> buffer);
    /// A window over memory, which must outlive it. Copies nothing.
    explicit ByteWindow(std::string_view memory);

    /// The bytes from offset to the end of the window: at least wanted of them, unless the end comes first. wanted is
    /// at most the buffer's size. Valid until the next call. A source that ends early moves end() there.
    std::span<const uchar> at(qint64 offset, qsizetype wanted)
    {
        const qint64 available = m_start + m_length - offset;
        if (offset >= m_start && (available >= wanted || (available >= 0 && m_start + m_length == m_end)))
            return {m_bytes + (offset - m_start), size_t(available)};
        return load(offset);
    }

    /// Exactly the bytes [offset, offset + size), valid until the next call. Empty when they are not all below end() or
    /// cannot be read; after a failed read (see error()) always. A request larger than the buffer gets memory of its
    /// own. A source that ends early is an error: ChangedMeanwhile.
    std::string_view exactly(qint64 offset, qint64 size);

    /// Where the bytes end: the end of the source, or what setEnd() said.
    qint64 end() const { return m_end; }
    /// Hides the bytes from offset on.
    void setEnd(qint64 offset);
    /// The first failure to read.
    const std::optional<Error> &error() const { return m_error; }

private:
    std::span<const uchar> load(qint64 offset);
    bool fill(std::span<char> buffer, qint64 offset);

    ByteSource *m_source = nullptr; ///< nullptr: all of it is in memory
    std::span<char> m_buffer;
    const uchar *m_bytes = nullptr;
    qint64 m_start = 0;  ///< offset of the window in the source
    qint64 m_length = 0; ///< bytes in the window
    qint64 m_end = 0;
    QByteArray m_large;
    std::optional<Error> m_error;
};

} // namespace ravlin::platform
