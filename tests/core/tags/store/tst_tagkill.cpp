// SPDX-License-Identifier: GPL-3.0-or-later
// A program killed at any moment while it saves tags leaves a file with the tags from before or after a save, all
// foreign frames and the audio.

#include "core/storage/safewrite.h"
#include "core/tags/store/tagstore.h"
#include "support/filesteps.h"
#include "support/mp3builder.h"

#include <QDir>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

using namespace ravlin;
using namespace ravlin::test;

class TestTagKill : public QObject
{
    Q_OBJECT

private:
    static constexpr int Kills = 250; // in each of the two modes

    QTemporaryDir m_folder;

    /// Titles that fit, that need the padding, and that make the tag grow.
    static QStringList titles()
    {
        return {QStringLiteral("a"), QStringLiteral("a title"), QString(1500, u'x'), QString(9000, u'y'),
            QString(3000, QChar(0x65E5))};
    }

    [[noreturn]] static void saveForEver(const QString &path, int mode)
    {
        ProgramState state;
        state.freeMegabytes = 1000000;
        state.tagSaveMode = mode;
        TagStore store(state, platform::FileSystem::native());
        TagRecord record;
        record.Artist = QStringLiteral("artist");
        const QStringList all = titles();
        for (qsizetype i = 0;; ++i) {
            record.Title = all[i % all.size()];
            if (!store.SaveTag(path, record))
                ::_exit(1);
        }
    }

    /// Runs the loop in its own process and kills it after that many microseconds.
    static void runAndKill(const QString &path, int mode, unsigned microseconds)
    {
        const pid_t child = ::fork();
        if (child == 0)
            saveForEver(path, mode);
        QVERIFY(child > 0);
        ::usleep(microseconds);
        QCOMPARE(::kill(child, SIGKILL), 0);
        int status = 0;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QVERIFY(WIFSIGNALED(status)); // it was still saving, and no save had failed
    }

private Q_SLOTS:
    void everyKillLeavesWholeTagsAndTheAudio_data()
    {
        QTest::addColumn<int>("mode");
        QTest::newRow("ID3v2") << 2;
        QTest::newRow("ID3v1 and ID3v2") << 3;
    }
    void everyKillLeavesWholeTagsAndTheAudio()
    {
        QFETCH(int, mode);
        const QByteArray picture = pictureFrame(3, 7000);
        const QString path = writeFile(m_folder.path(), QStringLiteral("a.mp3"),
            id3v2(3, textFrame(3, "TIT2", QStringLiteral("a")) + picture, {.padding = 100}) + audio(60));
        QRandomGenerator random(static_cast<quint32>(mode));
        for (int kill = 0; kill < Kills; ++kill) {
            runAndKill(path, mode, 200 + random.bounded(4000));
            if (QTest::currentTestFailed())
                return;
            const QByteArray content = readFile(path);
            QByteArray rest = content.mid(regionSize(content));
            if (rest.size() == audio(60).size() + 128)
                rest.chop(128);
            QCOMPARE(rest, audio(60));
            QByteArray foreign;
            for (const RawFrame &frame : rawFrames(content)) {
                if (frame.id == "APIC")
                    foreign += frame.bytes;
            }
            QCOMPARE(foreign, picture);
            ProgramState state;
            TagRecord record;
            QVERIFY(TagStore(state, platform::FileSystem::native()).ReadTag(path, record));
            QVERIFY(titles().contains(record.Title));
        }
        // What the kills left behind is recognised and removed.
        QVERIFY(storage::cleanLeftovers(platform::FileSystem::native(), m_folder.path()));
        QStringList left = QDir(m_folder.path()).entryList(QDir::Files | QDir::Hidden);
        left.removeIf([this](const QString &name) { return isWholeLeftover(m_folder.filePath(name)); });
        QCOMPARE(left, QStringList(QStringLiteral("a.mp3")));
    }
};

QTEST_GUILESS_MAIN(TestTagKill)
#include "tst_tagkill.moc"
