// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: what is encoded comes back; the same picture inside different tags shares its pieces; bytes that make no
// sense are an error.

#include "core/history/encoding.h"

#include <QMap>
#include <QRandomGenerator>
#include <QSet>
#include <QTest>

#include <numeric>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::history;
using storage::Segment;

namespace {

QByteArray noise(quint32 seed, qsizetype size)
{
    QRandomGenerator random(seed);
    QByteArray bytes(size, '\0');
    for (char &byte : bytes)
        byte = static_cast<char>(random.generate());
    return bytes;
}

struct Pieces
{
    QMap<QByteArray, QByteArray> kept;
    PieceKeeper keeper()
    {
        return [this](const QByteArray &piece) -> Result<QByteArray> {
            const QByteArray key = digestOf(piece);
            kept.insert(key, piece);
            return key;
        };
    }
    PieceFinder finder()
    {
        return [this](const QByteArray &key) -> Result<QByteArray> {
            if (!kept.contains(key))
                return tl::unexpected(Error{ErrorCode::Damaged, {}, {}});
            return kept.value(key);
        };
    }
    qsizetype bytes() const
    {
        return std::accumulate(kept.begin(), kept.end(), qsizetype(0),
            [](qsizetype sum, const QByteArray &piece) { return sum + piece.size(); });
    }
};

} // namespace

class TestEncoding : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void segmentsComeBack()
    {
        const std::vector<Segment> segments{Segment::kept(7, 100), Segment::fresh("short"),
            Segment::fresh(QByteArray(3000, '\0')), Segment::fresh(noise(1, 300'000)),
            Segment::kept(1'000'000'000'000, 1)};
        Pieces pieces;
        const auto bytes = encodeSegments(segments, pieces.keeper());
        QVERIFY(bytes);
        QVERIFY2(bytes->size() < 4000, QByteArray::number(bytes->size()));
        const auto back = decodeSegments(*bytes, pieces.finder());
        QVERIFY(back);
        QVERIFY(*back == segments);
    }

    void aPictureIsKeptOnce()
    {
        const QByteArray picture = noise(1, 300'000);
        Pieces pieces;
        constexpr int Files = 50;
        for (quint32 file = 0; file < Files; ++file) {
            const QByteArray tag = noise(100 + file, 400 + file * 37) + picture + noise(1000 + file, 200);
            QVERIFY(encodeSegments({Segment::fresh(tag)}, pieces.keeper()));
        }
        // The picture once, and for each file what is cut off together with the texts at its ends.
        QVERIFY2(pieces.bytes() < picture.size() + Files * 60'000, QByteArray::number(pieces.bytes()));
        QVERIFY2(pieces.bytes() < Files * picture.size() / 5, QByteArray::number(pieces.bytes()));
    }

    void piecesMakeUpTheWhole()
    {
        const QByteArray bytes = noise(3, 500'000) + QByteArray(500'000, 'x');
        QByteArray joined;
        for (const QByteArray &piece : piecesOf(bytes)) {
            QVERIFY(piece.size() <= 64 * 1024);
            joined += piece;
        }
        QCOMPARE(joined, bytes);
    }

    void nonsenseIsAnError()
    {
        Pieces pieces;
        const QByteArray whole =
            *encodeSegments({Segment::kept(1, 2), Segment::fresh(noise(1, 20'000))}, pieces.keeper());
        for (qsizetype size = 1; size < whole.size(); ++size) {
            const auto decoded = decodeSegments(whole.left(size), pieces.finder());
            QVERIFY2(!decoded || size == 17, QByteArray::number(size)); // one whole segment
        }
        QVERIFY(!decodeSegments("\x09", pieces.finder()));
        // A compressed text that claims four gigabytes.
        QVERIFY(!decodeSegments(QByteArray::fromHex("02 00000005 ffffffff 00"), pieces.finder()));
        pieces.kept.clear();
        QVERIFY(!decodeSegments(whole, pieces.finder()));
    }

    void valuesComeBack()
    {
        const std::vector<storage::ValueChange> values{
            {u"genre"_s, u"Blues"_s, {}}, {u"title"_s, u"a \"b\" [c] ñ\u2028\\"_s, u"\u0001\U0001F3B5"_s}};
        QVERIFY(decodeValues(encodeValues(values)) == values);
        QVERIFY(encodeValues({}).isNull());
        QVERIFY(decodeValues("[1,[2],[\"a\",\"b\"]]").empty());
        QVERIFY(encodeValues(values).contains(withinValues(u"\"b\" [c] ñ"_s).toUtf8()));
    }

    void whatIsInTheTrashComesBack()
    {
        const platform::TrashedItem item{u"/music/caf\xDCE9.mp3"_s, u"/trash/files/x"_s, u"/trash/info/x.trashinfo"_s};
        const auto back = decodeTrashed(encodeTrashed(item));
        QVERIFY(back);
#ifndef _WIN32
        QCOMPARE(back->original, item.original);
#endif
        QCOMPARE(back->file, item.file);
        QCOMPARE(back->info, item.info);
        QVERIFY(!decodeTrashed(encodeTrashed(std::nullopt)));
        QVERIFY(!decodeTrashed("\x01"));
    }
};

QTEST_GUILESS_MAIN(TestEncoding)

#include "tst_encoding.moc"
