// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/history/spool.h"

#include "core/platform/fileio.h"
#include "core/platform/path.h"

#include <QDataStream>
#include <QtEndian>

#include <zlib.h>

namespace ravlin::history {
namespace {

constexpr qint64 LongestSpool = 256LL * 1024 * 1024; ///< far beyond what is spooled
constexpr qsizetype LengthBytes = 4;
constexpr qsizetype SumBytes = 4;

enum class RecordKind : quint8
{
    Begin,
    End
};

QString readPath(QDataStream &in)
{
    QByteArray bytes;
    in >> bytes;
    return platform::decodePath(bytes);
}

quint32 checkSum(QByteArrayView record)
{
    const auto sum = ::crc32(0, reinterpret_cast<const Bytef *>(record.data()), static_cast<uInt>(record.size()));
    return static_cast<quint32>(sum);
}

/// With its length before it and a check sum behind it.
QByteArray framed(const QByteArray &record)
{
    StreamBytes out;
    out << record << checkSum(record);
    return out.bytes();
}

QByteArray encodedBegin(const SpooledChange &spooled)
{
    StreamBytes out;
    const storage::ChangeRecord &change = spooled.change;
    out << static_cast<quint8>(RecordKind::Begin) << spooled.number << spooled.entry << spooled.time
        << static_cast<qint32>(spooled.kind);
    out << platform::encodePath(spooled.folder) << spooled.reverts << spooled.reverted
        << static_cast<qint32>(change.kind);
    for (const QString *path : {&change.path, &change.newPath, &change.aside})
        out << platform::encodePath(*path);
    out << change.isFolder << change.before.size << change.before.modified << change.identity.volume
        << change.identity.inode << change.identity.born << static_cast<qint32>(change.way) << change.newSize
        << spooled.encoded.digest << spooled.encoded.values << static_cast<qint32>(change.inverse.size());
    for (const storage::Segment &segment : change.inverse)
        out << segment.oldOffset << segment.length << segment.bytes;
    return out.bytes();
}

template <typename Enum>
Enum readEnum(QDataStream &in)
{
    qint32 number = 0;
    in >> number;
    return static_cast<Enum>(number);
}

SpooledChange decodedBegin(QDataStream &in)
{
    SpooledChange spooled;
    storage::ChangeRecord &change = spooled.change;
    in >> spooled.number >> spooled.entry >> spooled.time;
    spooled.kind = readEnum<Kind>(in);
    spooled.folder = readPath(in);
    in >> spooled.reverts >> spooled.reverted;
    change.kind = readEnum<storage::ChangeKind>(in);
    for (QString *path : {&change.path, &change.newPath, &change.aside})
        *path = readPath(in);
    in >> change.isFolder >> change.before.size >> change.before.modified >> change.identity.volume >>
        change.identity.inode >> change.identity.born;
    change.way = readEnum<storage::ContentWay>(in);
    qint32 segments = 0;
    in >> change.newSize >> spooled.encoded.digest >> spooled.encoded.values >> segments;
    for (qint32 i = 0; i < segments && in.status() == QDataStream::Ok; ++i) {
        storage::Segment &segment = change.inverse.emplace_back();
        in >> segment.oldOffset >> segment.length >> segment.bytes;
    }
    return spooled;
}

QByteArray encodedEnd(const SpooledChange &spooled)
{
    StreamBytes out;
    out << static_cast<quint8>(RecordKind::End) << spooled.number << spooled.done.has_value();
    if (spooled.done) {
        const platform::FileInfo &after = spooled.done->after;
        out << after.size << after.modified << after.changed << after.inode << spooled.done->replaced
            << encodeTrashed(spooled.done->trashed);
    }
    return out.bytes();
}

void decodeEnd(QDataStream &in, std::vector<SpooledChange> &changes)
{
    qint64 number = 0;
    bool isDone = false;
    in >> number >> isDone;
    storage::ChangeDone done;
    QByteArray trashed;
    if (isDone)
        in >> done.after.size >> done.after.modified >> done.after.changed >> done.after.inode >> done.replaced >>
            trashed;
    done.trashed = decodeTrashed(trashed);
    for (SpooledChange &change : changes) {
        if (change.number == number) {
            change.isEnded = true;
            change.done = isDone ? std::optional(done) : std::nullopt;
        }
    }
}

} // namespace

Result<void> Spool::append(const SpooledChange &change)
{
    const QByteArray bytes = m_noted + framed(encodedBegin(change));
    return platform::writeAll(m_file, bytes, m_size).map([&] {
        m_size += bytes.size();
        m_noted.clear();
    });
}

void Spool::noteEnd(const SpooledChange &change)
{
    m_noted += framed(encodedEnd(change));
}

Result<void> Spool::clear()
{
    m_noted.clear();
    m_size = 0;
    return m_file.truncate(0);
}

Result<std::vector<SpooledChange>> Spool::read(platform::File &file)
{
    const auto info = file.info();
    if (!info)
        return tl::unexpected(info.error());
    const auto bytes = platform::readExactly(file, 0, std::min(info->size, LongestSpool));
    if (!bytes)
        return tl::unexpected(bytes.error());
    std::vector<SpooledChange> changes;
    for (qsizetype at = 0; at + LengthBytes + SumBytes <= bytes->size();) {
        const auto length = static_cast<qsizetype>(qFromBigEndian<quint32>(bytes->constData() + at));
        if (length > bytes->size() - at - LengthBytes - SumBytes)
            break;
        const QByteArray record = bytes->mid(at + LengthBytes, length);
        if (checkSum(record) != qFromBigEndian<quint32>(bytes->constData() + at + LengthBytes + length))
            break;
        at += LengthBytes + length + SumBytes;
        QDataStream in(record);
        in.setVersion(QDataStream::Qt_6_0);
        quint8 kind = 0;
        in >> kind;
        if (static_cast<RecordKind>(kind) == RecordKind::End)
            decodeEnd(in, changes);
        else
            changes.push_back(decodedBegin(in));
        if (in.status() != QDataStream::Ok)
            return tl::unexpected(Error{ErrorCode::Damaged, {}, QStringLiteral("the spool makes no sense")});
    }
    return changes;
}

} // namespace ravlin::history
