// SPDX-License-Identifier: GPL-3.0-or-later
// Reads each file of a folder of odd files (RAVLIN_CORPUS) and saves it in all five modes. The audio and the frames
// that nobody edits stay byte for byte, a second save writes nothing, and a file that can't be written is unchanged.

#include "core/tags/store/tagstore.h"
#include "support/foreignparts.h"
#include "support/mp3builder.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace ravlin;
using namespace ravlin::test;

class TestCorpus : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    ProgramState m_state;
    platform::FileSystem &m_files = platform::FileSystem::native();
    TagStore m_store{m_state, m_files};

    static bool endsWithV1(const QByteArray &content)
    {
        return content.size() >= 128 && content.last(128).startsWith("TAG") &&
               !content.last(std::min<qsizetype>(131, content.size())).startsWith("APETAGEX");
    }
    /// The file without the ID3v2 tags at its start and ID3v1 at its end.
    static QByteArray audioOf(QByteArray content)
    {
        if (endsWithV1(content))
            content.chop(128);
        while (content.startsWith("ID3") && regionSize(content) <= content.size() && !content.isEmpty())
            content.remove(0, regionSize(content));
        return content;
    }
    QList<QByteArray> foreignPartsOf(const QString &path)
    {
        const QByteArray content = readFile(path);
        const auto file = m_files.open(path, platform::OpenMode::Read);
        const auto tag = tagOf(**file, content.size());
        if (!tag)
            qFatal("%s", qPrintable(tag.error().detail));
        return foreignParts(*tag, content, editedKinds());
    }
    TagRecord read(const QString &path)
    {
        TagRecord record;
        const Result<void> result = m_store.ReadTag(path, record);
        if (!result && result.error().code != ErrorCode::GenreOutOfRange)
            qFatal("%s: %s", qPrintable(path), qPrintable(result.error().detail));
        return record;
    }
    void saveAndCheck(const QString &path, const TagRecord &record, int mode);

private Q_SLOTS:
    void everyModeKeepsWhatNobodyEdited_data();
    void everyModeKeepsWhatNobodyEdited();
};

void TestCorpus::saveAndCheck(const QString &path, const TagRecord &record, int mode)
{
    const QByteArray before = readFile(path);
    const QList<QByteArray> partsBefore = foreignPartsOf(path);
    m_state.tagSaveMode = mode;
    const Result<void> saved = m_store.SaveTag(path, record);
    const QByteArray after = readFile(path);
    if (!saved) {
        // The ID3v2 tag can't be written without loss: at most ID3v1 has changed.
        QCOMPARE(saved.error().code, ErrorCode::BrokenTag);
        const auto withoutV1 = [](const QByteArray &content) {
            return endsWithV1(content) ? content.chopped(128) : content;
        };
        QCOMPARE(withoutV1(after), withoutV1(before));
        if (mode == 2 || mode == 5)
            QCOMPARE(after, before);
        return;
    }
    QCOMPARE(audioOf(after), audioOf(before));
    if (mode != 4)
        QCOMPARE(foreignPartsOf(path), partsBefore);
    const TagRecord again = read(path);
    if (mode == 4)
        QVERIFY(again.HasV1 && !again.HasV2);
    if (mode == 2 || mode == 3 || mode == 5)
        QCOMPARE(again.Title, record.Title);

    const Result<platform::FileInfo> info = m_files.info(path);
    QVERIFY(m_store.SaveTag(path, record));
    QCOMPARE(readFile(path), after);
    QCOMPARE(m_files.info(path)->modified, info->modified);
    QCOMPARE(m_files.info(path)->inode, info->inode);
}

void TestCorpus::everyModeKeepsWhatNobodyEdited_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("mode");
    const QDir corpus(qEnvironmentVariable("RAVLIN_CORPUS"));
    const bool isThere = qEnvironmentVariableIsSet("RAVLIN_CORPUS") && corpus.exists();
    const QStringList names =
        isThere ? corpus.entryList({QStringLiteral("*.mp3"), QStringLiteral("*.id3")}, QDir::Files) : QStringList();
    if (names.isEmpty())
        QTest::newRow("no folder of odd files") << QString() << 0;
    for (const QString &name : names) {
        for (const int mode : {1, 2, 3, 4, 5})
            QTest::addRow("%s, mode %d", qPrintable(name), mode) << corpus.filePath(name) << mode;
    }
}

void TestCorpus::everyModeKeepsWhatNobodyEdited()
{
    QFETCH(QString, file);
    QFETCH(int, mode);
    if (file.isEmpty()) {
        QSKIP("RAVLIN_CORPUS names no folder with files: nothing was checked");
        return;
    }
    m_state = ProgramState{};
    m_state.freeMegabytes = 100000;
    const QString path = writeFile(m_folder.path(), QStringLiteral("a.mp3"), readFile(file));
    TagRecord record = read(path);
    saveAndCheck(path, record, mode);
    if (QTest::currentTestFailed())
        return;
    writeFile(m_folder.path(), QStringLiteral("a.mp3"), readFile(file));
    record.Title = QStringLiteral("A new title, Новое 新しい 🎵");
    saveAndCheck(path, record, mode);
}

QTEST_GUILESS_MAIN(TestCorpus)
#include "tst_corpus.moc"
