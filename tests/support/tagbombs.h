// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"
#include "support/mp3builder.h"

#include <QByteArray>

#include <algorithm>
#include <functional>

/// Tags that are made to cost a reader much: little on the disk, much in memory or time.
namespace ravlin::test {

/// A text frame of an ID3v2.3 or 2.4 tag whose body is compressed.
inline QByteArray compressedFrame(int majorVersion, const char *id, const QByteArray &body)
{
    QByteArray packed = qCompress(body, 9); // its first four bytes are the size, as ID3v2.3 has it
    if (majorVersion == 3)
        return frame(3, id, packed, 0x80);
    for (int i = 0; i < 4; ++i)
        packed[i] = static_cast<char>((body.size() >> (21 - 7 * i)) & 0x7F);
    return frame(4, id, packed, 0x09);
}

/// 1 MiB of zeros.
inline QByteArray zeros()
{
    return QByteArray(1 << 20, '\0');
}

/// A file whose tag has that many compressed frames of 1 MiB zeros each behind the other frames.
inline QByteArray bombFile(int majorVersion, const char *id, int count, const QByteArray &before = {})
{
    return id3v2(majorVersion, before + compressedFrame(majorVersion, id, zeros()).repeated(count)) + audio();
}

/// A file that is made while it is read, however large it claims to be: head, then the pattern again and again. Counts
/// what is read.
class GeneratedFile final : public platform::File
{
public:
    GeneratedFile(QByteArray head, const QByteArray &pattern, qint64 size)
        : m_head(std::move(head)), m_tile(pattern.repeated(1 + 100000 / pattern.size())), m_size(size)
    {
    }

    Result<qint64> readAt(std::span<char> buffer, qint64 offset) override
    {
        const qint64 count = std::clamp<qint64>(m_size - offset, 0, std::ssize(buffer));
        for (qint64 done = 0; done < count;) {
            const bool isHead = offset + done < m_head.size();
            const QByteArray &from = isHead ? m_head : m_tile;
            const qint64 begin = isHead ? offset + done : (offset + done - m_head.size()) % m_tile.size();
            const qint64 size = std::min<qint64>(count - done, from.size() - begin);
            std::copy_n(from.constData() + begin, size, buffer.data() + done);
            done += size;
        }
        if (failsAt >= offset && failsAt < offset + count)
            return tl::unexpected(Error{ErrorCode::Io, {}, {}});
        bytesRead += count;
        largestRead = std::max(largestRead, count);
        ++reads;
        if (afterRead)
            afterRead();
        return count;
    }
    Result<platform::FileInfo> info() override
    {
        platform::FileInfo info;
        info.size = m_size;
        info.isFile = true;
        return info;
    }
    Result<qint64> writeAt(std::span<const char>, qint64) override { return refused(); }
    Result<void> truncate(qint64) override { return refused(); }
    Result<void> sync() override { return refused(); }
    Result<qint64> copyFrom(File &, qint64, qint64, qint64) override { return refused(); }
    Result<void> takeOwner(File &) override { return refused(); }
    Result<void> takeAttributes(File &) override { return refused(); }
    Result<void> takePermissions(File &) override { return refused(); }
    void takeTimes(File &) override {}
    Result<void> setPermissions(quint32) override { return refused(); }
    void forgetCached() override {}
    Result<bool> isPrivate() override { return refused(); }
    Result<void> setModified(qint64) override { return refused(); }
    Result<bool> tryLock() override { return refused(); }

    qint64 bytesRead = 0;
    qint64 largestRead = 0;
    int reads = 0;
    qint64 failsAt = -1; ///< a byte that can't be read
    std::function<void()> afterRead;

private:
    static tl::unexpected<Error> refused() { return tl::unexpected(Error{ErrorCode::ReadOnly, {}, {}}); }

    QByteArray m_head;
    QByteArray m_tile;
    qint64 m_size;
};

/// The header of a tag whose body has that size.
inline QByteArray tagHeader(int majorVersion, quint8 flags, qint64 bodySize)
{
    QByteArray header = id3v2(majorVersion, {}).first(10);
    header[5] = static_cast<char>(flags);
    for (int i = 0; i < 4; ++i)
        header[6 + i] = static_cast<char>((bodySize >> (21 - 7 * i)) & 0x7F);
    return header;
}

} // namespace ravlin::test
