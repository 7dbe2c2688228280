// SPDX-License-Identifier: GPL-3.0-or-later
// Whatever system call of a save fails, the file is the old one, or the new one of a completed pass, never a mixture;
// the error is returned. The next save completes what was interrupted.

#include "core/tags/store/tagstore.h"
#include "support/faultyfilesystem.h"
#include "support/filesteps.h"
#include "support/links.h"
#include "support/mp3builder.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace ravlin;
using namespace ravlin::test;

class TestTagFaults : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    ProgramState m_state;
    platform::FileSystem &m_native = platform::FileSystem::native();

    static TagRecord record()
    {
        TagRecord record;
        record.Title = QString(3000, u'x'); // does not fit into a tag without padding
        record.Artist = QStringLiteral("artist");
        record.Track = QStringLiteral("7");
        return record;
    }
    static QByteArray frames() { return textFrame(3, "TIT2", QStringLiteral("old")) + pictureFrame(3, 6000); }
    /// The content of a file, first as it is and then after each pass of a mode.
    QList<QByteArray> stages(const QByteArray &content, int mode)
    {
        static constexpr const char *Passes[] = {"", "1", "2", "12", "15", "24"};
        const QString path = writeFile(m_folder.path(), QStringLiteral("clean.mp3"), content);
        TagStore store(m_state, m_native);
        QList<QByteArray> stages{content};
        for (const char *kind = Passes[mode]; *kind != '\0'; ++kind) {
            if (!store.WriteTagKind(path, record(), QLatin1Char(*kind)))
                qFatal("a save without a fault failed");
            stages += readFile(path);
        }
        return stages;
    }
    QString freshFile(const QByteArray &content)
    {
        const QString path = m_folder.filePath(QStringLiteral("a.mp3"));
        QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner); // it may be read-only
        return writeFile(m_folder.path(), QStringLiteral("a.mp3"), content);
    }
    quint32 permissionsOf(const QString &path) { return m_native.info(path)->permissions; }

private Q_SLOTS:
    void init()
    {
        m_state = ProgramState{};
        m_state.freeMegabytes = 100000;
    }

    void everyFailingCallLeavesAWholeFile_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("fault");
        const QByteArray v1 = id3v1({.title = "old"});
        const QList<std::pair<const char *, QByteArray>> files{{"must grow", id3v2(3, frames()) + audio() + v1},
            {"fits", id3v2(3, frames(), {.padding = 8000}) + audio() + v1}, {"no tag", audio()}};
        for (const auto &[name, content] : files) {
            for (const int mode : {1, 2, 3, 4, 5}) {
                for (const Fault fault : {Fault::Fail, Fault::FailLater, Fault::Short, Fault::Corrupt})
                    QTest::addRow("%s, mode %d, fault %d", name, mode, int(fault)) << content << mode << int(fault);
            }
        }
    }
    void everyFailingCallLeavesAWholeFile()
    {
        QFETCH(QByteArray, content);
        QFETCH(int, mode);
        QFETCH(int, fault);
        const QList<QByteArray> whole = stages(content, mode);
        m_state.tagSaveMode = mode;
        int errors = 0;
        int at = 0;
        for (;; ++at) {
            const QString path = freshFile(content);
            FaultyFileSystem faulty;
            faulty.setPlan({.fault = static_cast<Fault>(fault), .at = at});
            TagStore store(m_state, faulty);
            const Result<void> saved = store.SaveTag(path, record());
            const QByteArray after = readFile(path);
            QVERIFY2(whole.contains(after), qPrintable(QStringLiteral("call %1").arg(at)));
            if (saved)
                QCOMPARE(after, whole.last());
            else
                ++errors;
            if (!faulty.hasFired())
                break;
        }
        QVERIFY(at > 5);
        // A short write is not a failure; at least opening, reading and writing must report theirs.
        if (static_cast<Fault>(fault) == Fault::Fail)
            QVERIFY(errors > 5);
    }

    // A write that fails after attributes were set to normal sets them back.
    void aFailedWriteLeavesAReadOnlyFileAsItWas()
    {
        for (const int mode : {1, 2, 3, 4, 5}) {
            const QByteArray content = id3v2(3, frames()) + audio() + id3v1({.title = "old"});
            const QString path = freshFile(content);
            QVERIFY(ravlin::test::setPermissions(path, 0444));
            const quint32 readOnly = permissionsOf(path);
            FaultyFileSystem faulty;
            faulty.setPlan({.fault = Fault::Fail, .at = 0, .only = Call::Write});
            TagStore store(m_state, faulty);
            m_state.tagSaveMode = mode;
            const Result<void> saved = store.SaveTag(path, record());
            QVERIFY(!saved);
            QCOMPARE(saved.error().code, ErrorCode::NoSpace);
            QCOMPARE(readFile(path), content);
            QCOMPARE(permissionsOf(path), readOnly);
        }
    }

    void aSaveThatCannotMakeTheFileWritableLeavesItReadOnly()
    {
        const QByteArray content = id3v2(3, frames()) + audio();
        const QString path = freshFile(content);
        QVERIFY(ravlin::test::setPermissions(path, 0444));
        FaultyFileSystem faulty;
        faulty.setPlan({.fault = Fault::Fail, .at = 0, .only = Call::SetPermissions, .code = ErrorCode::AccessDenied});
        TagStore store(m_state, faulty);
        m_state.tagSaveMode = 2;
        QCOMPARE(store.SaveTag(path, record()).error().code, ErrorCode::AccessDenied);
        QCOMPARE(readFile(path), content);
        QCOMPARE(permissionsOf(path), 0444U);
    }

    // Several hard links are overwritten under the protection of a redo file; the next save completes it first.
    void anInterruptedSaveIsCompletedByTheNext()
    {
        const QByteArray content = id3v2(3, frames()) + audio(40);
        const QByteArray expected = stages(content, 2).last();
        int interrupted = 0;
        for (int at = 0;; ++at) {
            const QString path = freshFile(content);
            const QString link = m_folder.filePath(QStringLiteral("link.mp3"));
            QFile::remove(link);
            QVERIFY(hardLink(path, link));
            FaultyFileSystem dying;
            dying.setPlan({.fault = Fault::FailLater, .at = at, .forEver = true});
            m_state.tagSaveMode = 2;
            static_cast<void>(TagStore(m_state, dying).SaveTag(path, record()));
            const QByteArray left = readFile(path);
            interrupted += left != content && left != expected ? 1 : 0;
            const Result<void> saved = TagStore(m_state, m_native).SaveTag(path, record());
            QVERIFY2(
                saved, qPrintable(QStringLiteral("call %1: %2").arg(at).arg(saved ? QString() : saved.error().detail)));
            QCOMPARE(readFile(path), expected);
            if (!dying.hasFired())
                break;
        }
        QVERIFY(interrupted > 0);
    }
};

QTEST_GUILESS_MAIN(TestTagFaults)
#include "tst_tagfaults.moc"
