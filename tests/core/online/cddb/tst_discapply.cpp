// SPDX-License-Identifier: GPL-3.0-or-later
// A disc's data in a file's tag: track, title, artist and album are the disc's, year and genre only if it has them, and
// the rest stays. Each file of a batch that was not saved gets a line with the reason.
#include "core/app/idiomas.h"
#include "core/online/cddb/discapply.h"

#include <QTest>

using namespace ravlin;
using namespace Qt::StringLiterals;

class TestDiscApply : public QObject
{
    Q_OBJECT

private:
    const TagRecord m_before{
        u"title"_s, u"artist"_s, u"album"_s, u"1990"_s, u"comment"_s, u"9"_s, u"Jazz"_s, true, true};

private Q_SLOTS:
    void everythingTheDiscTells();
    void emptyYearBoxFilesKeepTheirOwnYear();
    void fileWithoutATrackRowGetsEmptyTrackAndTitle();
    void everyFileThatWasNotSavedIsALineWithItsReason();
};

void TestDiscApply::everythingTheDiscTells()
{
    TagRecord record = m_before;
    applyDisc(record, {u"A"_s, u"B"_s, u"1998"_s, u"Rock"_s}, {u"3"_s, u"Faro"_s});
    QCOMPARE(record, (TagRecord{u"Faro"_s, u"A"_s, u"B"_s, u"1998"_s, u"comment"_s, u"3"_s, u"Rock"_s, true, true}));
}

void TestDiscApply::emptyYearBoxFilesKeepTheirOwnYear()
{
    TagRecord record = m_before;
    applyDisc(record, {u"A"_s, u"B"_s, {}, {}}, {u"3"_s, u"Faro"_s});
    QCOMPARE(record.Year, u"1990"_s);
    QCOMPARE(record.Genre, u"Jazz"_s);
    QCOMPARE(record.Album, u"B"_s);
}

void TestDiscApply::fileWithoutATrackRowGetsEmptyTrackAndTitle()
{
    TagRecord record = m_before;
    applyDisc(record, {u"A"_s, u"B"_s, {}, {}}, {});
    QCOMPARE(record.Track, QString());
    QCOMPARE(record.Title, QString());
    QCOMPARE(record.Artist, u"A"_s);
}

void TestDiscApply::everyFileThatWasNotSavedIsALineWithItsReason()
{
    Captions captions;
    captions.fill();
    BatchOutcome outcome(3);
    outcome.add({});
    outcome.add(tl::unexpected(Error{ErrorCode::NotFound, u"b.mp3"_s, {}}));
    const std::vector<DiscFile> files{{u"a.mp3"_s, {}}, {u"b.mp3"_s, {}}, {u"c.mp3"_s, {}}};
    QCOMPARE(
        notSavedLines(captions, outcome, files), (QStringList{u"b.mp3: "_s + captions.errorText(ErrorCode::NotFound),
                                                     u"c.mp3: "_s + captions.text(Text::OutcomeUntouched)}));
}

QTEST_GUILESS_MAIN(TestDiscApply)
#include "tst_discapply.moc"
