#include "core/storage/redoformat.h"

#include "core/platform/fileio.h"
#include "core/storage/writeplan.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QIODevice>

#include <algorithm>

namespace ravlin::platform {
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
        << header.keepModified << encodePath(header.name);
    block.append(AtomicBlockSize - block.size(), '\0');
    return block;
}

/// A name that stays in its folder.
bool isPlainName(const QString &name)
{
    return !name.isEmpty() && name != QStringLiteral(".") && name != QStringLiteral("..") &&
           !name.contains(Separator) && !name.contains(QChar(0)) && !name.contains(u'/');
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
    header.name = decodePath(name);
    if (in.status() != QDataStream::Ok || !isPlainName(header.name))
        return std::nullopt;
    return header;
}

Result<QByteArray> makeTrailer(File &redo, qint64 trailerOffset)
{
    QCryptographicHash digest(DigestKind);
    for (qint64 offset = 0; offset < trailerOffset;) {
        const qint64 length = std::min(DigestChunk, trailerOffset - offset);
        const auto bytes = readExactly(redo, offset, length);
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

Result<void> writeRedoHeader(File &redo, const RedoHeader &header)
{
    return writeAll(redo, encodeHeader(header), 0);
}

Result<void> writeRedoTrailer(File &redo, const RedoHeader &header)
{
    // Without this an old content of no bytes would leave the gap before it outside the file.
    if (auto grown = redo.truncate(header.trailerOffset()); !grown)
        return grown;
    const auto trailer = makeTrailer(redo, header.trailerOffset());
    if (!trailer)
        return tl::unexpected(trailer.error());
    return writeAll(redo, *trailer, header.trailerOffset());
}

Result<std::optional<RedoHeader>> readRedo(File &redo)
{
    const auto info = redo.info();
    if (!info)
        return tl::unexpected(info.error());
    if (info->size < AtomicBlockSize + TrailerSize)
        return std::nullopt;
    const auto block = readExactly(redo, 0, AtomicBlockSize);
    if (!block)
        return tl::unexpected(block.error());
    const auto header = decodeHeader(*block);
    // The sizes are checked one by one before they are added up: they may be anything.
    if (!header || header->newSize < 0 || header->newSize > info->size || header->oldSize < 0 ||
        header->oldSize > info->size || header->trailerOffset() + TrailerSize != info->size)
        return std::nullopt;
    const auto wanted = makeTrailer(redo, header->trailerOffset());
    const auto present = readExactly(redo, header->trailerOffset(), TrailerSize);
    if (!wanted || !present)
        return tl::unexpected(wanted ? present.error() : wanted.error());
    if (*wanted != *present)
        return std::nullopt;
    return header;
}

} // namespace ravlin::platform
