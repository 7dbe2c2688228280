// SPDX-License-Identifier: GPL-3.0-or-later
// The user's choices for writing tags: the version of new ID3v2 tags, and that files keep their modification time
// however they are written.

#include "core/platform/filesystem.h"
#include "core/tags/store/tagstore.h"
#include "support/links.h"
#include "support/mp3builder.h"

#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

class TestTagOptions : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    ProgramState m_state;
    TagStore m_store{m_state, platform::FileSystem::native()};

    static constexpr qint64 OldTime = 1'000'000'000'123'456'700; // in ticks of 100 ns, as Windows has them

    QString oldFile(const QByteArray &content) const
    {
        const QString path = writeFile(m_folder->path(), u"a.mp3"_s, content);
        const auto file = platform::FileSystem::native().open(path, platform::OpenMode::ReadWrite);
        if (!file || !(*file)->setModified(OldTime))
            qFatal("cannot set the file's time");
        return path;
    }
    static bool hasOldTime(const QString &path)
    {
        const auto info = platform::FileSystem::native().info(path);
        return info && info->modified == OldTime;
    }
    TagRecord record(const QString &title) const
    {
        TagRecord record;
        record.Title = title;
        record.Artist = u"Björk"_s;
        record.Album = u"Début"_s;
        record.Year = u"1993"_s;
        record.Comment = u"hello"_s;
        record.Track = u"7"_s;
        record.Genre = u"Electronic"_s;
        return record;
    }
    static QByteArrayList frameNames(const QByteArray &file)
    {
        QByteArrayList names;
        for (const RawFrame &frame : rawFrames(file))
            names << frame.id;
        return names;
    }

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_state = ProgramState{};
        m_state.freeMegabytes = 100000;
    }

    void aNewTagIsOfTheChosenVersion_data()
    {
        QTest::addColumn<int>("version");
        QTest::addColumn<int>("mode");
        for (const int version : {3, 4}) {
            for (const int mode : {2, 3, 5})
                QTest::addRow("2.%d, mode %d", version, mode) << version << mode;
        }
    }
    void aNewTagIsOfTheChosenVersion()
    {
        QFETCH(int, version);
        QFETCH(int, mode);
        const QString path = oldFile(audio());
        m_state.tagSaveMode = mode;
        m_state.options.newTagVersion = version;
        QVERIFY(m_store.SaveTag(path, record(u"Título 新"_s)));
        const QByteArray file = readFile(path);
        QCOMPARE(file.left(3), QByteArray("ID3"));
        QCOMPARE(int(file[3]), version);
        const QByteArray year = version == 4 ? "TDRC" : "TYER";
        QCOMPARE(frameNames(file), (QByteArrayList{"TIT2", "TPE1", "TALB", year, "TCON", "COMM", "TRCK"}));
        QVERIFY(file.mid(regionSize(file)).startsWith(audio()));

        TagRecord read;
        QVERIFY(m_store.ReadTag(path, read));
        TagRecord expected = record(u"Título 新"_s);
        expected.HasV1 = mode == 3;
        expected.HasV2 = true;
        QVERIFY(read == expected);
    }

    void withoutAChoiceItIs23()
    {
        const QString path = oldFile(audio());
        QVERIFY(m_store.SaveTag(path, record(u"x"_s)));
        QCOMPARE(int(readFile(path)[3]), 3);
    }

    void aTagThatIsThereKeepsItsVersion()
    {
        for (const int present : {2, 3, 4}) {
            for (const int chosen : {3, 4}) {
                const QString path =
                    oldFile(id3v2(present, textFrame(present, present == 2 ? "TT2" : "TIT2", u"old"_s)) + audio());
                m_state.options.newTagVersion = chosen;
                QVERIFY(m_store.SaveTag(path, record(u"new"_s)));
                QCOMPARE(int(readFile(path)[3]), present);
            }
        }
    }

    void theTimeStaysWhereThatIsChosen_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<int>("links");
        QTest::addColumn<QString>("title");
        const QByteArray roomy = id3v2(3, textFrame(3, "TIT2", u"old"_s), {.padding = 3000}) + audio();
        QTest::newRow("in place") << roomy << 1 << u"new"_s;
        QTest::newRow("a new file in its place") << audio() << 1 << u"new"_s;
        QTest::newRow("a file with two links") << audio() << 2 << u"new"_s;
        QTest::newRow("a large tag with two links") << roomy << 2 << u"long "_s.repeated(3000);
    }
    void theTimeStaysWhereThatIsChosen()
    {
        QFETCH(QByteArray, content);
        QFETCH(int, links);
        QFETCH(QString, title);
        for (const bool keep : {false, true}) {
            const QString path = oldFile(content);
            const QString second = m_folder->filePath(u"second"_s);
            if (links == 2)
                QVERIFY(hardLink(path, second));
            m_state.options.keepFileTimes = keep;
            for (const int mode : {2, 3, 4, 5}) {
                m_state.tagSaveMode = mode;
                const QByteArray before = readFile(path);
                QVERIFY(m_store.SaveTag(path, record(title + QString::number(mode))));
                QVERIFY(readFile(path) != before);
                QCOMPARE(hasOldTime(path), keep);
            }
            QVERIFY(QFile::remove(path));
            QFile::remove(second);
        }
    }

    void itStaysWhenATagIsRemoved()
    {
        for (const bool keep : {false, true}) {
            m_state.options.keepFileTimes = keep;
            const QByteArray content = id3v2(3, textFrame(3, "TIT2", u"old"_s)) + audio() + id3v1({.title = "old"});
            const QString path = oldFile(content);
            QVERIFY(m_store.RemoveV1(path));
            QCOMPARE(hasOldTime(path), keep);
            const QString again = oldFile(content);
            QVERIFY(m_store.RemoveV2(again));
            QCOMPARE(hasOldTime(again), keep);
        }
    }

    void aReadOnlyFileKeepsItsTimeToo()
    {
        const QString path = oldFile(audio());
        QVERIFY(QFile::setPermissions(path, QFileDevice::ReadOwner));
        m_state.options.keepFileTimes = true;
        QVERIFY(m_store.SaveTag(path, record(u"new"_s)));
        QVERIFY(hasOldTime(path));
        QVERIFY(!(QFile::permissions(path) & QFileDevice::WriteOwner));
    }
};

QTEST_GUILESS_MAIN(TestTagOptions)
#include "tst_tagoptions.moc"
