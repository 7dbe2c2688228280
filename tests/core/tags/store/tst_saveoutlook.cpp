// SPDX-License-Identifier: GPL-3.0-or-later
// What a save will lose or not show is told beforehand: for each mode, exactly what ID3v1 then holds less; of many
// files in the background, the last request alone.

#include "core/app/idiomas.h"
#include "core/tags/store/saveoutlook.h"
#include "core/tags/store/tagstore.h"
#include "support/mp3builder.h"

#include <QSemaphore>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

namespace {

constexpr SaveOutlook Nothing;
constexpr SaveOutlook Characters{.losesCharacters = true};
constexpr SaveOutlook Cut{.cutsTexts = true};

} // namespace

class TestSaveOutlook : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    ProgramState m_state;

    QString file(const QString &name, const QByteArray &content) const
    {
        return writeFile(m_folder.path(), name, content);
    }
    static Result<PreparedSave> asItIs(const QString &path, const TagStore &store)
    {
        return store.readForSaving(path).map([](const TagRecord &record) { return PreparedSave{record, record}; });
    }

private Q_SLOTS:
    void init()
    {
        m_state = ProgramState{};
        m_state.freeMegabytes = 100000;
        m_state.tagSaveMode = 4;
    }

    void inMode4ItIsWhatTheFileThenHoldsLess_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("comment");
        QTest::addColumn<QString>("track");
        QTest::addColumn<SaveOutlook>("outlook");
        const auto row = [](const char *name, const QString &title, const QString &comment, const QString &track,
                             const SaveOutlook &outlook) {
            QTest::newRow(name) << title << comment << track << outlook;
        };
        const QString letters(30, u'ñ');
        row("empty", {}, {}, {}, Nothing);
        row("Latin-1", u"Año © 50"_s, {}, {}, Nothing);
        row("Latin-1 in two characters", u"An\u0303o"_s, {}, {}, Nothing);
        row("similar letters", u"Dvořák"_s, {}, {}, Characters);
        row("other letters", u"Кино"_s, {}, {}, Characters);
        row("question marks", u"夜"_s, {}, {}, Characters);
        row("30 letters", letters, {}, {}, Nothing);
        row("31 letters", letters + u'x', {}, {}, Cut);
        row("30 letters and blanks", letters + u"   "_s, {}, {}, Nothing);
        row("longer in Latin-1", u"…"_s.repeated(11), {}, {}, SaveOutlook{false, true, true, false});
        row("a comment", {}, letters, {}, Nothing);
        row("a longer comment", {}, letters + u'x', {}, Cut);
        row("a comment beside a track", {}, letters.first(28), u"7"_s, Nothing);
        row("a longer comment beside a track", {}, letters.first(29), u"7"_s, Cut);
        row("a comment beside a track that is not written", {}, letters, u"107"_s, Nothing);
        row("a comment beside track 0", {}, letters, u"0"_s, Nothing);
        row("blanks", u"   "_s, {}, {}, Nothing);
    }
    void inMode4ItIsWhatTheFileThenHoldsLess()
    {
        QFETCH(QString, title);
        QFETCH(QString, comment);
        QFETCH(QString, track);
        QFETCH(SaveOutlook, outlook);
        TagRecord record;
        record.Title = title;
        record.Comment = comment;
        record.Track = track;
        QVERIFY(outlookOf(record, 4) == outlook);
        for (const int mode : {0, 1, 2, 3, 5, 6})
            QVERIFY(outlookOf(record, mode) == Nothing);

        const QString path = file(u"a.mp3"_s, audio());
        TagStore store(m_state, platform::FileSystem::native());
        QVERIFY(store.SaveTag(path, record));
        TagRecord after;
        QVERIFY(store.ReadTag(path, after));
        const auto plain = [](const QString &text) { return text.normalized(QString::NormalizationForm_C).trimmed(); };
        const bool isSame = after.Title == plain(title) && after.Comment == plain(comment);
        QCOMPARE(isSame, outlook == Nothing);
    }

    void picturesAreLostInMode4Alone()
    {
        for (const int version : {2, 3, 4}) {
            TagStore store(m_state, platform::FileSystem::native());
            const QByteArray title = textFrame(version, version == 2 ? "TT2" : "TIT2", u"x"_s);
            for (const bool has : {false, true}) {
                const QByteArray frames = has ? title + pictureFrame(version, 2000) : title;
                TagRecord record;
                QVERIFY(store.ReadTag(file(u"a.mp3"_s, id3v2(version, frames) + audio()), record));
                QCOMPARE(record.HasPicture, has);
                for (const int mode : {1, 2, 3, 4, 5})
                    QCOMPARE(outlookOf(record, mode).losesPictures, has && mode == 4);
            }
        }
    }

    void inMode1TheListGoesOnToShowId3v2()
    {
        for (const bool hasV2 : {false, true}) {
            TagRecord record;
            record.HasV1 = true;
            record.HasV2 = hasV2;
            for (const int mode : {1, 2, 3, 4, 5})
                QCOMPARE(outlookOf(record, mode).isNotShown, hasV2 && mode == 1);
        }
    }

    void texts()
    {
        Captions captions;
        const auto text = [&captions](const QString &language, const SaveOutlook &outlook) {
            captions.setLanguageName(language);
            captions.fill();
            return outlookText(captions, outlook);
        };
        QCOMPARE(text(u"english"_s, {}), QString());
        QCOMPARE(text(u"english"_s, {.isNotShown = true}), u"ID3v1 is written; the list shows ID3v2"_s);
        QCOMPARE(text(u"spanish"_s, {.isNotShown = true}), u"se guarda ID3v1; la lista muestra ID3v2"_s);
        QCOMPARE(text(u"french"_s, {.isNotShown = true}), u"ID3v1 est écrit\u00a0; la liste montre ID3v2"_s);
        QCOMPARE(text(u"english"_s, {false, true, true, true}),
            u"lost in ID3v1: characters outside Latin-1 (“???” or similar letters), letters beyond 30 (28 in a "
            u"comment beside a track), pictures"_s);
        QCOMPARE(text(u"spanish"_s, {.losesPictures = true}), u"en ID3v1 se pierden: imágenes"_s);
    }

    void whatASaveRemovesIsCounted()
    {
        const auto content = [](const QByteArray &frames) {
            return id3v2(3, textFrame(3, "TIT2", u"t"_s) + frames) + audio();
        };
        const QStringList paths{file(u"1.mp3"_s, content(textFrame(3, "TCON", u"(0)"_s))),
            file(u"2.mp3"_s, content(textFrame(3, "TCON", u"own"_s) + textFrame(3, "TRCK", u"107"_s))),
            file(u"3.mp3"_s, content(textFrame(3, "TCON", u"(17)"_s)))};
        m_state.tagSaveMode = 2;
        const auto read = [&](const OutlookReader::Prepare &prepare) {
            OutlookReader reader(platform::FileSystem::native());
            QSignalSpy spy(&reader, &OutlookReader::ready);
            reader.request(m_state, paths, prepare);
            return spy.wait() ? spy.takeLast().at(0).value<SaveOutlook>() : SaveOutlook{.isNotShown = true};
        };
        // Title, artist, album, year, track, genre, comment.
        QVERIFY((read(asItIs).removed == std::array{0, 0, 0, 0, 1, 2, 0}));
        m_state.options.onlyEditedFields = true;
        QVERIFY(read(asItIs) == Nothing);
        const auto withoutTitle = [](const QString &path, const TagStore &store) {
            return asItIs(path, store).map([](PreparedSave save) {
                save.wanted.Title.clear();
                return save;
            });
        };
        QVERIFY((read(withoutTitle).removed == std::array{3, 0, 0, 0, 0, 0, 0}));
    }

    void noMoreFilesAreReadThanABound()
    {
        const QString path = file(u"1.mp3"_s, id3v2(3, textFrame(3, "TCON", u"(0)"_s)) + audio());
        m_state.tagSaveMode = 2;
        OutlookReader reader(platform::FileSystem::native());
        QSignalSpy spy(&reader, &OutlookReader::ready);
        std::atomic<int> count = 0;
        const auto counting = [&count](const QString &each, const TagStore &store) {
            ++count;
            return asItIs(each, store);
        };
        reader.request(m_state, QStringList(2 * OutlookReader::MostFiles, path), counting);
        QVERIFY(spy.wait(OutlookReader::LongestTime + 5000));
        const auto outlook = spy.takeLast().at(0).value<SaveOutlook>();
        QVERIFY(outlook.isCut);
        QVERIFY(count <= OutlookReader::MostFiles && count > 0);
        QCOMPARE(outlook.removed.at(5), count);
    }

    void textsOfWhatGoes()
    {
        Captions captions;
        const auto text = [&captions](const QString &language, const SaveOutlook &outlook, bool isOneFile = false) {
            captions.setLanguageName(language);
            captions.fill();
            return outlookText(captions, outlook, isOneFile);
        };
        const SaveOutlook both{.removed = {0, 0, 0, 0, 3, 12, 0}};
        QCOMPARE(text(u"english"_s, both), u"removes the track of 3, the genre of 12"_s);
        QCOMPARE(text(u"spanish"_s, both), u"quita la pista de 3, el estilo de 12"_s);
        QCOMPARE(text(u"french"_s, both), u"supprime la piste de 3, le genre de 12"_s);
        QCOMPARE(text(u"english"_s, {.removed = {1}, .isCut = true}), u"removes the title of 1 or more"_s);
        QCOMPARE(text(u"english"_s, both, true), u"the file loses these fields: track, genre"_s);
        QCOMPARE(text(u"english"_s, {.isNotShown = true, .removed = {2}}),
            u"removes the title of 2; ID3v1 is written; the list shows ID3v2"_s);
    }

    void manyFilesAreReadInTheBackground()
    {
        const QString picture = file(u"1.mp3"_s, id3v2(3, pictureFrame(3, 2000)) + audio());
        const QString foreign = file(u"2.mp3"_s, id3v2(3, textFrame(3, "TIT2", QString(40, u'夜'), 1)) + audio());
        const QString refused = file(u"3.mp3"_s, "\x89PNG\r\n\x1A\n" + QByteArray(1000, '\0'));
        OutlookReader reader(platform::FileSystem::native());
        QSignalSpy spy(&reader, &OutlookReader::ready);
        std::atomic<int> count = 0;
        const auto counting = [&count](const QString &path, const TagStore &store) {
            ++count;
            return asItIs(path, store);
        };
        const auto read = [&](const QStringList &paths) {
            count = 0;
            reader.request(m_state, paths, counting);
            return spy.wait() ? spy.takeLast().at(0).value<SaveOutlook>() : SaveOutlook{.isNotShown = true};
        };
        QVERIFY(read({}) == Nothing);
        QVERIFY(read({refused, m_folder.filePath(u"none.mp3"_s)}) == Nothing);
        QVERIFY((read({refused, picture}) == SaveOutlook{.losesPictures = true}));
        QVERIFY((read({picture, foreign, picture, foreign, refused}) == SaveOutlook{false, true, true, true}));
        QCOMPARE(count, 5); // each may lose a field
        m_state.tagSaveMode = 1;
        QVERIFY((read({refused, foreign, picture}) == SaveOutlook{.isNotShown = true}));
        QCOMPARE(count, 3);
        QCOMPARE(spy.size(), 0);
    }

    void onlyTheLastRequestCounts()
    {
        const QString picture = file(u"1.mp3"_s, id3v2(3, pictureFrame(3, 2000)) + audio());
        OutlookReader reader(platform::FileSystem::native());
        QSignalSpy spy(&reader, &OutlookReader::ready);
        QSemaphore begun;
        QSemaphore go;
        std::atomic<int> count = 0;
        const auto waiting = [&](const QString &path, const TagStore &store) {
            ++count;
            begun.release();
            go.acquire();
            return asItIs(path, store);
        };
        reader.request(m_state, {picture, picture, picture}, waiting);
        begun.acquire();
        reader.request(m_state, {}, asItIs); // does not wait
        go.release();
        QVERIFY(spy.wait());
        QVERIFY(spy.takeFirst().at(0).value<SaveOutlook>() == Nothing);
        QCOMPARE(count, 1); // the rest of the first request was dropped

        reader.request(m_state, {picture}, waiting);
        begun.acquire();
        reader.cancel();
        go.release();
        reader.waitForFile();
        QTest::qWait(20);
        QCOMPARE(spy.size(), 0);
    }
};

QTEST_GUILESS_MAIN(TestSaveOutlook)
#include "tst_saveoutlook.moc"
