// SPDX-License-Identifier: GPL-3.0-or-later
// The identifiers of the frames that the program edits, what the texts of genre, track and year frames mean, and how a
// new number is written into such a text.

#include "core/tags/id3/framekind.h"
#include "core/tags/record/genres.h"

#include <QTest>

using namespace ravlin;
using namespace ravlin::id3;

class TestFrameKind : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void identifiers()
    {
        const std::vector<FrameKind> kinds{FrameKind::Title, FrameKind::LeadArtist, FrameKind::Album, FrameKind::Year,
            FrameKind::ContentType, FrameKind::Comment, FrameKind::TrackNumber};
        QByteArrayList written;
        for (const int version : {2, 3, 4}) {
            for (const FrameKind kind : kinds) {
                const std::string_view identifier = frameIdentifier(kind, version);
                QCOMPARE(frameKindOf(identifier), kind);
                written << QByteArray(identifier.data(), static_cast<qsizetype>(identifier.size()));
            }
        }
        QCOMPARE(written.join(' '), "TT2 TP1 TAL TYE TCO COM TRK TIT2 TPE1 TALB TYER TCON COMM TRCK "
                                    "TIT2 TPE1 TALB TDRC TCON COMM TRCK");
        QVERIFY(frameIdentifier(FrameKind::Other, 3).empty());
    }

    void oldIdentifiersInNewerTags()
    {
        QCOMPARE(frameKindOf("TT2 "), FrameKind::Title);
        QCOMPARE(frameKindOf({"COM\0", 4}), FrameKind::Comment);
        for (const std::string_view other : {"TIT", "TT2x", "TIT2x", "TXXX", "APIC", "tit2", "TI", ""})
            QCOMPARE(frameKindOf(other), FrameKind::Other);
    }

    void genreNumbers_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("number");
        const auto row = [](const char *text, int number) {
            QTest::addRow("\"%s\"", text) << QString::fromUtf8(text) << number;
        };
        row("(17)", 17);
        row("17", 17);
        row(" 17 ", 17);
        row("(17)Rock", 17);
        row("(4)Eurodisco", 4);
        row("(51)(39)", 51);
        row("(0)", 0);
        row("(254)", 254);
        row("(255)", GenreNone);
        row("255", GenreNone);
        row("1000", GenreNone);
        row("(RX)", GenreNone);
        row("(CR)", GenreNone);
        row("((17) is no number", GenreNone);
        row("(17", GenreNone);
        row("()", GenreNone);
        row("", GenreNone);
        row("Rock", 17);
        row("hip hop", 7);
        row("Hip-Hop", 7);
        row("17 / 4", 17);
        row("Rock / Pop", 17);
        row("Something else", GenreNone);
        row("17th century", GenreNone);
        row("-1", GenreNone);
        row("١٧", GenreNone);
    }
    void genreNumbers()
    {
        QFETCH(QString, text);
        QTEST(genreNumber(text), "number");
    }

    void genreTexts()
    {
        QCOMPARE(genreText(17, 2), QStringLiteral("(17)"));
        QCOMPARE(genreText(17, 3), QStringLiteral("(17)"));
        QCOMPARE(genreText(17, 4), QStringLiteral("17"));
    }

    void trackNumbers()
    {
        QCOMPARE(trackNumber(QStringLiteral("3/12")), 3);
        QCOMPARE(trackNumber(QStringLiteral(" 07 ")), 7);
        QCOMPARE(trackNumber(QStringLiteral("123")), 123);
        QCOMPARE(trackNumber(QStringLiteral("/12")), 0);
        QCOMPARE(trackNumber(QStringLiteral("A1")), 0);
        QCOMPARE(trackNumber(QString()), 0);
        QCOMPARE(trackNumber(QStringLiteral("99999999999999999999")), 0);
        QCOMPARE(trackNumber(QStringLiteral("-3")), 0);
    }

    void aNewTrackKeepsTheTotalAndTheWidth()
    {
        QCOMPARE(trackText(QStringLiteral("3/12"), 4), QStringLiteral("4/12"));
        QCOMPARE(trackText(QStringLiteral("03/12"), 4), QStringLiteral("04/12"));
        QCOMPARE(trackText(QStringLiteral("09"), 10), QStringLiteral("10"));
        QCOMPARE(trackText(QStringLiteral("9"), 10), QStringLiteral("10"));
        QCOMPARE(trackText(QStringLiteral("/12"), 4), QStringLiteral("4/12"));
        QCOMPARE(trackText(QStringLiteral("A1"), 4), QStringLiteral("4"));
        QCOMPARE(trackText(QString(), 4), QStringLiteral("4"));
        QCOMPARE(trackText(QStringLiteral("0000000000003"), 4), QStringLiteral("0004"));
    }

    void years()
    {
        QCOMPARE(yearOf(QStringLiteral("1999")), QStringLiteral("1999"));
        QCOMPARE(yearOf(QStringLiteral(" 1999 ")), QStringLiteral("1999"));
        QCOMPARE(yearOf(QStringLiteral("1999-05-01")), QStringLiteral("1999"));
        QCOMPARE(yearOf(QStringLiteral("1999-05-01T10:00")), QStringLiteral("1999"));
        QCOMPARE(yearOf(QStringLiteral("1999/05")), QStringLiteral("1999"));
        QCOMPARE(yearOf(QStringLiteral("1999, 2001")), QStringLiteral("1999"));
        QCOMPARE(yearOf(QStringLiteral("19990506")), QStringLiteral("1999"));
        QCOMPARE(yearOf(QStringLiteral("1999a")), QStringLiteral("1999a"));
        QCOMPARE(yearOf(QStringLiteral("19995")), QStringLiteral("19995"));
        QCOMPARE(yearOf(QStringLiteral("99")), QStringLiteral("99"));
        QCOMPARE(yearOf(QStringLiteral("   ")), QString());
    }
};

QTEST_GUILESS_MAIN(TestFrameKind)
#include "tst_framekind.moc"
