// SPDX-License-Identifier: GPL-3.0-or-later
// The reader for the list returns what the tag store reads, whatever the form of the tag, and reads no picture.

#include "core/platform/filesystem.h"
#include "core/tags/store/listreader.h"
#include "core/tags/store/tagstore.h"
#include "support/mp3builder.h"

#include <QDir>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

using namespace ravlin;
using namespace ravlin::test;

namespace {

/// A file in memory that counts the bytes read from it.
class CountingFile final : public platform::File
{
public:
    explicit CountingFile(QByteArray content) : m_content(std::move(content)) {}

    Result<qint64> readAt(std::span<char> buffer, qint64 offset) override
    {
        const qint64 size = std::min<qint64>(static_cast<qint64>(buffer.size()), m_content.size() - offset);
        std::copy_n(m_content.constData() + offset, size, buffer.data());
        bytesRead += size;
        ++reads;
        return size;
    }
    Result<platform::FileInfo> info() override
    {
        platform::FileInfo info;
        info.size = m_content.size();
        info.isFile = true;
        return info;
    }
    Result<qint64> writeAt(std::span<const char>, qint64) override { return refused(); }
    Result<void> truncate(qint64) override { return refused(); }
    Result<void> sync() override { return refused(); }
    Result<qint64> copyFrom(File &, qint64, qint64, qint64) override { return refused(); }
    Result<void> takeOwner(File &) override { return refused(); }
    Result<void> takeAttributes(File &) override { return refused(); }
    Result<void> takePermissions(File &) override { return refused(); }
    void takeTimes(File &) override {}
    Result<void> setPermissions(quint32) override { return refused(); }
    void forgetCached() override {}
    Result<bool> isPrivate() override { return refused(); }
    Result<void> setModified(qint64) override { return refused(); }
    Result<bool> tryLock() override { return refused(); }

    qint64 bytesRead = 0;
    int reads = 0;

private:
    static tl::unexpected<Error> refused() { return tl::unexpected(Error{ErrorCode::ReadOnly, {}, {}}); }
    QByteArray m_content;
};

} // namespace

class TestListReader : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    ProgramState m_state;

    void compareWithStore(const QString &path)
    {
        TagStore store(m_state, platform::FileSystem::native());
        TagRecord record;
        const Result<void> read = store.ReadTag(path, record);
        auto file = platform::FileSystem::native().open(path, platform::OpenMode::Read);
        QVERIFY(file);
        const Result<ListFields> listed = readListFields(**file);
        QCOMPARE(listed.has_value(), read.has_value() || read.error().code == ErrorCode::GenreOutOfRange);
        if (!listed)
            return;
        QCOMPARE(listed->title, record.Title);
        QCOMPARE(listed->artist, record.Artist);
        QCOMPARE(listed->album, record.Album);
        QCOMPARE(listed->year, record.Year);
        QCOMPARE(listed->track, record.Track == QStringLiteral("0") ? QString() : record.Track);
        QCOMPARE(listed->hasV1, record.HasV1);
        QCOMPARE(listed->hasV2, record.HasV2);
    }

    /// Tags of random frames, versions, flags and damage.
    static QByteArray randomFile(QRandomGenerator &random)
    {
        const int version = random.bounded(2, 5);
        const QList<const char *> ids =
            version == 2 ? QList<const char *>{"TT2", "TP1", "TAL", "TYE", "TRK", "TCO", "PIC", "XXX"}
                         : QList<const char *>{"TIT2", "TPE1", "TALB", "TYER", "TDRC", "TRCK", "TCON", "APIC", "PRIV"};
        const QStringList texts{QString(), QStringLiteral("1999"), QStringLiteral("2001-02-03"), QStringLiteral("3/12"),
            QStringLiteral("日本"), QStringLiteral("text")};
        QByteArray frames;
        for (int i = random.bounded(12); i > 0; --i) {
            const char *id = ids[random.bounded(ids.size())];
            frames += id[0] == 'T' ? textFrame(version, id, texts[random.bounded(texts.size())], random.bounded(4))
                                   : frame(version, id, QByteArray(random.bounded(6000), 'x'));
        }
        TagOptions options;
        options.padding = random.bounded(3) * random.bounded(100);
        options.flags = random.bounded(4) == 0 ? 0x80 : 0;
        QByteArray content = id3v2(version, frames, options) + audio(2);
        if (random.bounded(2) == 0)
            content += id3v1({.title = "v1", .artist = "v1", .album = "v1", .year = "1970", .track = 5});
        for (int i = random.bounded(3); i > 1; --i)
            content[random.bounded(content.size())] = static_cast<char>(random.bounded(256));
        return content;
    }

