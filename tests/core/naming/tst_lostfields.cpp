// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: what a save does not keep is known beforehand, field by field: texts that no save writes, and values of the
// file that go. What is told before a save is what a read finds after it.

#include "core/app/idiomas.h"
#include "core/naming/lostfields.h"
#include "core/naming/previewrows.h"
#include "core/tags/store/tagstore.h"
#include "support/tagfixture.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

namespace {

Captions english()
{
    Captions captions;
    captions.fill();
    return captions;
}

QStringList remarks(const TagRecord &present, const TagRecord &wanted)
{
    return remarksAbout(lostFields(present, wanted), english());
}

TagRecord full()
{
    TagRecord record;
    record.Title = u"Title"_s;
    record.Artist = u"Artist"_s;
    record.Album = u"Album"_s;
    record.Year = u"1999"_s;
    record.Track = u"7"_s;
    record.Comment = u"Comment"_s;
    record.Genre = u"Rock"_s;
    return record;
}

} // namespace

class TestLostFields : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whatIsWrittenLosesNothing()
    {
        QVERIFY(lostFields({}, {}).empty());
        QVERIFY(lostFields({}, full()).empty());
        QVERIFY(lostFields(full(), full()).empty());
    }

    void aTextThatNoSaveWritesIsToldWithTheReason_data()
    {
        QTest::addColumn<QString>("year");
        QTest::addColumn<QString>("track");
        QTest::addColumn<QString>("genre");
        QTest::addColumn<QString>("remark");
        const QString year = u"the year “%1” is not saved: a year has four digits"_s;
        const QString track = u"the track “%1” is not saved: a track has one or two digits"_s;
        const QString genre = u"the genre “%1” is not saved: it is not in the table"_s;
        QTest::newRow("year of two digits") << u"99"_s << QString() << QString() << year.arg(u"99"_s);
        QTest::newRow("year of no digits") << u"MCMX"_s << QString() << QString() << year.arg(u"MCMX"_s);
        QTest::newRow("year that fits") << u"1999"_s << QString() << QString() << QString();
        QTest::newRow("track 100") << QString() << u"100"_s << QString() << track.arg(u"100"_s);
        QTest::newRow("track A1") << QString() << u"A1"_s << QString() << track.arg(u"A1"_s);
        QTest::newRow("track 99") << QString() << u"99"_s << QString() << QString();
        QTest::newRow("genre outside the table") << QString() << QString() << u"Zydeco"_s << genre.arg(u"Zydeco"_s);
        QTest::newRow("genre of the table") << QString() << QString() << u" rock "_s << QString();
    }
    void aTextThatNoSaveWritesIsToldWithTheReason()
    {
        QFETCH(QString, remark);
        QFETCH(QString, year);
        QFETCH(QString, track);
        QFETCH(QString, genre);
        TagRecord wanted;
        wanted.Year = year;
        wanted.Track = track;
        wanted.Genre = genre;
        QCOMPARE(remarks({}, wanted), remark.isEmpty() ? QStringList() : QStringList{remark});
        if (remark.isEmpty())
            return;
        const QString field = year.isEmpty() ? track.isEmpty() ? u"genre"_s : u"track"_s : u"year"_s;
        QCOMPARE(remarks(full(), wanted).last().contains(field), true); // the file has one, which goes
    }

    void theFieldsThatASaveRemovesAreNamed()
    {
        TagRecord wanted = full();
        wanted.Artist.clear();
        wanted.Comment.clear();
        QCOMPARE(remarks(full(), wanted), QStringList{u"the file loses these fields: artist, comment"_s});
        wanted.Year = u"99"_s;
        QCOMPARE(remarks(full(), wanted), (QStringList{u"the year “99” is not saved: a year has four digits"_s,
                                              u"the file loses these fields: artist, year, comment"_s}));
    }

    void aTextOfTheFileItselfThatNoSaveWritesGoesToo()
    {
        TagRecord present;
        present.Genre = u"Zydeco"_s;
        const std::vector<LostField> lost = lostFields(present, present);
        QCOMPARE(lost.size(), std::size_t(1));
        QVERIFY(lost[0].isRemoved);
        QCOMPARE(lost[0].text, u"Zydeco"_s);
    }

    void aHostileTextStaysOnItsLine()
    {
        TagRecord wanted;
        wanted.Genre = u"a\nb"_s + QString(5000, u'x') + QChar(0x202E);
        const QString remark = remarks({}, wanted).value(0);
        QVERIFY(remark.size() < 300);
        QVERIFY(!remark.contains(u'\n') && !remark.contains(QChar(0x202E)));
    }

    void aSaveKeepsWhatIsNotToldAndNothingElse_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("pattern");
        QTest::newRow("all fits") << u"08 - Song"_s << u"%4 - %3"_s;
        QTest::newRow("year") << u"99 - Song"_s << u"%5 - %3"_s;
        QTest::newRow("track") << u"100 - Song"_s << u"%4 - %3"_s;
        QTest::newRow("genre") << u"Zydeco - Song"_s << u"%6 - %3"_s;
        QTest::newRow("empty value") << u"Song"_s << u"%1%3"_s;
        QTest::newRow("several") << u"99 - 100 - Zydeco"_s << u"%5 - %4 - %6"_s;
    }
    void aSaveKeepsWhatIsNotToldAndNothingElse()
    {
        QFETCH(QString, name);
        QFETCH(QString, pattern);
        const QTemporaryDir folder;
        ProgramState state = roomyState();
        TagStore store(state, platform::FileSystem::native());
        const QString path = taggedFile(folder.path(), name + u".mp3"_s, full());
        const PreviewRow row = previewExtraction(path, pattern, store);
        QVERIFY(!row.isUntouched);
        QVERIFY(store.SaveTag(path, row.record));
        const TagRecord saved = readRecord(path);
        for (QString TagRecord::*field : {&TagRecord::Title, &TagRecord::Artist, &TagRecord::Album, &TagRecord::Year,
                 &TagRecord::Track, &TagRecord::Genre, &TagRecord::Comment}) {
            const bool isTold = std::ranges::find(row.lost, field, &LostField::field) != row.lost.end();
            QCOMPARE((saved.*field).isEmpty(), isTold);
        }
    }
};

QTEST_GUILESS_MAIN(TestLostFields)
#include "tst_lostfields.moc"
