// SPDX-License-Identifier: GPL-3.0-or-later
// A disc's data in a file's tag: track, title, artist and album are the disc's, year and genre only if it has them, and
// the rest stays. Each file of a batch that was not saved gets a line with the reason.
#include "core/app/idiomas.h"
#include "core/online/cddb/discapply.h"

#include "core/tags/store/tagstore.h"
#include "support/mp3builder.h"
#include "support/tagfixture.h"

#include <QTemporaryDir>
#include <QTest>

using namespace ravlin;
using namespace ravlin::test;
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
    void onlyWhatWasChosenIsWritten();
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

// While fields are left alone that nobody edited: what the disc does not tell, and a file without a track beside it.
void TestDiscApply::onlyWhatWasChosenIsWritten()
{
    QTemporaryDir folder;
    const QByteArray kept = textFrame(3, "TCON", u"own genre"_s) + textFrame(3, "TRCK", u"107"_s);
    const QByteArray title = textFrame(3, "TIT2", u"t"_s);
    const auto make = [&](const QString &name) {
        return writeFile(folder.path(), name, id3v2(3, title + kept) + audio());
    };
    ProgramState state = roomyState();
    TagStore store(state, platform::FileSystem::native());
    for (const bool onlyChosen : {true, false}) {
        state.options.onlyEditedFields = onlyChosen;
        const std::vector<DiscFile> files{
            {make(u"a.mp3"_s), {}}, {make(u"b.mp3"_s), {u"3"_s, u"Faro"_s}}, {make(u"c.mp3"_s), {u"100"_s, u"x"_s}}};
        const BatchOutcome outcome = saveDisc(files, {u"A"_s, {}, {}, u"Blues"_s}, store, state, {});
        const TagRecord without = readRecord(files[0].path);
        QCOMPARE(without.Title, onlyChosen ? u"t"_s : QString());
        QCOMPARE(without.Track, onlyChosen ? u"107"_s : QString());
        QCOMPARE(without.Artist, u"A"_s);
        QCOMPARE(readRecord(files[1].path).Genre, onlyChosen ? u"Blues"_s : QString());
        QCOMPARE(readRecord(files[1].path).Track, u"3"_s);
        // A number that no tag can hold: the file keeps its track and is named.
        QCOMPARE(outcome.outcome(2), onlyChosen ? RowOutcome::Failed : RowOutcome::Done);
        QCOMPARE(readRecord(files[2].path).Track, onlyChosen ? u"107"_s : QString());
        QCOMPARE(readRecord(files[2].path).Title, u"x"_s);
    }
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
