// SPDX-License-Identifier: GPL-3.0-or-later
// The 128 bytes of ID3v1 and ID3v1.1. Fields are read up to their first zero byte; a field that already holds the value
// keeps its bytes, whatever follows the text; a track takes two bytes of the comment.

#include "core/platform/filesystem.h"
#include "core/tags/id3/id3v1.h"
#include "support/mp3builder.h"

#include <QTemporaryDir>
#include <QTest>

using namespace ravlin;
using namespace ravlin::id3;
using namespace ravlin::test;

class TestId3v1 : public QObject
{
    Q_OBJECT

private:
    static V1Fields parse(const QByteArray &block)
    {
        return parseV1({block.constData(), static_cast<size_t>(block.size())});
    }
    static std::optional<QByteArray> blockOf(const QByteArray &content)
    {
        const QTemporaryDir folder;
        const QString path = writeFile(folder.path(), QStringLiteral("a.mp3"), content);
        const auto file = platform::FileSystem::native().open(path, platform::OpenMode::Read);
        const auto block = readV1Block(**file, content.size());
        if (!block)
            qFatal("%s", qPrintable(block.error().detail));
        return *block;
    }

private Q_SLOTS:
    void isFoundAtTheEndOnly()
    {
        const QByteArray block = test::id3v1({.title = "x"});
        QCOMPARE(blockOf(audio() + block), block);
        QCOMPARE(blockOf(block), block);
        QCOMPARE(blockOf("z" + block), block);
        QVERIFY(!blockOf(block + "z"));
        QVERIFY(!blockOf(block.chopped(1)));
        QVERIFY(!blockOf({}));
        // The end of an APE preamble is not a tag; letters that only resemble it do not hide one.
        QVERIFY(!blockOf("APETAGEX" + QByteArray(123, '\0')));
        QVERIFY(blockOf("AP?TAGEX" + QByteArray(123, '\0')));
        QVERIFY(blockOf("APETAGEY" + QByteArray(123, '\0')));
    }

    void fieldsAreReadUpToZeroAndWithoutBlanks()
    {
        for (const char fill : {'\0', ' '}) {
            const V1Fields fields = parse(test::id3v1({.title = "T\xEDtulo",
                .artist = " a  b",
                .album = QByteArray(30, 'l'),
                .year = "1999",
                .comment = "c",
                .track = 7,
                .genre = 17,
                .fill = fill}));
            QCOMPARE(fields, (V1Fields{QStringLiteral("Título"), QStringLiteral(" a  b"), QString(30, u'l'),
                                 QStringLiteral("1999"), QStringLiteral("c"), 7, 17}));
        }
        QCOMPARE(parse(test::id3v1({.title = QByteArray("a\0garbage", 9)})).title, QStringLiteral("a"));
    }

    void theCommentIs30BytesLongWithoutATrack()
    {
        const QByteArray comment = "123456789012345678901234567890";
        QCOMPARE(parse(test::id3v1({.comment = comment})).comment, QString::fromLatin1(comment));
        QCOMPARE(parse(test::id3v1({.comment = comment})).track, 0);
        QCOMPARE(parse(test::id3v1({.comment = comment, .track = 9})).comment, QString::fromLatin1(comment.left(28)));

        V1Fields fields;
        fields.comment = QString::fromLatin1(comment);
        QCOMPARE(parse(buildV1(fields, {})), fields);
        fields.track = 255;
        const V1Fields withTrack = parse(buildV1(fields, {}));
        QCOMPARE(withTrack.comment, QString::fromLatin1(comment.left(28)));
        QCOMPARE(withTrack.track, 255);
        // A track can be added to an old block and removed from it.
        const QByteArray old = test::id3v1({.comment = comment});
        QCOMPARE(parse(buildV1(fields, old)), withTrack);
        fields.track = 0;
        QCOMPARE(parse(buildV1(fields, buildV1(withTrack, old))), fields);
    }

    void fieldsThatHoldTheValueKeepTheirBytes()
    {
        QByteArray block = test::id3v1({.title = "one",
            .artist = "two",
            .album = QByteArray("three\0junk\xFF", 11),
            .year = "1999",
            .comment = QByteArray("four\0more junk", 14),
            .track = 3,
            .genre = 17,
            .fill = ' '});
        QCOMPARE(buildV1(parse(block), block), block);
        V1Fields fields = parse(block);
        fields.title = QStringLiteral("uno");
        const QByteArray changed = buildV1(fields, block);
        QCOMPARE(changed.mid(3, 30), QByteArray("uno").leftJustified(30, '\0'));
        QCOMPARE(changed.mid(33), block.mid(33));
        // A text longer than its field changes nothing if its beginning is the same.
        fields = parse(block);
        fields.artist = QString(30, u'q');
        block = buildV1(fields, block);
        fields.artist += QStringLiteral(" and what ID3v2 has more");
        QCOMPARE(buildV1(fields, block), block);
    }

    void anUnfinishedTextNeverRunsIntoItsNeighbour()
    {
        V1Fields fields;
        fields.title = QString(60, u'é');
        fields.year = QStringLiteral("19999");
        const QByteArray block = buildV1(fields, {});
        QCOMPARE(block.size(), 128);
        QCOMPARE(parse(block).title, QString(30, u'é'));
        QCOMPARE(parse(block).artist, QString());
        QCOMPARE(parse(block).year, QStringLiteral("1999"));
        QCOMPARE(parse(block).genre, 255);
    }

    void textsBeyondLatin1AreTransliterated()
    {
        V1Fields fields;
        fields.title = QStringLiteral("Кино, Ελλάδα, Erdős, 日本🎵");
        fields.artist = QString(10, u'Щ'); // "Shch" each: seven of them fit into 30 bytes
        fields.comment = QStringLiteral("👩‍👩‍👧‍👦");
        fields.track = 1;
        const V1Fields read = parse(buildV1(fields, {}));
        QCOMPARE(read.title, QStringLiteral("Kino, Ellada, Erdos, ???"));
        QCOMPARE(read.artist, QStringLiteral("Shch").repeated(7));
        QCOMPARE(read.comment, QStringLiteral("?"));
    }
};

QTEST_GUILESS_MAIN(TestId3v1)
#include "tst_id3v1.moc"
