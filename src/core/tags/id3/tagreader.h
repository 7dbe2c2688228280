// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/tags/id3/id3v2.h"
#include "core/tags/id3/tagbody.h"

#include <array>

namespace ravlin::id3 {

/// Walks over a tag's frames once and fills its directory. Keeps to the budgets of id3v2.h: where one is used up the
/// walk ends and the tag is cut.
class TagReader
{
public:
    TagReader(Tag &tag, TagBody &body, Detail detail) : m_tag(tag), m_body(body), m_detail(detail) {}

    /// Call once. After a stop, and after a failed read (see ByteWindow::error), the tag is not to be used.
    void read(const std::stop_token &stop);

private:
    enum class Content
    {
        Readable,
        Unreadable, ///< encrypted, damaged, huge
        OverBudget
    };
    /// What was read of a field of the list.
    enum class Known : quint8
    {
        Nothing,
        Text,   ///< but a later frame may be preferred
        Settled ///< no later frame counts
    };

    qint64 skipExtendedHeader();
    std::optional<FrameHeader> frameHeaderAt(qint64 offset);
    qint64 frameSize(std::string_view sizeBytes, qint64 bodyOffset);
    bool plausibleFrameStart(qint64 offset);
    bool takeFrame(const FrameHeader &header, qint64 bodyOffset);
    bool isPreferred(const Frame &frame) const;
    bool decideOnList(const Frame &frame);
    Content readFrame(Frame &frame, qint64 bodyOffset);
    Content frameContent(const FrameHeader &frame, qint64 bodyOffset, std::string_view &content, QByteArray &scratch);
    Content decompress(std::string_view data, qint64 claimedSize, QByteArray &out);
    qsizetype textRoom() const;

    Tag &m_tag;
    TagBody &m_body;
    const Detail m_detail;
    std::array<Known, 64> m_known{}; ///< by frame kind
    int m_settledCount = 0;
    size_t m_frameCount = 0;
    qint64 m_textLeft = MaximumTextSize;
    qint64 m_heldLeft = MaximumHeldSize;
};

} // namespace ravlin::id3
