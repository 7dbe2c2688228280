// SPDX-License-Identifier: GPL-3.0-or-later
// The tag object writes what was put and nothing else: foreign frames with their flags and order, pictures, other tags,
// junk and audio stay byte for byte. Tags of every version and form are read and keep their form.

#include "core/platform/filesystem.h"
#include "core/tags/store/tagobject.h"
#include "support/mp3builder.h"

#include <QTemporaryDir>
#include <QTest>

using namespace ravlin;
using namespace ravlin::test;
using storage::WriteOutcome;

class TestTagObject : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

    QString file(const QByteArray &content) const
    {
        return writeFile(m_folder.path(), QStringLiteral("a.mp3"), content);
    }
    TagObject linked(const QString &path) const
    {
        TagObject object(platform::FileSystem::native());
        if (const Result<void> result = object.Link(path); !result)
            qFatal("%s", qPrintable(result.error().detail));
        return object;
    }
    /// Saves a new title into ID3v2 and returns the file.
    QByteArray withTitle(const QByteArray &content, const QString &title, WriteOutcome *outcome = nullptr) const
    {
        const QString path = file(content);
        TagObject object = linked(path);
        object.setTitle(title);
        const Result<WriteOutcome> result = object.SaveV2Tag();
        if (!result)
            qFatal("%s", qPrintable(result.error().detail));
        if (outcome)
            *outcome = *result;
        const TagObject again = linked(path);
        if (again.Title() != title)
            qFatal("title is %s", qPrintable(again.Title()));
        return readFile(path);
    }
    static QList<QByteArray> foreign(const QByteArray &content)
    {
        QList<QByteArray> frames;
        for (const RawFrame &raw : rawFrames(content)) {
            if (raw.id != "TIT2" && raw.id != "TT2")
                frames += raw.bytes;
        }
        return frames;
    }
    /// All sorts of foreign frames of a version, some with flags.
    static QByteArray foreignFrames(int version)
    {
        if (version == 2)
            return frame(2, "UFI", "owner\0id") + frame(2, "TT1", QByteArray("\0grp", 4)) + pictureFrame(2, 3000) +
                   frame(2, "REV", QByteArray(12, '\x7F'));
        const quint16 grouped = version == 3 ? 0x0020 : 0x0040;
        const quint16 encrypted = version == 3 ? 0x0040 : 0x0004;
        const quint16 compressedBits = version == 3 ? 0x0080 : 0x0009;
        return frame(version, "TSIZ",
                   QByteArray("\0"
                              "12345",
                       6)) +
               frame(version, "RVAD", QByteArray(10, '\x7F'), 0x8000) +
               frame(version, "PRIV", QByteArray("\x07me\0secret", 10), static_cast<quint16>(0x4000U | grouped)) +
               frame(version, "TXXX", QByteArray("\x80garbled", 8), encrypted) +
               frame(version, "TCOM", QByteArray("\0\0\0\x09not zlib", 12), compressedBits) +
               pictureFrame(version, 9000) + frame(version, "XZZZ", QByteArray(1, '\0')) +
               frame(version, "UFID", QByteArray("o\0\xFF\xE0", 4));
    }

