// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/bytewindow.h"

#include <QByteArray>

#include <stop_token>
#include <string_view>
#include <vector>

namespace ravlin::id3 {

/// The bytes of a tag, header and body, at the offsets that its frames' sizes count in. In most tags these are offsets
/// in the file. If the whole tag is unsynchronised (ID3v2.2, 2.3), the zeros after 0xFF are left out block by block as
/// bytes are requested; where the body ends is then found only by walking there.
class TagBody
{
public:
    /// end: of the body, in the file. window and stop must outlive this.
    TagBody(platform::ByteWindow &window, qint64 end, bool isUnsynchronised, const std::stop_token &stop);

    /// Whether the body goes on up to that offset, or further. False after a failed read or a stop, too.
    bool reaches(qint64 offset) { return offset <= m_end || (m_isUnsynchronised && walkTo(offset)); }
    /// Where the body ends. Valid once reaches() has said that it doesn't go further.
    qint64 end() const { return m_end; }
    /// Exactly the bytes [offset, offset + size), valid until the next call; see ByteWindow::exactly.
    std::string_view exactly(qint64 offset, qint64 size)
    {
        return m_isUnsynchronised ? decoded(offset, size) : m_window.exactly(offset, size);
    }
    /// Where that offset is in the file: behind a zero that the scheme demands there.
    qint64 fileOffset(qint64 offset) { return m_isUnsynchronised ? encodedOffset(offset) : offset; }
    /// The body is longer than what is walked through, and that was reached.
    bool isCut() const { return m_isCut; }

private:
    bool walkTo(qint64 offset);
    void walkBlocks(qint64 count);
    std::string_view decoded(qint64 offset, qint64 size);
    qint64 encodedOffset(qint64 offset);
    qint64 blockOf(qint64 offset) const;
    std::string_view encodedBlocks(qint64 first, qint64 count);
    bool appendBlock(qint64 block, QByteArray &bytes);

    platform::ByteWindow &m_window;
    const std::stop_token &m_stop;
    const qint64 m_fileEnd;
    const bool m_isUnsynchronised;
    bool m_isCut = false;
    bool m_isWhole = false; ///< there is nothing behind m_end
    qint64 m_end;           ///< how far the body was walked
    std::vector<qint64> m_blockBegins;
    QByteArray m_block; ///< decoded
    qint64 m_blockBegin = 0;
    QByteArray m_large;
    qint64 m_knownOffset = 0; ///< the last one whose place in the file was requested
    qint64 m_knownFileOffset = 0;
};

} // namespace ravlin::id3
