// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/storage/redoformat.h"

#include "core/platform/fileio.h"
#include "core/storage/writeplan.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QIODevice>

#include <algorithm>

namespace ravlin::storage {
namespace {

constexpr quint64 HeaderMagic = 0x5261766c696e5265;  // "RavlinRe"
constexpr quint64 TrailerMagic = 0x5261766c696e4f6b; // "RavlinOk"
constexpr quint32 FormatVersion = 1;
constexpr auto DigestKind = QCryptographicHash::Blake2b_256;
constexpr qint64 TrailerSize = 8 + 32;
constexpr qint64 DigestChunk = 256 * 1024;

qint64 toNextBlock(qint64 offset)
{
    return (offset + AtomicBlockSize - 1) / AtomicBlockSize * AtomicBlockSize;
}

QByteArray encodeHeader(const RedoHeader &header)
{
    QByteArray block;
    QDataStream out(&block, QIODevice::WriteOnly);
    out.setVersion(QDataStream::Qt_6_0);
    out << HeaderMagic << FormatVersion << header.inode << header.newSize << header.oldSize << header.oldModified
        << header.keepModified << platform::encodePath(header.name);
    block.append(AtomicBlockSize - block.size(), '\0');
    return block;
}

std::optional<RedoHeader> decodeHeader(const QByteArray &block)
{
    QDataStream in(block);
    in.setVersion(QDataStream::Qt_6_0);
    quint64 magic = 0;
    quint32 version = 0;
    RedoHeader header;
    QByteArray name;
    in >> magic >> version;
    if (magic != HeaderMagic || version != FormatVersion)
        return std::nullopt;
    in >> header.inode >> header.newSize >> header.oldSize >> header.oldModified >> header.keepModified >> name;
    header.name = platform::decodePath(name);
    if (in.status() != QDataStream::Ok || !platform::isPlainName(header.name))
        return std::nullopt;
    return header;
}

Result<QByteArray> makeTrailer(platform::File &redo, qint64 trailerOffset)
{
    QCryptographicHash digest(DigestKind);
    for (qint64 offset = 0; offset < trailerOffset;) {
        const qint64 length = std::min(DigestChunk, trailerOffset - offset);
        const auto bytes = platform::readExactly(redo, offset, length);
        if (!bytes)
            return bytes;
        digest.addData(*bytes);
        offset += length;
    }
    QByteArray trailer;
    QDataStream(&trailer, QIODevice::WriteOnly) << TrailerMagic;
    return trailer + digest.result();
}

} // namespace

qint64 RedoHeader::newOffset() const
{
    return AtomicBlockSize;
}

qint64 RedoHeader::oldOffset() const
{
    // On a block of its own, so that file systems that can share blocks do.
    return toNextBlock(newOffset() + newSize);
}

qint64 RedoHeader::trailerOffset() const
{
    return oldOffset() + oldSize;
}

Result<void> writeRedoHeader(platform::File &redo, const RedoHeader &header)
{
    return platform::writeAll(redo, encodeHeader(header), 0);
}

Result<void> writeRedoTrailer(platform::File &redo, const RedoHeader &header)
{
    // Without this an old content of no bytes would leave the gap before it outside the file.
    if (auto grown = redo.truncate(header.trailerOffset()); !grown)
        return grown;
    const auto trailer = makeTrailer(redo, header.trailerOffset());
    if (!trailer)
        return tl::unexpected(trailer.error());
    return platform::writeAll(redo, *trailer, header.trailerOffset());
}

Result<std::optional<RedoHeader>> readRedo(platform::File &redo)
{
    const auto info = redo.info();
    if (!info)
        return tl::unexpected(info.error());
    if (info->size < AtomicBlockSize + TrailerSize)
        return std::nullopt;
    const auto block = platform::readExactly(redo, 0, AtomicBlockSize);
    if (!block)
        return tl::unexpected(block.error());
    const auto header = decodeHeader(*block);
    // The sizes are checked one by one before they are added up: they may be anything.
    if (!header || header->newSize < 0 || header->newSize > info->size || header->oldSize < 0 ||
        header->oldSize > info->size || header->trailerOffset() + TrailerSize != info->size)
        return std::nullopt;
    const auto wanted = makeTrailer(redo, header->trailerOffset());
    const auto present = platform::readExactly(redo, header->trailerOffset(), TrailerSize);
    if (!wanted || !present)
        return tl::unexpected(wanted ? present.error() : wanted.error());
    if (*wanted != *present)
        return std::nullopt;
    return header;
}

} // namespace ravlin::storage
