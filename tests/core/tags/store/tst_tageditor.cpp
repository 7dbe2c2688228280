// SPDX-License-Identifier: GPL-3.0-or-later
// The rules of the tag pages without their controls: the genre list, the key filter of boxes for digits, and saving one
// page into file after file with a conversion that changes the page itself.

#include "core/tags/record/genres.h"
#include "core/tags/store/tageditor.h"
#include "core/tags/store/tagstore.h"
#include "support/mp3builder.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

class TestTagEditor : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    ProgramState m_state;
    TagStore m_store{m_state, platform::FileSystem::native()};

    QString file(const QString &name, const QByteArray &content = audio()) const
    {
        return writeFile(m_folder.path(), name, content);
    }
    TagRecord read(const QString &path) const
    {
        TagRecord record;
        if (!m_store.ReadTag(path, record))
            qFatal("cannot read %s", qPrintable(path));
        return record;
    }
    static TagRecord pageWithArtist(const QString &artist)
    {
        TagRecord page;
        page.Artist = artist;
        return page;
    }

private Q_SLOTS:
    void init()
    {
        m_state = ProgramState{};
        m_state.freeMegabytes = 100000;
    }

    void theGenreListStartsWithAnEmptyEntryAndGenre0IsIndex1()
    {
        const QStringList entries = genreListEntries();
        QCOMPARE(entries.size(), 127);
        QCOMPARE(entries.first(), QString());
        QCOMPARE(entries.at(1), u"Blues"_s);
        QCOMPARE(entries.last(), u"DanceHall"_s);
        for (int number = 0; number < GenreCount; ++number)
            QCOMPARE(genreListIndex(genreName(number)), number + 1);
    }

    void aGenreIsShownOnlyByItsExactName()
    {
        QCOMPARE(genreListIndex(QString()), 0);
        QCOMPARE(genreListIndex(u"rock"_s), 0);
        QCOMPARE(genreListIndex(u"Rock "_s), 0);
        QCOMPARE(genreListIndex(u"Black Metal of the North"_s), 0);
        QCOMPARE(genreListIndex(u"147"_s), 0);
    }

    void keys_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<int>("verdict");
        const auto row = [](const char *name, const QString &typed, KeyVerdict verdict) {
            QTest::newRow(name) << typed << static_cast<int>(verdict);
        };
        row("0", u"0"_s, KeyVerdict::Pass);
        row("9", u"9"_s, KeyVerdict::Pass);
        row("the Enter key is swallowed", u"\r"_s, KeyVerdict::Swallow);
        row("Enter of the number block", u"\n"_s, KeyVerdict::Swallow);
        row("Backspace passes", u"\b"_s, KeyVerdict::Pass);
        row("Tab passes", u"\t"_s, KeyVerdict::Pass);
        row("Delete passes", u"\x7f"_s, KeyVerdict::Pass);
        row("an arrow key passes", QString(), KeyVerdict::Pass);
        row("Ctrl+V passes", u"\x16"_s, KeyVerdict::Pass);
        row("a letter beeps", u"a"_s, KeyVerdict::Beep);
        row("a blank beeps", u" "_s, KeyVerdict::Beep);
        row("a minus beeps", u"-"_s, KeyVerdict::Beep);
        row("a decimal point beeps", u"."_s, KeyVerdict::Beep);
        row("digits of other scripts beep", u"٣"_s, KeyVerdict::Beep);
        row("a superscript digit beeps", u"²"_s, KeyVerdict::Beep);
        row("a character beyond the basic plane beeps", u"😀"_s, KeyVerdict::Beep);
        row("a composed text with a letter beeps", u"1a"_s, KeyVerdict::Beep);
    }
    void keys()
    {
        QFETCH(QString, typed);
        QFETCH(int, verdict);
        QCOMPARE(static_cast<int>(digitKeyVerdict(typed)), verdict);
    }

    void allSevenFieldsAreWrittenFromThePage()
    {
        const QString path =
            file(u"a.mp3"_s, id3v2(3, textFrame(3, "TIT2", u"old"_s) + textFrame(3, "TALB", u"old album"_s)) + audio());
        TagRecord page;
        page.Title = u"Title"_s;
        page.Artist = u"Artist"_s;
        page.Year = u"1999"_s;
        page.Comment = u"Comment"_s;
        page.Track = u"7"_s;
        page.Genre = u"Ska"_s;
        PageSave pageSave(m_store, page);
        QVERIFY(pageSave.save(path));
        page.HasV2 = true;
        QCOMPARE(read(path), page); // the empty album is gone, too
    }

    void aConversionStartsFromWhatItMadeForTheFileBefore()
    {
        const QString first = file(u"1.mp3"_s);
        const QString second = file(u"2.mp3"_s);
        PageSave pageSave(m_store, pageWithArtist(u"a"_s), [](const QString &text) { return QString(text + u'b'); });
        QVERIFY(pageSave.save(first));
        QVERIFY(pageSave.save(second));
        QCOMPARE(read(first).Artist, u"ab"_s);
        QCOMPARE(read(second).Artist, u"abb"_s);
        QCOMPARE(pageSave.page().Artist, u"abb"_s);
    }

    void aConversionTakesArtistAlbumTitleAndCommentInThisOrder()
    {
        TagRecord page;
        page.Title = u"t"_s;
        page.Artist = u"r"_s;
        page.Album = u"l"_s;
        page.Comment = u"c"_s;
        page.Genre = u"Ska"_s;
        page.Year = u"1999"_s;
        QStringList converted;
        PageSave pageSave(m_store, page, [&converted](const QString &text) {
            converted << text;
            return text.toUpper();
        });
        QVERIFY(pageSave.save(file(u"a.mp3"_s)));
        QCOMPARE(converted, (QStringList{u"r"_s, u"l"_s, u"t"_s, u"c"_s}));
        QCOMPARE(pageSave.page().Genre, u"Ska"_s);
        QCOMPARE(pageSave.page().Comment, u"C"_s);
    }

    void aFileThatCannotBeReadLeavesThePageAsItWas()
    {
        PageSave pageSave(m_store, pageWithArtist(u"a"_s), [](const QString &text) { return text.toUpper(); });
        const Result<void> result = pageSave.save(m_folder.filePath(u"missing.mp3"_s));
        QVERIFY(!result);
        QCOMPARE(result.error().code, ErrorCode::NotFound);
        QCOMPARE(pageSave.page().Artist, u"a"_s);
    }

    void aGenreNumberBeyondTheTableDoesNotKeepAFileFromBeingSaved()
    {
        const QString path = file(u"a.mp3"_s, audio() + id3v1({.title = "x", .genre = 200}));
        m_state.tagSaveMode = 1;
        PageSave pageSave(m_store, pageWithArtist(u"a"_s));
        QVERIFY(pageSave.save(path));
        QCOMPARE(read(path).Artist, u"a"_s);
    }

    void aRefusalForWantOfSpaceIsAnErrorAndSetsTheFlag()
    {
        const QByteArray content = audio();
        const QString path = file(u"a.mp3"_s, content);
        m_state.freeMegabytes = 5;
        PageSave pageSave(m_store, pageWithArtist(u"a"_s));
        const Result<void> result = pageSave.save(path);
        QVERIFY(!result);
        QCOMPARE(result.error().code, ErrorCode::LowSpace);
        QVERIFY(m_state.cancelled);
        QCOMPARE(readFile(path), content);
    }
};

QTEST_GUILESS_MAIN(TestTagEditor)
#include "tst_tageditor.moc"
