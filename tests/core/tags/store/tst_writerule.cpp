// SPDX-License-Identifier: GPL-3.0-or-later
// Tags are written only into MP3 files. The name of the file itself must end in ".mp3", wherever a link of any name
// stands. A content that begins like another format or like a text is refused, unless two MPEG frames follow each other
// in its first MiB; whatever else there is passes. A refused file is not touched, not even its mode or its times, and
// the judgement never reads far into a long file.

#include "core/platform/path.h"
#include "core/tags/store/tagobject.h"
#include "core/tags/store/tagstore.h"
#include "core/tags/store/writerule.h"
#include "support/links.h"
#include "support/mp3builder.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>

using namespace ravlin;
using namespace ravlin::test;

namespace {

constexpr qint64 MiB = 1024 * 1024;

/// A file of any length, which counts what is read of it.
class CountedSource final : public platform::ByteSource
{
public:
    CountedSource(QByteArray start, qint64 size, char fill) : m_start(std::move(start)), m_size(size), m_fill(fill) {}

    qint64 size() const override { return m_size; }
    Result<qint64> readAt(std::span<char> buffer, qint64 offset) override
    {
        const qint64 count = std::clamp<qint64>(m_size - offset, 0, qint64(buffer.size()));
        for (qint64 i = 0; i < count; ++i)
            buffer[std::size_t(i)] = offset + i < m_start.size() ? m_start[offset + i] : m_fill;
        bytesRead += count;
        if (++reads == failsAt)
            return tl::unexpected(Error{ErrorCode::Io, {}, {}});
        return count;
    }

