// SPDX-License-Identifier: GPL-3.0-or-later
// The modes that write both tag kinds, or write one and remove the other, do so in one step: the bytes are those of one
// kind after the other, and a program killed at any moment leaves both kinds old or both new.

#include "core/history/history.h"
#include "core/tags/store/tagobject.h"
#include "core/tags/store/tagstore.h"
#include "support/mp3builder.h"
#include "support/tagfixture.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

using namespace ravlin;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

class TestBothKinds : public QObject
{
    Q_OBJECT

private:
    static constexpr int Kills = 60; // in each of the two ways

    QTemporaryDir m_folder;

    QString file(const QString &name, const QByteArray &content) const
    {
        return writeFile(m_folder.path(), name, content);
    }

    template <typename T>
    static T oneOf(QRandomGenerator &random, const std::vector<T> &choices)
    {
        return choices[random.bounded(static_cast<quint32>(choices.size()))];
    }
    static QByteArray randomFile(QRandomGenerator &random)
    {
        const int version = oneOf<int>(random, {2, 3, 4});
        const auto id = [version](const char *v22, const char *later) { return version == 2 ? v22 : later; };
        QByteArray frames;
        if (random.bounded(3) > 0)
            frames += textFrame(version, id("TT2", "TIT2"), oneOf<QString>(random, {u"t"_s, QString(40, u't')}));
        if (random.bounded(2) > 0)
            frames += textFrame(version, id("TCO", "TCON"), oneOf<QString>(random, {u"(0)"_s, u"own"_s, u"17"_s}));
        if (random.bounded(2) > 0)
            frames += pictureFrame(version, 500 + random.bounded(9000));
        if (random.bounded(3) == 0)
            frames += textFrame(version, id("TRK", "TRCK"), oneOf<QString>(random, {u"7/12"_s, u"107"_s}));
        QByteArray content;
        const quint8 flags = version < 4 && random.bounded(4) == 0 ? 0x80 : 0;
        for (quint32 tags = random.bounded(4); tags > 1; --tags)
            content += id3v2(version, frames, {.flags = flags, .padding = random.bounded(200)});
        content += audio(random.bounded(4));
        if (random.bounded(4) == 0)
            content += apeTag();
        for (quint32 tags = random.bounded(4); tags > 1; --tags)
            content += id3v1({.title = "old", .artist = "a", .track = int(random.bounded(20)), .genre = 5});
        return content;
    }
    static TagRecord randomRecord(QRandomGenerator &random)
    {
        TagRecord record;
        record.Title = oneOf<QString>(random, {u""_s, u"new"_s, QString(70, u'n'), QString(5000, u'日')});
        record.Artist = oneOf<QString>(random, {u""_s, u"Björk"_s});
        record.Comment = oneOf<QString>(random, {u""_s, u"comment"_s, QString(40, u'c')});
        record.Year = oneOf<QString>(random, {u""_s, u"1999"_s, u"99"_s});
        record.Track = oneOf<QString>(random, {u""_s, u"07"_s, u"107"_s});
        record.Genre = oneOf<QString>(random, {u""_s, u"Rock"_s, u"Blues"_s, u"own"_s});
        return record;
    }

    /// The titles of both kinds; nothing without the kind.
    static std::pair<std::optional<QString>, std::optional<QString>> titles(const QString &path)
    {
        TagObject object(platform::FileSystem::native());
        if (!object.Link(path))
            qFatal("the file can't be read");
        const auto v1 = object.v1Fields();
        const QString title = object.Title();
        return {v1 ? std::optional(v1->title) : std::nullopt, object.HasV2Tag() ? std::optional(title) : std::nullopt};
    }