private Q_SLOTS:
    void showsWhatTheTagStoreReads()
    {
        QRandomGenerator random(20240501);
        for (int i = 0; i < 1000; ++i) {
            compareWithStore(writeFile(m_folder.path(), QStringLiteral("a.mp3"), randomFile(random)));
            if (QTest::currentTestFailed())
                return;
        }
    }

    void showsWhatTheTagStoreReadsOfTheCorpus()
    {
        const QDir corpus(qEnvironmentVariable("RAVLIN_CORPUS", QStringLiteral("/nonexistent")));
        for (const QString &name : corpus.entryList(QDir::Files))
            compareWithStore(corpus.filePath(name));
    }

    void aPictureIsSkippedNotRead()
    {
        const QByteArray texts = textFrame(3, "TIT2", QStringLiteral("t")) + textFrame(3, "TPE1", QStringLiteral("p"));
        const QByteArray more = textFrame(3, "TALB", QStringLiteral("a")) +
                                textFrame(3, "TYER", QStringLiteral("1999")) +
                                textFrame(3, "TRCK", QStringLiteral("1"));
        const QByteArray picture = pictureFrame(3, 5 * 1024 * 1024);
        CountingFile behind(id3v2(3, texts + picture + more, {.padding = 100}) + audio());
        QCOMPARE(readListFields(behind)->album, QStringLiteral("a"));
        QCOMPARE(behind.reads, 3);
        QVERIFY(behind.bytesRead < 9000);
        CountingFile before(id3v2(3, texts + more + picture, {.padding = 100}) + audio());
        QCOMPARE(readListFields(before)->album, QStringLiteral("a"));
        QCOMPARE(before.reads, 2);
    }

    void thePictureOfAnUnsynchronisedTagIsNotReadEither()
    {
        const QByteArray texts = textFrame(3, "TIT2", QStringLiteral("t")) + textFrame(3, "TPE1", QStringLiteral("p")) +
                                 textFrame(3, "TALB", QStringLiteral("a")) +
                                 textFrame(3, "TYER", QStringLiteral("1999")) +
                                 textFrame(3, "TRCK", QStringLiteral("1"));
        const QByteArray picture = pictureFrame(3, 2 * 1024 * 1024);
        CountingFile before(id3v2(3, texts + picture, {.flags = 0x80}) + audio());
        QCOMPARE(readListFields(before)->album, QStringLiteral("a"));
        QVERIFY(before.bytesRead < 100 * 1024);
        CountingFile behind(id3v2(3, picture + texts, {.flags = 0x80}) + audio());
        QCOMPARE(readListFields(behind)->album, QStringLiteral("a"));
    }

    void sizesThatAreOnlyClaimedAreNotAllocated()
    {
        QByteArray content = id3v2(4, QByteArray("TIT2\x7F\x7F\x7F\x7F\0\0\3x", 12));
        content.replace(6, 4, "\x7F\x7F\x7F\x7F");
        CountingFile file(content);
        QVERIFY(readListFields(file)->title.isEmpty());
        QVERIFY(file.bytesRead < 100);
    }
};

QTEST_GUILESS_MAIN(TestListReader)
#include "tst_listreader.moc"
