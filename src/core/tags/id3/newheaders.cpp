// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/id3/newheaders.h"

#include <QtEndian>

namespace ravlin::id3 {

namespace {

constexpr quint8 V24ExtendedCrc = 0x20;

} // namespace

QByteArray headerInOwnForm(const FrameHeader &frame, int majorVersion)
{
    QByteArray header(frame.id.data(), 4);
    header.resize(frame.headerSize);
    if (majorVersion == 4)
        writeSyncsafe(header.data() + 4, frame.bodySize, 4);
    else
        qToBigEndian(static_cast<quint32>(frame.bodySize), header.data() + 4);
    qToBigEndian(frame.flags, header.data() + 8);
    return header;
}

QByteArray headerBytes(const TagHeader &header, qint64 regionSize)
{
    QByteArray bytes("ID3");
    bytes += static_cast<char>(header.majorVersion);
    bytes += static_cast<char>(header.revision);
    bytes += static_cast<char>(header.flags & ~TagHeader::Footer);
    bytes.resize(TagHeaderSize);
    writeSyncsafe(bytes.data() + 6, regionSize - TagHeaderSize, 4);
    return bytes;
}

QByteArray extendedHeader(const TagHeader &header, QByteArray old, qint64 padding)
{
    if (old.isEmpty())
        return old;
    if (header.majorVersion == 3) {
        QByteArray bytes(10, '\0');
        bytes[3] = 6;
        qToBigEndian(static_cast<quint32>(padding), bytes.data() + 6);
        return bytes;
    }
    if (old.size() < 6 || (old[5] & V24ExtendedCrc) == 0)
        return old;
    // The flags' data follow them in the flags' order: a length byte alone for "update", a length byte and five bytes
    // for the checksum.
    const qsizetype crcAt = 6 + ((old[5] & 0x40) != 0 ? 1 : 0);
    old[5] = static_cast<char>(old[5] & ~V24ExtendedCrc);
    old.remove(crcAt, 6);
    writeSyncsafe(old.data(), old.size(), 4);
    return old;
}

} // namespace ravlin::id3