private Q_SLOTS:
    void foreignFramesStayWithFlagsAndOrder_data()
    {
        QTest::addColumn<int>("version");
        QTest::addColumn<qint64>("padding");
        for (const int version : {2, 3, 4}) {
            for (const qint64 padding : {0, 1, 10, 1000, 30000})
                QTest::addRow("2.%d, %d bytes of padding", version, int(padding)) << version << padding;
        }
    }
    void foreignFramesStayWithFlagsAndOrder()
    {
        QFETCH(int, version);
        QFETCH(qint64, padding);
        const QByteArray frames =
            textFrame(version, version == 2 ? "TT2" : "TIT2", QStringLiteral("old")) + foreignFrames(version);
        const QByteArray rest = audio() + apeTag() + lyrics3() + id3v1({.title = "old", .fill = ' '});
        const QByteArray before = id3v2(version, frames, {.padding = padding}) + rest;
        for (const QString &title :
            {QStringLiteral("a"), QStringLiteral("new"), QStringLiteral("a much longer title than before"),
                QStringLiteral("Ünïcödé"), QStringLiteral("Кино"), QStringLiteral("日本語 🎵"), QString(2000, u'x')}) {
            const QByteArray after = withTitle(before, title);
            QCOMPARE(static_cast<int>(after[3]), version);
            QCOMPARE(foreign(after), foreign(before));
            QCOMPARE(after.mid(regionSize(after)), rest);
            // The title is still the first frame.
            QVERIFY(rawFrames(after).first().id.startsWith("T"));
            QVERIFY(!foreign(after).contains(rawFrames(after).first().bytes));
        }
    }

    void theRegionKeepsItsSizeWhereTheFramesFit()
    {
        const QByteArray before =
            id3v2(3, textFrame(3, "TIT2", QStringLiteral("old")) + foreignFrames(3), {.padding = 40}) + audio();
        WriteOutcome outcome{};
        QCOMPARE(regionSize(withTitle(before, QString(43, u'x'), &outcome)), regionSize(before));
        const QByteArray grown = withTitle(before, QString(44, u'x'), &outcome);
        QVERIFY(regionSize(grown) > regionSize(before));
        QCOMPARE(outcome, WriteOutcome::Replaced);
        // The audio keeps its place within a block, and the new padding serves the next edits.
        QCOMPARE(regionSize(grown) % 4096, regionSize(before) % 4096);
        QCOMPARE(regionSize(withTitle(grown, QString(2000, u'x'), &outcome)), regionSize(grown));
    }

    void aSmallTagIsWrittenInPlace()
    {
        WriteOutcome outcome{};
        withTitle(id3v2(3, textFrame(3, "TIT2", QStringLiteral("old")) + textFrame(3, "TALB", QStringLiteral("a")),
                      {.padding = 1000}) +
                      audio(100),
            QStringLiteral("a longer one"), &outcome);
        QCOMPARE(outcome, WriteOutcome::InPlace);
    }

    void aValueThatTheTagHasAlreadyLeavesItsFrame()
    {
        const QByteArray frames =
            textFrame(3, "TIT2", QStringLiteral("t"), 1) // UTF-16 where Latin-1 would do
            + frame(3, "TPE1", QByteArray("\0artist\0", 8)) + textFrame(3, "TRCK", QStringLiteral("03/12")) +
            textFrame(3, "TYER", QStringLiteral(" 1999 ")) + textFrame(3, "TCON", QStringLiteral("(17)Rock")) +
            commentFrame(3, QStringLiteral("c"), QString(), "spa");
        const QByteArray before = id3v2(3, frames, {.padding = 100}) + audio();
        const QString path = file(before);
        TagObject object = linked(path);
        object.setTitle(QStringLiteral("t"));
        object.setArtist(QStringLiteral("artist"));
        object.setTrack(3);
        object.setYear(QStringLiteral("1999"));
        object.setGenre(17);
        object.setComment(QStringLiteral("c"));
        QCOMPARE(object.SaveV2Tag().value(), WriteOutcome::Unchanged);
        object.setTrack(4);
        QVERIFY(object.SaveV2Tag());
        QCOMPARE(rawFrames(readFile(path)).at(2).bytes, textFrame(3, "TRCK", QStringLiteral("04/12")));
        QCOMPARE(rawFrames(readFile(path)).at(5).bytes, commentFrame(3, QStringLiteral("c"), QString(), "spa"));
    }

    void textEncodings_data()
    {
        QTest::addColumn<int>("version");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("text");
        const QString japanese = QStringLiteral("日本語");
        QTest::newRow("Latin-1") << 3 << textBody(0, QStringLiteral("é")) << QStringLiteral("é");
        QTest::newRow("terminated") << 3 << QByteArray("\0abc\0", 5) << QStringLiteral("abc");
        QTest::newRow("UTF-16 little endian") << 3 << textBody(1, japanese) << japanese;
        QTest::newRow("UTF-16 big endian") << 3
                                           << QByteArray("\x01\xFE\xFF\x00"
                                                         "a\x00"
                                                         "b",
                                                  7)
                                           << QStringLiteral("ab");
        QTest::newRow("UTF-16 without mark, little") << 3
                                                     << QByteArray("\x01"
                                                                   "a\0b\0",
                                                            5)
                                                     << QStringLiteral("ab");
        QTest::newRow("UTF-16 without mark, big") << 3 << QByteArray("\x01\0a\0b", 5) << QStringLiteral("ab");
        QTest::newRow("UTF-16 terminated") << 3
                                           << QByteArray("\x01\xFF\xFE"
                                                         "a\0\0\0",
                                                  7)
                                           << QStringLiteral("a");
        QTest::newRow("UTF-16 odd length") << 3
                                           << QByteArray("\x01\xFF\xFE"
                                                         "a\0b",
                                                  6)
                                           << QStringLiteral("a");
        QTest::newRow("UTF-16BE") << 4 << textBody(2, japanese) << japanese;
        QTest::newRow("UTF-8") << 4 << textBody(3, QStringLiteral("🎵é")) << QStringLiteral("🎵é");
        QTest::newRow("UTF-8 with mark") << 4
                                         << QByteArray("\x03\xEF\xBB\xBF"
                                                       "a")
                                         << QStringLiteral("a");
        QTest::newRow("UTF-8 broken") << 4
                                      << QByteArray("\x03"
                                                    "a\xFF"
                                                    "b")
                                      << QStringLiteral("a\uFFFDb");
        QTest::newRow("several values") << 4
                                        << QByteArray("\x03"
                                                      "a\0b\0c",
                                               6)
                                        << QStringLiteral("a / b / c");
        QTest::newRow("several UTF-16 values, each with its mark") << 4
                                                                   << QByteArray("\x01\xFF\xFE"
                                                                                 "a\0\0\0\xFF\xFE"
                                                                                 "b\0",
                                                                          11)
                                                                   << QStringLiteral("a / b");
        QTest::newRow("only terminators") << 3 << QByteArray("\0\0\0", 3) << QString();
        QTest::newRow("empty body") << 3 << QByteArray() << QString();
    }
    void textEncodings()
    {
        QFETCH(int, version);
        QFETCH(QByteArray, body);
        QFETCH(QString, text);
        const QByteArray before = id3v2(version, frame(version, "TIT2", body), {.padding = 30}) + audio();
        const QString path = file(before);
        TagObject object = linked(path);
        QCOMPARE(object.Title(), text);
        if (text.isEmpty())
            return;
        object.setTitle(text);
        QCOMPARE(object.SaveV2Tag().value(), WriteOutcome::Unchanged);
        QCOMPARE(readFile(path), before);
    }

    void framesBehindThePaddingStayDead_data()
    {
        QTest::addColumn<int>("version");
        for (const int version : {2, 3, 4})
            QTest::addRow("ID3v2.%d", version) << version;
    }
    // The end of an older, longer tag lies behind the padding. A value that takes all of the padding must not join it
    // to the frames again.
    void framesBehindThePaddingStayDead()
    {
        QFETCH(int, version);
        const char *title = version == 2 ? "TT2" : "TIT2";
        const QByteArray hidden = textFrame(version, version == 2 ? "TAL" : "TALB", QStringLiteral("HIDDEN"));
        constexpr int Padding = 20;
        for (const int length : {Padding - 1, Padding, Padding + 1, 3 * Padding}) {
            const QString path = file(
                id3v2(version, textFrame(version, title, QStringLiteral("t")), {.padding = Padding, .tail = hidden}) +
                audio());
            QCOMPARE(linked(path).Album(), QString());
            TagObject object = linked(path);
            object.setTitle(QString(1 + length, u'x'));
            QVERIFY(object.SaveV2Tag());
            QCOMPARE(linked(path).Title(), QString(1 + length, u'x'));
            QCOMPARE(linked(path).Album(), QString());
            QVERIFY(readFile(path).contains(hidden)); // nobody asked to remove it
            QVERIFY(readFile(path).endsWith(audio()));
        }
    }

    void aTextForSeveralValuesReadsBack_data()
    {
        QTest::addColumn<int>("version");
        QTest::addColumn<QString>("text");
        for (const int version : {2, 3, 4}) {
            QTest::addRow("ID3v2.%d, an empty last value", version) << version << QStringLiteral("a / ");
            QTest::addRow("ID3v2.%d, nothing but a separator", version) << version << QStringLiteral(" / ");
            QTest::addRow("ID3v2.%d, an empty value between", version) << version << QStringLiteral("a /  / b");
            QTest::addRow("ID3v2.%d, outside of Latin-1", version) << version << QStringLiteral("日 / 本 / ");
        }
    }
    void aTextForSeveralValuesReadsBack()
    {
        QFETCH(int, version);
        QFETCH(QString, text);
        const char *artist = version == 2 ? "TP1" : "TPE1";
        const QString path = file(id3v2(version, frame(version, artist, QByteArray("\0a\0b", 4))) + audio());
        TagObject object = linked(path);
        object.setArtist(text);
        QVERIFY(object.SaveV2Tag());
        QCOMPARE(linked(path).Artist(), text);
        TagObject again = linked(path);
        again.setArtist(text);
        QCOMPARE(again.SaveV2Tag().value(), WriteOutcome::Unchanged);
    }

    void anEditedFrameOfSeveralValuesKeepsSeveral()
    {
        const QByteArray before = id3v2(4,
                                      frame(4, "TPE1",
                                          QByteArray("\x03"
                                                     "a\0b",
                                              4)),
                                      {.padding = 30}) +
                                  audio();
        const QString path = file(before);
        TagObject object = linked(path);
        object.setArtist(QStringLiteral("a / b / c"));
        QVERIFY(object.SaveV2Tag());
        QCOMPARE(rawFrames(readFile(path)).first().bytes, frame(4, "TPE1", QByteArray("\0a\0b\0c", 6)));
        // A text that merely contains the separator is one value.
        TagObject title = linked(path);
        title.setTitle(QStringLiteral("x / y"));
        QVERIFY(title.SaveV2Tag());
        QCOMPARE(rawFrames(readFile(path)).at(1).bytes, textFrame(4, "TIT2", QStringLiteral("x / y")));
    }

    void theCommentIsTheOneWithoutDescriptionElseTheFirst()
    {
        const QByteArray described = commentFrame(3, QStringLiteral("one"), QStringLiteral("d"));
        const QByteArray plain = commentFrame(3, QStringLiteral("dos"), QString(), "spa");
        const QByteArray second = commentFrame(3, QStringLiteral("three"), QStringLiteral("e"), "fra", 1);
        QCOMPARE(linked(file(id3v2(3, described + plain + second) + audio())).Comment(), QStringLiteral("dos"));
        QCOMPARE(linked(file(id3v2(3, described + second) + audio())).Comment(), QStringLiteral("one"));
        // A new text replaces only that comment, with its language and description.
        const QString path = file(id3v2(3, described + plain + second, {.padding = 100}) + audio());
        TagObject object = linked(path);
        object.setComment(QStringLiteral("nuevo"));
        QVERIFY(object.SaveV2Tag());
        QCOMPARE(rawFrames(readFile(path)).at(0).bytes, described);
        QCOMPARE(rawFrames(readFile(path)).at(1).bytes, commentFrame(3, QStringLiteral("nuevo"), QString(), "spa"));
        QCOMPARE(rawFrames(readFile(path)).at(2).bytes, second);
    }

    void commentsThatProgramsKeepForThemselvesAreNoComments()
    {
        const QByteArray norm = commentFrame(3, QStringLiteral(" 0000"), QStringLiteral("iTunNORM"));
        const QByteArray gapless = commentFrame(3, QStringLiteral(" 0000"), QStringLiteral("iTunSMPB"));
        const QByteArray disc = commentFrame(3, QStringLiteral("1+2+3"), QStringLiteral("iTunes_CDDB_IDs"));
        const QByteArray own = commentFrame(3, QStringLiteral("mine"), QStringLiteral("note"));
        const QString path =
            file(id3v2(3, norm + gapless + disc + own, {.padding = 100}) + audio() + id3v1({.comment = "v1"}));
        TagObject object = linked(path);
        QCOMPARE(object.Comment(), QStringLiteral("mine"));
        object.removeFrames(FrameKind::Comment);
        QCOMPARE(object.Comment(), QString());
        QVERIFY(object.SaveV2Tag());
        const QList<RawFrame> left = rawFrames(readFile(path));
        QCOMPARE(left.size(), 3);
        QCOMPARE(left.at(0).bytes + left.at(1).bytes + left.at(2).bytes, norm + gapless + disc);
        // Without a comment for the user, ID3v1's shows.
        QCOMPARE(linked(path).Comment(), QStringLiteral("v1"));
    }

    void unsynchronisedTagsStayUnsynchronised()
    {
        for (const int version : {2, 3}) {
            const char *title = version == 2 ? "TT2" : "TIT2";
            const QByteArray foreignFrame =
                frame(version, version == 2 ? "UFI" : "PRIV", QByteArray("\xFF\xE0\xFF\0\xFF", 5));
            const QByteArray frames = textFrame(version, title, QStringLiteral("ÿà日"), 1) + foreignFrame;
            const QByteArray before = id3v2(version, frames, {.flags = 0x80, .padding = 300}) + audio();
            const QString path = file(before);
            TagObject object = linked(path);
            QCOMPARE(object.Title(), QStringLiteral("ÿà日"));
            object.setTitle(QStringLiteral("日ÿ"));
            QVERIFY(object.SaveV2Tag());
            const QByteArray expected =
                id3v2(version, textFrame(version, title, QStringLiteral("日ÿ"), 1) + foreignFrame, {.flags = 0x80})
                    .mid(10);
            const QByteArray after = readFile(path);
            QCOMPARE(after.mid(10, expected.size()), expected);
            QCOMPARE(static_cast<unsigned char>(after[5]), 0x80);
            QCOMPARE(after.mid(regionSize(after)), audio());
            QCOMPARE(regionSize(after), regionSize(before));
            // And once more with a tag that must grow.
            TagObject longer = linked(path);
            longer.setTitle(QString(1000, QChar(0xFF00)));
            QVERIFY(longer.SaveV2Tag());
            QCOMPARE(linked(path).Title(), QString(1000, QChar(0xFF00)));
            QCOMPARE(readFile(path).mid(regionSize(readFile(path))), audio());
        }
    }

    void unsynchronisedFramesOfVersion24()
    {
        const QByteArray body = QByteArray("\x01\xFF\x00\xFE\xFF\x00\x00", 7); // "ÿ" as UTF-16, unsynchronised
        const QByteArray other = frame(4, "PRIV", QByteArray("\xFF\0\xE0", 3), 0x0002);
        const QByteArray before =
            id3v2(4, frame(4, "TIT2", body, 0x0002) + other, {.flags = 0x80, .padding = 60}) + audio();
        const QString path = file(before);
        QCOMPARE(linked(path).Title(), QStringLiteral("ÿ"));
        const QByteArray after = withTitle(before, QStringLiteral("日本"));
        QCOMPARE(foreign(after), QList<QByteArray>{other});
        QCOMPARE(static_cast<unsigned char>(after[5]), 0x80);
    }

    void extendedHeadersAreKeptWithoutTheirChecksum()
    {
        const QByteArray v3 = QByteArray("\0\0\0\x0A\x80\0\0\0\0\x20\x12\x34\x56\x78", 14);
        const QByteArray after3 = withTitle(id3v2(3, textFrame(3, "TIT2", QStringLiteral("x")) + foreignFrames(3),
                                                {.padding = 32, .extendedHeader = v3}) +
                                                audio(),
            QStringLiteral("new"));
        QCOMPARE(after3.mid(10, 6), QByteArray("\0\0\0\x06\0\0", 6));
        QCOMPARE(foreign(after3).join(), foreignFrames(3));
        QCOMPARE(after3.mid(regionSize(after3)), audio());

        const QByteArray v4 = QByteArray("\0\0\0\x0F\x01\x70\0\x05\1\2\3\4\5\x01\x20", 15);
        const QByteArray after4 = withTitle(id3v2(4, textFrame(4, "TIT2", QStringLiteral("x")) + foreignFrames(4),
                                                {.padding = 32, .extendedHeader = v4}) +
                                                audio(),
            QStringLiteral("new"));
        QCOMPARE(after4.mid(10, 9), QByteArray("\0\0\0\x09\x01\x50\0\x01\x20", 9));
        QCOMPARE(foreign(after4).join(), foreignFrames(4));
    }

    void aFooterGivesWayToPadding()
    {
        const QByteArray after = withTitle(
            id3v2(4, textFrame(4, "TIT2", QStringLiteral("x")) + foreignFrames(4), {.footer = true}) + audio(),
            QStringLiteral("new"));
        QCOMPARE(static_cast<unsigned char>(after[5]), 0);
        QCOMPARE(foreign(after).join(), foreignFrames(4));
        QCOMPARE(after.mid(regionSize(after)), audio());
    }

    void aSecondTagAndJunkStayWhereTheyAre()
    {
        const QByteArray rest = id3v2(4, textFrame(4, "TIT2", QStringLiteral("second")), {.padding = 5}) +
                                QByteArray("junk\0\0\xFF\xFBjunk", 13) + audio();
        for (const qint64 padding : {0, 2000}) {
            const QByteArray after =
                withTitle(id3v2(3, textFrame(3, "TIT2", QStringLiteral("x")), {.padding = padding}) + rest,
                    QStringLiteral("longer"));
            QCOMPARE(after.mid(regionSize(after)), rest);
        }
    }

    void stripTakesEveryTagAtTheStart()
    {
        const QByteArray tag = id3v2(3, textFrame(3, "TIT2", QStringLiteral("x")), {.padding = 7});
        const QString path = file(tag + id3v2(4, foreignFrames(4), {.footer = true}) + audio() + tag);
        QVERIFY(linked(path).StripV2Tag());
        QCOMPARE(readFile(path), audio() + tag);
        QVERIFY(!linked(path).HasV2Tag());
    }

    void aTagLargerThan10MegabytesIsEditedWithoutReadingIt()
    {
        const QByteArray picture = pictureFrame(3, 12 * 1024 * 1024);
        const QByteArray before =
            id3v2(3, textFrame(3, "TIT2", QStringLiteral("x")) + picture, {.padding = 100}) + audio();
        const QByteArray after = withTitle(before, QStringLiteral("new title"));
        QCOMPARE(foreign(after), QList<QByteArray>{picture});
        QCOMPARE(after.mid(regionSize(after)), audio());
    }

    void compressedTextFramesAreRead()
    {
        const QByteArray body = textBody(1, QStringLiteral("packed 日本"));
        const QByteArray packed = qCompress(body); // big-endian size, then zlib: as ID3v2.3 has it
        QCOMPARE(
            linked(file(id3v2(3, frame(3, "TIT2", packed, 0x0080)) + audio())).Title(), QStringLiteral("packed 日本"));
        QByteArray v24 = packed;
        v24.replace(0, 4, QByteArray("\0\0\0", 3) + static_cast<char>(body.size()));
        QCOMPARE(
            linked(file(id3v2(4, frame(4, "TIT2", v24, 0x0009)) + audio())).Title(), QStringLiteral("packed 日本"));
        // What can't be inflated is carried along and not taken for an empty title.
        const QByteArray broken = frame(3, "TIT2", QByteArray("\x7F\xFF\xFF\xFFzz", 6), 0x0080);
        TagObject object = linked(file(id3v2(3, broken, {.padding = 20}) + audio()));
        object.removeFrames(FrameKind::Title);
        QCOMPARE(object.SaveV2Tag().value(), WriteOutcome::Unchanged);
    }

    void id3v2ValuesComeFirstAndId3v1FillsTheRest()
    {
        const QByteArray content =
            id3v2(3, textFrame(3, "TIT2", QStringLiteral("v2 title")) + textFrame(3, "TCON", QStringLiteral("free")),
                {.padding = 400}) +
            audio() +
            id3v1({.title = "v1 title",
                .artist = "v1 artist",
                .year = "1980",
                .comment = "v1 comment",
                .track = 9,
                .genre = 17});
        const QString path = file(content);
        TagObject object = linked(path);
        QCOMPARE(object.Title(), QStringLiteral("v2 title"));
        QCOMPARE(object.Artist(), QStringLiteral("v1 artist"));
        QCOMPARE(object.Year(), QStringLiteral("1980"));
        QCOMPARE(object.Comment(), QStringLiteral("v1 comment"));
        QCOMPARE(object.Track(), 9);
        QCOMPARE(object.Genre(), 255); // ID3v2 has the frame
        QVERIFY(object.SaveV2Tag());
        QVERIFY(linked(path).StripV1Tag());
        QCOMPARE(linked(path).Artist(), QStringLiteral("v1 artist"));
        QCOMPARE(linked(path).Track(), 9);
        QCOMPARE(linked(path).frames().at(1).text, QStringLiteral("free"));
    }

    void bothYearFramesAreUnderstoodInEveryVersion()
    {
        QCOMPARE(linked(file(id3v2(3, textFrame(3, "TDRC", QStringLiteral("2001-02"))) + audio())).Year(),
            QStringLiteral("2001"));
        const QByteArray before =
            id3v2(4, textFrame(4, "TYER", QStringLiteral("1990")) + textFrame(4, "TDRC", QStringLiteral("2001")),
                {.padding = 20}) +
            audio();
        const QString path = file(before);
        TagObject object = linked(path);
        QCOMPARE(object.Year(), QStringLiteral("2001"));
        object.setYear(QStringLiteral("1995"));
        QVERIFY(object.SaveV2Tag());
        QCOMPARE(rawFrames(readFile(path)).size(), 1);
        QCOMPARE(rawFrames(readFile(path)).first().bytes, textFrame(4, "TDRC", QStringLiteral("1995")));
    }

    void emptyAndTinyFiles()
    {
        for (const QByteArray &content :
            {QByteArray(), QByteArray("I"), QByteArray("ID3"), QByteArray("ID3\3\0\0\0\0\0", 9), QByteArray("TAG"),
                QByteArray("ID3\3\0\0\0\0\0\0", 10), QByteArray("ID3\4\0\x40\0\0\0\x05\0\0\0\x06\1", 15)}) {
            const QString path = file(content);
            TagObject object = linked(path);
            object.setTitle(QStringLiteral("t"));
            QVERIFY(object.SaveV2Tag());
            QCOMPARE(linked(path).Title(), QStringLiteral("t"));
            QVERIFY(linked(path).SaveV1Tag());
            QVERIFY(linked(path).HasV1Tag());
        }
    }

    void textThatIsNoValidUnicodeIsStoredAsReplacementCharacters()
    {
        const QString path = file(audio());
        TagObject object = linked(path);
        object.setTitle(QString(QChar(0xD800)) + QStringLiteral("a") + QChar(0) + QChar(0xDC00));
        QVERIFY(object.SaveV2Tag());
        QCOMPARE(linked(path).Title(), QStringLiteral("\uFFFDa\uFFFD"));
    }
};

QTEST_GUILESS_MAIN(TestTagObject)
#include "tst_tagobject.moc"
