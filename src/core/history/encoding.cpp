// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/history/encoding.h"

#include "core/platform/path.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QJsonArray>
#include <QJsonDocument>
#include <QtEndian>

#include <array>

namespace ravlin::history {
namespace {

using storage::Segment;

constexpr qsizetype ShortestPiece = 2 * 1024;
constexpr qsizetype LongestPiece = 64 * 1024;
constexpr quint64 CutMask = 0x1FFF'0000'0000'0000; ///< thirteen bits: a piece of 8 KB on average
constexpr qsizetype LongestInline = 8 * 1024;      ///< bytes of a segment that are not worth a piece
constexpr qsizetype WorthCompressing = 256;
constexpr qsizetype UsualValues = 256; ///< characters

enum class SegmentKind : quint8
{
    Kept,
    Inline,
    Compressed,
    Pieces
};

/// A random number for each byte (splitmix64).
constexpr std::array<quint64, 256> makeGears()
{
    std::array<quint64, 256> gears{};
    quint64 state = 0;
    for (quint64 &gear : gears) {
        state += 0x9E37'79B9'7F4A'7C15;
        quint64 mixed = state;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58'476D'1CE4'E5B9;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D0'49BB'1331'11EB;
        gear = mixed ^ (mixed >> 31);
    }
    return gears;
}

constexpr std::array<quint64, 256> Gears = makeGears();

/// The length of the piece at the beginning of the bytes.
qsizetype pieceLength(QByteArrayView bytes)
{
    const qsizetype most = std::min(bytes.size(), LongestPiece);
    quint64 gear = 0; // depends on the last 64 bytes
    for (qsizetype at = 0; at < most; ++at) {
        gear = (gear << 1) + Gears[static_cast<quint8>(bytes[at])];
        if (at >= ShortestPiece && (gear & CutMask) == 0)
            return at + 1;
    }
    return most;
}

Error damaged()
{
    return {ErrorCode::Damaged, {}, QStringLiteral("a change in the history makes no sense")};
}

Result<void> encodeFresh(StreamBytes &out, const QByteArray &bytes, const PieceKeeper &keep)
{
    if (bytes.size() > LongestInline) {
        const std::vector<QByteArray> pieces = piecesOf(bytes);
        out << static_cast<quint8>(SegmentKind::Pieces) << static_cast<quint32>(pieces.size());
        for (const QByteArray &piece : pieces) {
            const auto key = keep(piece);
            if (!key)
                return tl::unexpected(key.error());
            out << *key;
        }
        return {};
    }
    if (bytes.size() >= WorthCompressing) {
        const QByteArray compressed = qCompress(bytes);
        if (compressed.size() < bytes.size()) {
            out << static_cast<quint8>(SegmentKind::Compressed) << compressed;
            return {};
        }
    }
    out << static_cast<quint8>(SegmentKind::Inline) << bytes;
    return {};
}

Result<QByteArray> decodePieces(QDataStream &in, const PieceFinder &find)
{
    quint32 count = 0;
    in >> count;
    QByteArray bytes;
    for (quint32 i = 0; i < count && in.status() == QDataStream::Ok; ++i) {
        QByteArray key;
        in >> key;
        const auto piece = find(key);
        if (!piece)
            return piece;
        bytes += *piece;
    }
    return bytes;
}

Result<Segment> decodeSegment(QDataStream &in, const PieceFinder &find)
{
    quint8 kind = 0;
    in >> kind;
    QByteArray bytes;
    switch (static_cast<SegmentKind>(kind)) {
    case SegmentKind::Kept: {
        qint64 offset = 0;
        qint64 length = 0;
        in >> offset >> length;
        return Segment::kept(offset, length);
    }
    case SegmentKind::Inline:
        in >> bytes;
        return Segment::fresh(bytes);
    case SegmentKind::Compressed:
        in >> bytes;
        if (bytes.size() < 4 || qFromBigEndian<quint32>(bytes.constData()) > LongestInline)
            return tl::unexpected(damaged());
        return Segment::fresh(qUncompress(bytes));
    case SegmentKind::Pieces:
        return decodePieces(in, find).map([](const QByteArray &all) { return Segment::fresh(all); });
    }
    return tl::unexpected(damaged());
}

/// As JSON wants it between quotation marks.
void appendEscaped(QString &out, const QString &text)
{
    constexpr int HexDigits = 4;
    for (const QChar c : text) {
        if (c < u' ') {
            out += QStringLiteral("\\u") + QString::number(c.unicode(), 16).rightJustified(HexDigits, u'0');
            continue;
        }
        if (c == u'"' || c == u'\\')
            out += u'\\';
        out += c;
    }
}

} // namespace

std::vector<QByteArray> piecesOf(const QByteArray &bytes)
{
    std::vector<QByteArray> pieces;
    for (qsizetype at = 0; at < bytes.size();) {
        const qsizetype length = pieceLength(QByteArrayView(bytes).sliced(at));
        pieces.push_back(bytes.sliced(at, length));
        at += length;
    }
    return pieces;
}

Result<QByteArray> encodeSegments(const std::vector<Segment> &segments, const PieceKeeper &keep)
{
    StreamBytes out;
    for (const Segment &segment : segments) {
        if (segment.isKept()) {
            out << static_cast<quint8>(SegmentKind::Kept) << segment.oldOffset << segment.length;
        } else if (const auto encoded = encodeFresh(out, segment.bytes, keep); !encoded) {
            return tl::unexpected(encoded.error());
        }
    }
    return out.bytes();
}

Result<std::vector<Segment>> decodeSegments(const QByteArray &bytes, const PieceFinder &find)
{
    QDataStream in(bytes);
    in.setVersion(QDataStream::Qt_6_0);
    std::vector<Segment> segments;
    while (!in.atEnd()) {
        auto segment = decodeSegment(in, find);
        if (!segment)
            return tl::unexpected(segment.error());
        if (in.status() != QDataStream::Ok)
            return tl::unexpected(damaged());
        segments.push_back(std::move(*segment));
    }
    return segments;
}

QByteArray encodeValues(const std::vector<storage::ValueChange> &values)
{
    // By hand, since this is done for each file and Qt's JSON takes longer than the rest of recording it.
    QString text;
    text.reserve(UsualValues);
    for (const storage::ValueChange &value : values) {
        text += text.isEmpty() ? u"[[\"" : u",[\"";
        appendEscaped(text, value.name);
        text += u"\",\"";
        appendEscaped(text, value.before);
        text += u"\",\"";
        appendEscaped(text, value.after);
        text += u"\"]";
    }
    return text.isEmpty() ? QByteArray() : (text + u']').toUtf8();
}

std::vector<storage::ValueChange> decodeValues(const QByteArray &text)
{
    std::vector<storage::ValueChange> values;
    const QJsonArray all = QJsonDocument::fromJson(text).array();
    for (const QJsonValue one : all) {
        const QJsonArray parts = one.toArray();
        if (parts.size() == 3)
            values.push_back({parts[0].toString(), parts[1].toString(), parts[2].toString()});
    }
    return values;
}

QString withinValues(const QString &text)
{
    QString escaped;
    appendEscaped(escaped, text);
    return escaped;
}

QByteArray encodeTrashed(const std::optional<platform::TrashedItem> &item)
{
    if (!item)
        return {};
    StreamBytes out;
    out << platform::encodePath(item->original) << platform::encodePath(item->file) << platform::encodePath(item->info);
    return out.bytes();
}

std::optional<platform::TrashedItem> decodeTrashed(const QByteArray &bytes)
{
    if (bytes.isEmpty())
        return std::nullopt;
    QDataStream in(bytes);
    in.setVersion(QDataStream::Qt_6_0);
    QByteArray original;
    QByteArray file;
    QByteArray info;
    in >> original >> file >> info;
    if (in.status() != QDataStream::Ok)
        return std::nullopt;
    return platform::TrashedItem{
        platform::decodePath(original), platform::decodePath(file), platform::decodePath(info)};
}

QByteArray digestOf(const QByteArray &bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Blake2b_160);
}

} // namespace ravlin::history