    [[noreturn]] static void saveForEver(const QString &path, storage::Journal *journal, int first)
    {
        ProgramState state = roomyState();
        TagStore store(state, platform::FileSystem::native(), journal);
        TagRecord record;
        for (int i = first;; ++i) {
            // Mostly both kinds in place; sometimes one of them goes.
            state.tagSaveMode = i % 7 == 5 ? 4 : i % 7 == 6 ? 5 : 3;
            record.Title = QString::number(i).rightJustified(8, u'0');
            if (!store.SaveTag(path, record))
                ::_exit(1);
        }
    }
    static void runAndKill(const QString &path, const QString &database, int first, unsigned microseconds)
    {
        const pid_t child = ::fork();
        if (child == 0) {
            if (database.isEmpty())
                saveForEver(path, nullptr, first);
            history::History history(platform::FileSystem::native(), database);
            history.beginEntry(history::Kind::Single, {});
            saveForEver(path, &history, first);
        }
        QVERIFY(child > 0);
        ::usleep(microseconds);
        QCOMPARE(::kill(child, SIGKILL), 0);
        int status = 0;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QVERIFY(WIFSIGNALED(status)); // it was still saving, and no save had failed
    }

private Q_SLOTS:
    void theBytesAreThoseOfOneKindAfterTheOther()
    {
        QRandomGenerator random(17);
        ProgramState state = roomyState();
        state.writesAnyContent = true;
        TagStore store(state, platform::FileSystem::native());
        int changed = 0;
        for (int i = 0; i < 300; ++i) {
            const QByteArray content = randomFile(random);
            const TagRecord record = randomRecord(random);
            state.tagSaveMode = 3 + i % 3;
            const QString kinds = state.tagSaveMode == 3 ? u"12"_s : state.tagSaveMode == 4 ? u"15"_s : u"24"_s;
            const QString one = file(u"one.mp3"_s, content);
            const QString two = file(u"two.mp3"_s, content);
            const Result<void> saved = store.SaveTag(one, record);
            auto passed = store.WriteTagKind(two, record, kinds[0]);
            if (passed)
                passed = store.WriteTagKind(two, record, kinds[1]);
            QCOMPARE(saved.has_value(), passed.has_value());
            QVERIFY2(readFile(one) == readFile(two), qPrintable(u"file %1, mode %2"_s.arg(i).arg(state.tagSaveMode)));
            changed += readFile(one) != content ? 1 : 0;
        }
        QVERIFY(changed > 270);
    }

    void whereTheSecondKindFailsTheFirstIsWritten()
    {
        // The tag claims more than the file has: it can be neither written nor removed.
        QByteArray content = id3v2(3, textFrame(3, "TIT2", u"t"_s)) + audio(1);
        content[7] = 0x7F;
        for (const int mode : {3, 4}) {
            ProgramState state = roomyState(mode);
            TagStore store(state, platform::FileSystem::native());
            const QString path = file(u"a.mp3"_s, content);
            TagRecord record;
            record.Title = u"new"_s;
            QCOMPARE(store.SaveTag(path, record).error().code, ErrorCode::BrokenTag);
            QCOMPARE(readFile(path), content + id3v1({.title = "new"}));
        }
    }

    void everyKillLeavesBothOldOrBothNew_data()
    {
        QTest::addColumn<bool>("isRecorded");
        QTest::newRow("recorded") << true;
        QTest::newRow("not recorded") << false;
    }
    void everyKillLeavesBothOldOrBothNew()
    {
        QFETCH(bool, isRecorded);
        const QTemporaryDir data;
        const QString database = isRecorded ? data.filePath(u"history.sqlite"_s) : QString();
        const QString path = file(u"a.mp3"_s, id3v2(3, textFrame(3, "TIT2", u"00000000"_s) + pictureFrame(3, 7000)) +
                                                  audio(60) + id3v1({.title = "00000000"}));
        QRandomGenerator random(isRecorded ? 1 : 2);
        std::set<QString> seen;
        for (int kill = 0; kill < Kills; ++kill) {
            runAndKill(path, database, 1000 * kill, 2000 + random.bounded(60000));
            if (QTest::currentTestFailed())
                return;
            if (isRecorded) {
                history::History history(platform::FileSystem::native(), database);
                QVERIFY(history.recover().left.empty());
            }
            const auto [v1, v2] = titles(path);
            QVERIFY(v1 || v2);
            if (v1 && v2)
                QCOMPARE(*v1, *v2);
            QVERIFY(readFile(path).contains(audio(60)));
            seen.insert(v2.value_or(v1.value_or(QString())));
        }
        QVERIFY(seen.size() > 3); // the kills came while it was saving
    }
};

QTEST_GUILESS_MAIN(TestBothKinds)
#include "tst_bothkinds.moc"