    qint64 bytesRead = 0;
    int reads = 0;
    int failsAt = 0; ///< the number of the read that fails

private:
    const QByteArray m_start;
    const qint64 m_size;
    const char m_fill;
};

QByteArray littleEndian(quint32 number, int bytes)
{
    QByteArray text;
    for (int i = 0; i < bytes; ++i)
        text += static_cast<char>(number >> (8 * i));
    return text;
}

QByteArray chunk(const char *id, const QByteArray &content)
{
    QByteArray bytes = QByteArray(id) + littleEndian(quint32(content.size()), 4) + content;
    return bytes.size() % 2 == 0 ? bytes : bytes + '\0';
}

QByteArray riff(const char *form, const QByteArray &chunks)
{
    return "RIFF" + littleEndian(quint32(chunks.size() + 4), 4) + form + chunks;
}

QByteArray wave(quint16 format, const QByteArray &data, const QByteArray &inFront = {})
{
    return riff("WAVE", inFront + chunk("fmt ", littleEndian(format, 2) + QByteArray(14, '\0')) + chunk("data", data));
}

/// Bytes that are neither text nor frames.
QByteArray noise(qsizetype size)
{
    QByteArray bytes(size, '\0');
    for (qsizetype i = 0; i < size; ++i)
        bytes[i] = static_cast<char>((i * 7 + i / 11) & 0x7F);
    return bytes;
}

const QByteArray Png("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16);
const QByteArray Elf("\x7F"
                     "ELF\x02\x01\x01\0",
    8);
const QByteArray Jpeg("\xFF\xD8\xFF\xE0\0\x10JFIF\0", 11);
const QByteArray Text = "export PATH=/bin\nalias ll='ls -l'\n";

/// What x86 programs jump to libraries by: "FF 25" and an address that counts down, every 16 bytes.
QByteArray jumpTable()
{
    QByteArray bytes;
    for (quint32 i = 0; i < 200; ++i)
        bytes += QByteArray("\xFF\x25", 2) + littleEndian(0xFF00'2FC2 - 8 * i, 4) + QByteArray(8, '\0') + "\xFF\xFF";
    return bytes;
}

/// A tone of 440 Hz whose samples hardly leave zero.
QByteArray tone()
{
    QByteArray bytes;
    for (int i = 0; i < 44100; ++i)
        bytes += littleEndian(quint32(std::lround(100 * std::sin(i * 440 * 2 * std::numbers::pi / 44100))), 2);
    return bytes;
}

QByteArray mpegFrames(const QByteArray &header, qsizetype size)
{
    return (header + QByteArray(size - header.size(), '\0')).repeated(5);
}

/// What is in front of, or behind, the content; the rule looks between.
QByteArray smallTag()
{
    return id3v2(3, textFrame(3, "TIT2", QStringLiteral("Title")), {.padding = 100});
}

} // namespace

class TestWriteRule : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    platform::FileSystem &m_files = platform::FileSystem::native();

    Result<void> judge(const QByteArray &content) const
    {
        platform::MemorySource source(content);
        return checkMp3Content(source);
    }
    /// Each way to write, by its name.
    static std::vector<std::pair<const char *, std::function<Result<void>(TagStore &, const QString &)>>> writers()
    {
        TagRecord record;
        record.Title = QStringLiteral("New");
        return {{"save", [record](TagStore &store, const QString &path) { return store.SaveTag(path, record); }},
            {"remove ID3v1", [](TagStore &store, const QString &path) { return store.RemoveV1(path); }},
            {"remove ID3v2", [](TagStore &store, const QString &path) { return store.RemoveV2(path); }},
            {"read for saving", [](TagStore &store, const QString &path) {
                 return store.readForSaving(path).map([](const TagRecord &) {});
             }}};
    }
    /// Lets every writer try and expects the refusal.
    void expectRefusal(const QString &path, const QString &target, ErrorCode code, bool force = false)
    {
        const QByteArray content = readFile(target);
        for (const auto &[name, write] : writers()) {
            for (int mode = FirstTagSaveMode; mode <= LastTagSaveMode; ++mode) {
                ProgramState state;
                state.freeMegabytes = 100000;
                state.tagSaveMode = mode;
                state.writesAnyContent = force;
                TagStore store(state, m_files);
                const auto before = m_files.info(target);
                const Result<void> written = write(store, path);
                QVERIFY2(!written, name);
                QCOMPARE(written.error().code, code);
                const auto after = m_files.info(target);
                QVERIFY(before && after);
                QCOMPARE(after->changed, before->changed);
                QCOMPARE(after->permissions, before->permissions);
                QCOMPARE(readFile(target), content);
            }
        }
    }

private Q_SLOTS:
    void otherFormatsAreRefused_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("format");
        QTest::newRow("PNG") << Png + noise(5000) << "PNG";
        QTest::newRow("JPEG") << Jpeg + noise(5000) << "JPEG";
        QTest::newRow("FLAC") << QByteArray("fLaC\0\0\0\x22", 8) + noise(5000) << "FLAC";
        QTest::newRow("MP4") << QByteArray("\0\0\0\x20"
                                           "ftypM4A ",
                                    12) +
                                    noise(5000)
                             << "MP4";
        QTest::newRow("ZIP") << QByteArray("PK\x03\x04\x14\0", 6) + noise(5000) << "ZIP";
        QTest::newRow("ELF") << QByteArray("\x7F"
                                           "ELF\x02\x01\x01\0",
                                    8) +
                                    noise(5000)
                             << "ELF";
        QTest::newRow("WAV") << wave(1, noise(5000)) << "RIFF";
        QTest::newRow("a RIFF file of pictures") << riff("WEBP", chunk("VP8 ", noise(500))) << "RIFF";
        QTest::newRow("RIFF that breaks off") << QByteArray("RIFF") << "RIFF";
        QTest::newRow("RIFF that breaks off behind its form") << riff("WAVE", {}) << "RIFF";
        QTest::newRow("0x55 without WAVE") << riff("AVI ", chunk("fmt ", littleEndian(0x55, 2))) << "RIFF";
        QTest::newRow("text") << Text << "text";
        QTest::newRow("long text") << Text.repeated(1000) << "text";
        QTest::newRow("text in UTF-8") << QStringView(u"Ünïcödé\r\n日本語 🎵").toUtf8() << "text";
        QTest::newRow("long text in UTF-8") << QStringView(u"日本語 🎵\n").toUtf8().repeated(999) << "text";
        QTest::newRow("text in Latin-1") << QByteArray("d\xE9j\xE0 vu\n").repeated(10) << "text";
        QTest::newRow("PNG with one frame") << Png + noise(100) + audio(1) + noise(1000) << "PNG";
        QTest::newRow("PNG that ends with one frame") << Png + noise(100) + audio(1) << "PNG";
        QTest::newRow("frames of two streams")
            << Png + audio(1) + QByteArray("\xFF\xF3\x90\x64", 4) + noise(2000) << "PNG";
        QTest::newRow("a program's jump table") << Elf + jumpTable() << "ELF";
        QTest::newRow("a quiet tone") << wave(1, tone()) << "RIFF";
        QTest::newRow("frames of Layer I") << Png + mpegFrames(QByteArray("\xFF\xFF\x25\x00", 4), 64) << "PNG";
        QTest::newRow("frames in free format") << Png + mpegFrames(QByteArray("\xFF\xFB\x00\x64", 4), 500) << "PNG";
        QTest::newRow("frames with the reserved emphasis")
            << Png + mpegFrames(QByteArray("\xFF\xFB\x90\x66", 4), 417) << "PNG";
        QTest::newRow("PNG behind a tag") << smallTag() + Png + noise(5000) << "PNG";
        QTest::newRow("PNG behind two tags") << smallTag() + smallTag() + Png + noise(5000) << "PNG";
        QTest::newRow("text between tags") << smallTag() + Text + apeTag() + id3v1({.title = "Title"}) << "text";
        QTest::newRow("text before ID3v1") << Text + id3v1({.title = "Title"}) << "text";
    }
    void otherFormatsAreRefused()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, format);
        const Result<void> judged = judge(content);
        QVERIFY(!judged);
        QCOMPARE(judged.error().code, ErrorCode::NotMp3Content);
        QCOMPARE(judged.error().detail, format);
    }

    void everythingElsePasses_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("one byte") << QByteArray("x");
        QTest::newRow("audio") << audio();
        QTest::newRow("one frame") << audio(1);
        QTest::newRow("a piece of a frame") << audio(1).mid(10, 50);
        QTest::newRow("tags alone") << smallTag() + apeTag() + lyrics3() + id3v1({.title = "Title"});
        QTest::newRow("ID3v1 alone") << id3v1({.title = "A\nB"});
        QTest::newRow("a tag that claims more than there is") << QByteArray("ID3\3\0\0\0\x7F\x7F\x7F", 10) + Text;
        QTest::newRow("noise") << noise(5000);
        QTest::newRow("noise and audio") << noise(5000) + audio();
        QTest::newRow("zeros") << QByteArray(5000, '\0');
        QTest::newRow("letters without a line") << QByteArray(5000, 'x');
        QTest::newRow("a few bytes of no alphabet") << QByteArray("\xE9\n\xFF\xA0");
        QTest::newRow("lines with a NUL") << Text + '\0' + Text;
        QTest::newRow("lines with a control character") << Text + '\x01' + Text;
        QTest::newRow("MP3 in RIFF") << wave(0x55, audio());
        QTest::newRow("MP3 in RIFF, damaged") << wave(0x55, noise(5000));
        QTest::newRow("MP3 in RIFF behind other chunks")
            << wave(0x55, noise(5000), chunk("LIST", noise(5001)) + chunk("bext", noise(602)));
        QTest::newRow("MP3 in RIFF of another form") << riff("RMP3", chunk("data", audio()));
        QTest::newRow("MP3 in RIFF behind a tag") << smallTag() + wave(0x55, noise(5000));
        QTest::newRow("a picture, then audio") << Png + noise(300000) + audio();
        QTest::newRow("a picture, then two frames") << Jpeg + noise(5000) + audio(2) + noise(5000);
        QTest::newRow("a text, then audio") << Text + audio(2);
        QTest::newRow("an answer of a server, then audio") << QByteArray("HTTP/1.0 200 OK\r\nX: y\r\n\r\n") + audio();
    }
    void everythingElsePasses()
    {
        QFETCH(QByteArray, content);
        const Result<void> judged = judge(content);
        QVERIFY2(judged, judged ? "" : qPrintable(judged.error().detail));
    }

    void aFailureToReadIsNoJudgement()
    {
        const QByteArray content = smallTag() + Png + noise(200000);
        CountedSource whole(content, content.size(), '\0');
        QVERIFY(!checkMp3Content(whole));
        for (int fails = 1; fails <= whole.reads; ++fails) {
            CountedSource source(content, content.size(), '\0');
            source.failsAt = fails;
            const Result<void> judged = checkMp3Content(source);
            QVERIFY(!judged);
            QCOMPARE(judged.error().code, ErrorCode::Io);
        }
    }

    void aLongFileIsNotReadThrough()
    {
        constexpr qint64 Size = 4096 * MiB;
        CountedSource music(smallTag() + audio(), Size, '\0');
        QVERIFY(checkMp3Content(music));
        QCOMPARE(music.reads, 2); // the tag's head, and what is behind the tag
        CountedSource picture(Png, Size, '\0');
        QVERIFY(!checkMp3Content(picture));
        QVERIFY2(picture.bytesRead < 2 * MiB, qPrintable(QString::number(picture.bytesRead)));
        CountedSource text(Text, Size, '\n');
        QVERIFY(!checkMp3Content(text));
        QVERIFY2(text.bytesRead < 2 * MiB, qPrintable(QString::number(text.bytesRead)));
        const QByteArray tag = QByteArray("ID3\3\0\0\0\0\x27\x0A", 10) + QByteArray(5002, '\0');
        CountedSource tags(tag.repeated(1000), Size, '\0');
        QVERIFY(checkMp3Content(tags));
        QVERIFY2(tags.reads < 100, qPrintable(QString::number(tags.reads)));
        CountedSource chunks(riff("WAVE", chunk("LIST", noise(50000)).repeated(1000)), Size, '\0');
        QVERIFY(!checkMp3Content(chunks));
        QVERIFY2(chunks.bytesRead < 2 * MiB, qPrintable(QString::number(chunks.bytesRead)));
    }

    void theSearchEndsAfterAMebibyte()
    {
        QVERIFY(judge(Png + QByteArray(MiB - 2000, '\0') + audio()));
        QVERIFY(!judge(Png + QByteArray(MiB, '\0') + audio()));
    }

    void noWriterTouchesARefusedFile_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("picture") << Png + noise(5000);
        QTest::newRow("text that ends like a tag") << Text.repeated(200) + id3v1({.title = "Title"});
        QTest::newRow("picture with both tags") << smallTag() + Png + noise(5000) + id3v1({.title = "Title"});
    }
    void noWriterTouchesARefusedFile()
    {
        QFETCH(QByteArray, content);
        const QString path = writeFile(m_folder.path(), QStringLiteral("a.mp3"), content);
        expectRefusal(path, path, ErrorCode::NotMp3Content);
        QVERIFY(QFile::setPermissions(path, QFile::ReadOwner));
        expectRefusal(path, path, ErrorCode::NotMp3Content);
        QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner));
    }

    void theUserMayInsistOnTheContent()
    {
        const QByteArray content = Png + noise(5000);
        const QString path = writeFile(m_folder.path(), QStringLiteral("a.mp3"), content);
        ProgramState state;
        state.freeMegabytes = 100000;
        state.writesAnyContent = true;
        TagStore store(state, m_files);
        TagRecord record;
        record.Title = QStringLiteral("New");
        QVERIFY(store.SaveTag(path, record));
        QVERIFY(readFile(path).startsWith("ID3"));
        QVERIFY(store.RemoveV2(path));
        QCOMPARE(readFile(path), content);
    }

    void theNameCounts_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("isAllowed");
        QTest::newRow("lower case") << "a.mp3" << true;
        QTest::newRow("upper case") << "A.MP3" << true;
        QTest::newRow("mixed case") << "a.Mp3" << true;
        QTest::newRow("nothing else") << ".mp3" << true;
        QTest::newRow("no extension") << "song" << false;
        QTest::newRow("without the full stop") << "mp3" << false;
        QTest::newRow("another extension") << "cover.jpg" << false;
        QTest::newRow("one more extension") << "a.mp3.txt" << false;
        QTest::newRow("one letter more") << "a.mp3x" << false;
        QTest::newRow("hidden") << ".profile" << false;
    }
    void theNameCounts()
    {
        QFETCH(QString, name);
        QFETCH(bool, isAllowed);
        const QString path = writeFile(m_folder.path(), name, audio() + id3v1({.title = "Title"}));
        if (!isAllowed) {
            expectRefusal(path, path, ErrorCode::NotMp3Name);
            expectRefusal(path, path, ErrorCode::NotMp3Name, true);
            return;
        }
        ProgramState state;
        TagStore store(state, m_files);
        QVERIFY(store.RemoveV1(path));
        QCOMPARE(readFile(path), audio());
    }

    void aStreamOfAnotherFileIsNoFile()
    {
        if (platform::Separator != u'\\')
            QSKIP("only Windows has streams");
        QVERIFY(checkMp3Name(QStringLiteral(R"(C:\music\a.mp3)")));
        QVERIFY(!checkMp3Name(QStringLiteral(R"(C:\music\a.txt:b.mp3)")));
    }

    void ofALinkTheTargetsNameCounts()
    {
        const QString song = writeFile(m_folder.path(), QStringLiteral("song.mp3"), audio() + id3v1({.title = "T"}));
        const QString secret = writeFile(m_folder.path(), QStringLiteral(".profile"), audio() + id3v1({.title = "T"}));
        QVERIFY(QFile::setPermissions(secret, QFile::ReadOwner));
        const QString toSecret = m_folder.filePath(QStringLiteral("Band - Song.mp3"));
        const QString further = m_folder.filePath(QStringLiteral("further.mp3"));
        const QString toSong = m_folder.filePath(QStringLiteral("a link"));
        if (!symbolicLink(secret, toSecret) || !symbolicLink(toSecret, further) || !symbolicLink(song, toSong))
            QSKIP("no symbolic links here");
        for (const QString &link : {toSecret, further}) {
            expectRefusal(link, secret, ErrorCode::NotMp3Name);
            expectRefusal(link, secret, ErrorCode::NotMp3Name, true);
        }
        ProgramState state;
        TagStore store(state, m_files);
        QVERIFY(store.RemoveV1(toSong));
        QCOMPARE(readFile(song), audio());
        QVERIFY(QFileInfo(toSong).isSymLink());
        QVERIFY(QFile::setPermissions(secret, QFile::ReadOwner | QFile::WriteOwner));
    }

    void anythingMayBeRead()
    {
        const QString path = writeFile(m_folder.path(), QStringLiteral("cover.jpg"), Jpeg + id3v1({.title = "Title"}));
        ProgramState state;
        const TagStore store(state, m_files);
        TagRecord record;
        QVERIFY(store.ReadTag(path, record));
        QCOMPARE(record.Title, QStringLiteral("Title"));
    }

    void theCorpusPasses()
    {
        const QDir corpus(qEnvironmentVariable("RAVLIN_CORPUS", QStringLiteral("/nonexistent")));
        const QFileInfoList files = corpus.entryInfoList({QStringLiteral("*.mp3"), QStringLiteral("*.id3")});
        if (files.isEmpty())
            QSKIP("RAVLIN_CORPUS names no folder with files: nothing was checked");
        for (const QFileInfo &info : files) {
            const Result<void> judged = judge(readFile(info.filePath()));
            QVERIFY2(judged, qPrintable(info.fileName()));
        }
    }
};

QTEST_GUILESS_MAIN(TestWriteRule)
#include "tst_writerule.moc"
