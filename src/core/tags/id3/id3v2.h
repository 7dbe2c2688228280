// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/bytewindow.h"
#include "core/tags/id3/framekind.h"
#include "core/tags/id3/id3text.h"

#include <QByteArray>
#include <QString>

#include <array>
#include <optional>
#include <stop_token>
#include <string_view>
#include <vector>

/// Reads the ID3v2 tag at the start of a file: ID3v2.2, 2.3 and 2.4 (id3.org: id3v2-00, id3v2.3.0,
/// id3v2.4.0-structure), with unsynchronisation, extended headers, footers, compressed frames, and the common faults of
/// other programs. Only the directory of frames is kept. The frames' bytes stay in the file, so that what nobody edits
/// is never decoded and encoded again. id3v2writer.h writes.
namespace ravlin::id3 {

inline constexpr qint64 TagHeaderSize = 10;
/// Buffer of the windows over a tag, in bytes: one read brings the texts of most files.
inline constexpr size_t WindowSize = 4096;
/// The largest body that a tag header can state: 28 bits.
inline constexpr qint64 MaximumBodySize = (1 << 28) - 1;
/// Text frames with a larger body, decompressed or not, are carried along unread.
inline constexpr qint64 MaximumTextFrameSize = 1 << 20;

/// What reading one tag may cost, however the tag was made. No real tag comes near. A tag beyond that is cut: what was
/// read until then is there, and Tag::isCut() tells it.
inline constexpr size_t MaximumFrameCount = 8192;
inline constexpr qint64 MaximumDecompressedSize = 8 << 20; ///< bytes that compressed text frames become
inline constexpr qint64 MaximumTextSize = 16 << 20;        ///< bytes of text frames' bodies, as they are stored
inline constexpr qint64 MaximumHeldSize = 16 << 20;        ///< bytes of the directory and its texts in memory
/// Bytes of a tag that is unsynchronised as a whole. Its frames can't be skipped, as their sizes don't count the zeros
/// in between, but must be walked through.
inline constexpr qint64 MaximumUnsynchronisedSize = 64 << 20;
/// Of a text that the list shows no more characters than this are decoded.
inline constexpr qsizetype MaximumListText = 4096;

struct TagHeader
{
    int majorVersion = 3; ///< 2, 3, 4; others exist and are not read
    quint8 revision = 0;
    quint8 flags = 0;
    qint64 bodySize = 0; ///< bytes after the header, without a footer

    static constexpr quint8 Unsynchronisation = 0x80;
    static constexpr quint8 ExtendedHeader = 0x40; ///< in ID3v2.2: the whole tag is compressed
    static constexpr quint8 Footer = 0x10;         ///< ID3v2.4

    bool hasFooter() const { return majorVersion == 4 && (flags & Footer) != 0; }
    /// Header, body and footer, in bytes.
    qint64 regionSize() const { return TagHeaderSize + bodySize + (hasFooter() ? TagHeaderSize : 0); }
};

/// Whether three or four bytes can be a frame's identifier.
bool isIdentifier(std::string_view id);

/// Whether those bytes, the next ten of a tag's body or all that are left of it, can follow a frame: another frame,
/// padding, or the end.
bool canFollowFrame(std::string_view next);

/// Parses a tag header of at least ten bytes. Returns nothing if it is not one.
std::optional<TagHeader> parseTagHeader(std::string_view bytes);

/// A number of 7 bits a byte (ID3v2.4 structure §6.2), size bytes long. Returns -1 if a top bit is set.
qint64 readSyncsafe(std::string_view bytes);
void writeSyncsafe(char *out, qint64 value, int size);
qint64 readBigEndian(std::string_view bytes);

/// The unsynchronisation scheme (ID3v2.3 §5): a zero byte after each 0xFF where the scheme demands one.
QByteArray removeUnsynchronisation(std::string_view bytes);
QByteArray applyUnsynchronisation(std::string_view bytes);

struct FrameHeader
{
    std::array<char, 4> id{};
    int headerSize = 10; ///< 6 in ID3v2.2
    qint64 offset = 0;   ///< of the header, in the file
    qint64 bodyOffset = 0;
    qint64 end = 0; ///< offset + size(); more if the whole tag is unsynchronised
    qint64 bodySize = 0;
    quint16 flags = 0; ///< as stored; their meaning depends on the version
    /// The size is stored in the form of the other version, as what follows the frame shows.
    bool hasForeignSize = false;

    std::string_view identifier() const { return {id.data(), headerSize == 6 ? size_t{3} : size_t{4}}; }
    qint64 size() const { return headerSize + bodySize; }
};

/// One frame of the directory. Only the kinds that the program edits have text and comment.
struct Frame
{
    FrameHeader header;
    FrameKind kind = FrameKind::Other; ///< also Other: frames that can't be read here (encrypted, damaged, huge)
    QString text;
    QString description; ///< comments only
    QByteArray language; ///< comments only
    int valueCount = 0;  ///< of a text frame

    /// Whether this is a comment that a program keeps for itself (gains, gapless data, disc identifiers). The user does
    /// not see such comments.
    bool isPrivateComment() const;
};

/// How much of a tag to read.
enum class Detail
{
    ListFields, ///< frames that decide on title, artist, album, year and track; without framesEnd()
    Everything, ///< the whole directory
};

class Tag
{
public:
    /// Parses the tag at the start of a source: a file without its ID3v1 tag. Returns nothing if there is none. Fails
    /// only when reading does, or with Cancelled after a stop. A damaged tag is not an error: what can be read is
    /// there, and isWritable() is false.
    static Result<std::optional<Tag>> parse(
        platform::ByteSource &source, Detail detail, const std::stop_token &stop = {});

    const TagHeader &header() const { return m_header; }
    const std::vector<Frame> &frames() const { return m_frames; }
    /// The frame whose value the program shows for that kind: the first one that has a text; among those the comment
    /// without description, and the year frame of the tag's own version, come first. nullptr if there is no frame.
    const Frame *programFrame(FrameKind kind) const;

    /// False if the tag cannot be written without loss: it claims more than the file holds or is of an unknown kind.
    bool isWritable() const { return m_isWritable; }
    /// True if the tag is larger than what is read of one. Frames may be missing, so nothing is saved from it.
    bool isCut() const { return m_isCut; }
    /// Whether the whole tag is unsynchronised, as ID3v2.2 and 2.3 can have it.
    bool isUnsynchronised() const
    {
        return m_header.majorVersion < 4 && (m_header.flags & TagHeader::Unsynchronisation) != 0;
    }
    /// Where the frames begin, behind an extended header if there is one, and where the last one ends. In the file.
    qint64 framesBegin() const { return m_framesBegin; }
    qint64 framesEnd() const { return m_framesEnd; }
    /// Where the body ends, in the file.
    qint64 bodyEnd() const { return m_bodyEnd; }
    /// How many bytes compressed frames became, for tests.
    qint64 decompressedSize() const { return m_decompressedSize; }

private:
    friend class TagReader;

    TagHeader m_header;
    std::vector<Frame> m_frames;
    qint64 m_framesBegin = TagHeaderSize;
    qint64 m_framesEnd = TagHeaderSize;
    qint64 m_bodyEnd = TagHeaderSize;
    qint64 m_decompressedSize = 0;
    bool m_isWritable = true;
    bool m_isCut = false;
};

} // namespace ravlin::id3
