// SPDX-License-Identifier: GPL-3.0-or-later
// What reading a tag costs is bounded, however the tag was made. A tag beyond the budgets shows what was found until
// there and says so, and nothing is ever saved from it. Tags that are merely big are read and written in full.

#include "core/files/list/folderscan.h"
#include "core/tags/store/listreader.h"
#include "core/tags/store/tageditor.h"
#include "core/tags/store/tagobject.h"
#include "core/tags/store/tagstore.h"
#include "support/tagbombs.h"
#include "support/tagfixture.h"

#include <QTemporaryDir>
#include <QTest>

using namespace ravlin;
using namespace ravlin::test;
using id3::Detail;

namespace {

constexpr qint64 Mebi = 1 << 20;
/// Reading may take the bytes of a frame more than a budget says, and what the window reads ahead.
constexpr qint64 Slack = 2 * Mebi;
constexpr qint64 LargestTag = id3::TagHeaderSize + id3::MaximumBodySize;

id3::Tag parsed(platform::File &file, Detail detail)
{
    platform::FileSource source(file, file.info()->size);
    auto tag = id3::Tag::parse(source, detail);
    if (!tag || !*tag)
        qFatal("no tag");
    return **tag;
}

id3::Tag parsed(const QByteArray &content, Detail detail)
{
    platform::MemorySource source(content);
    auto tag = id3::Tag::parse(source, detail);
    if (!tag || !*tag)
        qFatal("no tag");
    return **tag;
}

QString titleOf(const id3::Tag &tag)
{
    const id3::Frame *frame = tag.programFrame(FrameKind::Title);
    return frame ? frame->text : QString();
}

qint64 charactersOf(const id3::Tag &tag)
{
    qint64 characters = 0;
    for (const id3::Frame &frame : tag.frames())
        characters += frame.text.size() + frame.description.size();
    return characters;
}

QByteArray fiveFields(int version)
{
    return textFrame(version, "TIT2", QStringLiteral("t")) + textFrame(version, "TPE1", QStringLiteral("p")) +
           textFrame(version, "TALB", QStringLiteral("a")) +
           textFrame(version, version == 4 ? "TDRC" : "TYER", QStringLiteral("1999")) +
           textFrame(version, "TRCK", QStringLiteral("7"));
}

} // namespace

class TestTagBombs : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

    QString file(const QByteArray &content) const
    {
        return writeFile(m_folder.path(), QStringLiteral("a.mp3"), content);
    }
    TagObject linked(const QString &path) const
    {
        TagObject object(platform::FileSystem::native());
        if (const Result<void> result = object.Link(path); !result)
            qFatal("%s", qPrintable(result.error().detail));
        return object;
    }
    ListFields listed(const QString &path) const
    {
        auto file = platform::FileSystem::native().open(path, platform::OpenMode::Read);
        const Result<ListFields> fields = readListFields(**file);
        if (!fields)
            qFatal("%s", qPrintable(fields.error().detail));
        return *fields;
    }

private Q_SLOTS:
    void compressedZerosAreCutAtTheBudget_data()
    {
        QTest::addColumn<int>("version");
        QTest::addColumn<QByteArray>("id");
        QTest::addColumn<bool>("isListed");
        for (const int version : {3, 4}) {
            for (const char *id : {"TIT2", "TRCK", version == 3 ? "TYER" : "TDRC"})
                QTest::addRow("2.%d %s", version, id) << version << QByteArray(id) << true;
            for (const char *id : {"COMM", "TCON"})
                QTest::addRow("2.%d %s", version, id) << version << QByteArray(id) << false;
        }
    }
    void compressedZerosAreCutAtTheBudget()
    {
        QFETCH(int, version);
        QFETCH(QByteArray, id);
        QFETCH(bool, isListed);
        const QByteArray artist = textFrame(version, "TPE1", QStringLiteral("artist"));
        const QByteArray bomb = bombFile(version, id.constData(), 2000, artist);
        const id3::Tag whole = parsed(bomb, Detail::Everything);
        QVERIFY(whole.isCut());
        QCOMPARE(whole.decompressedSize(), id3::MaximumDecompressedSize);
        QCOMPARE(whole.programFrame(FrameKind::LeadArtist)->text, QStringLiteral("artist"));
        const id3::Tag list = parsed(bomb, Detail::ListFields);
        QCOMPARE(list.isCut(), isListed);
        QCOMPARE(list.decompressedSize(), isListed ? id3::MaximumDecompressedSize : 0);
        const QString path = file(bomb);
        QCOMPARE(linked(path).Artist(), QStringLiteral("artist"));
        QCOMPARE(listed(path).artist, QStringLiteral("artist"));
        QCOMPARE(listed(path).isCut, isListed);
    }

    void eightMebibytesAreReadInFull()
    {
        for (const int version : {3, 4}) {
            const QByteArray behind = textFrame(version, "TPE1", QStringLiteral("behind"));
            for (const int count : {8, 9}) {
                const QByteArray frames = compressedFrame(version, "TCON", zeros()).repeated(count) + behind;
                const id3::Tag tag = parsed(id3v2(version, frames), Detail::Everything);
                QCOMPARE(tag.isCut(), count > 8);
                QCOMPARE(tag.programFrame(FrameKind::LeadArtist) != nullptr, count <= 8);
            }
        }
    }

    // Lies about the size cost no more than the truth.
    void framesThatDecompressToMoreOrLessThanTheySayCount()
    {
        QByteArray lying = compressedFrame(3, "TIT2", zeros() + zeros());
        lying.replace(10, 4, QByteArray("\0\x10\0\0", 4)); // says one
        const id3::Tag tag = parsed(id3v2(3, lying.repeated(100)), Detail::ListFields);
        QVERIFY(tag.isCut());
        QVERIFY(tag.decompressedSize() <= id3::MaximumDecompressedSize);
    }

    void whatNobodyAsksForIsNotDecompressed()
    {
        for (const int version : {3, 4}) {
            const QByteArray picture = compressedFrame(version, "APIC", QByteArray(20 * Mebi, 'x'));
            const QByteArray frames =
                picture + compressedFrame(version, "PRIV", zeros()).repeated(50) + fiveFields(version);
            for (const Detail detail : {Detail::ListFields, Detail::Everything}) {
                const id3::Tag tag = parsed(id3v2(version, frames), detail);
                QVERIFY(!tag.isCut());
                QCOMPARE(tag.decompressedSize(), 0);
                QCOMPARE(titleOf(tag), QStringLiteral("t"));
            }
            // The list does not ask for a second title either.
            const QByteArray titles = textFrame(version, "TIT2", QStringLiteral("first")) +
                                      compressedFrame(version, "TIT2", zeros()).repeated(50);
            QCOMPARE(parsed(id3v2(version, titles), Detail::ListFields).decompressedSize(), 0);
        }
    }

    void textsAreBoundedTogether()
    {
        const QByteArray frame = textFrame(3, "TCON", QString(Mebi - 1, u'x'));
        GeneratedFile many(id3v2(3, frame.repeated(100)), QByteArray(1, '\0'), 101 * Mebi);
        const id3::Tag tag = parsed(many, Detail::Everything);
        QVERIFY(tag.isCut());
        QVERIFY(2 * charactersOf(tag) <= id3::MaximumHeldSize);
        QVERIFY(many.bytesRead <= id3::MaximumTextSize + Slack);
        // Texts that turn out empty are read no further either.
        const QByteArray empty = ::frame(3, "TIT2", zeros());
        GeneratedFile hollow(id3v2(3, empty.repeated(100)), QByteArray(1, '\0'), 101 * Mebi);
        QVERIFY(parsed(hollow, Detail::ListFields).isCut());
        QVERIFY(hollow.bytesRead <= id3::MaximumTextSize + Slack);
    }

    // Each zero between two values becomes a separator of three characters.
    void separatorsDoNotMultiplyATextBeyondTheBudget()
    {
        QByteArray body(Mebi, '\0');
        body[1] = 'A';
        body.back() = 'B';
        const QByteArray content = id3v2(3, compressedFrame(3, "TIT2", body).repeated(8));
        const id3::Tag tag = parsed(content, Detail::Everything);
        QVERIFY(tag.isCut());
        QVERIFY(2 * charactersOf(tag) <= id3::MaximumHeldSize);
        const id3::Tag list = parsed(content, Detail::ListFields);
        QVERIFY(!list.isCut());
        QVERIFY(charactersOf(list) <= id3::MaximumListText + 1);
    }

    void theListHoldsNoMoreOfATextThanItShows()
    {
        const QString title(5000, u'x');
        const QString path = file(id3v2(3, textFrame(3, "TIT2", title, 1)) + audio());
        QCOMPARE(listed(path).title, title.first(4096) + QChar(0x2026));
        QVERIFY(!listed(path).isCut);
        QCOMPARE(linked(path).Title(), title);
        const QString longest(4096, QChar(0x65E5));
        QCOMPARE(listed(file(id3v2(4, textFrame(4, "TIT2", longest, 3)))).title, longest);
        // However many frames there are of a year that is not the version's own.
        const QByteArray years = textFrame(4, "TYER", QString(4000, u'y')).repeated(4000);
        QCOMPARE(parsed(id3v2(4, years), Detail::ListFields).frames().size(), size_t{1});
    }

    void aHugeTextFrameIsCarriedAlongUnread()
    {
        const QByteArray header("TIT2\x0C\0\0\0\0\0", 10); // 201 MB
        const qint64 bodySize = 0x0C000000 + 10;
        for (const Detail detail : {Detail::ListFields, Detail::Everything}) {
            GeneratedFile huge(tagHeader(3, 0, bodySize) + header, "x", bodySize + 4000);
            const id3::Tag tag = parsed(huge, detail);
            QVERIFY(!tag.isCut());
            QCOMPARE(titleOf(tag), QString());
            QVERIFY(huge.bytesRead < 20000);
        }
    }

    void framesWithoutNumberAreCut()
    {
        const QByteArray tiny = frame(3, "PRIV", "x");
        for (const size_t count : {id3::MaximumFrameCount, id3::MaximumFrameCount + 1}) {
            const QByteArray content =
                id3v2(3, tiny.repeated(static_cast<qsizetype>(count)), {.padding = 4000}) + audio();
            const QString path = file(content);
            TagObject object = linked(path);
            QCOMPARE(object.isV2Cut(), count > id3::MaximumFrameCount);
            QCOMPARE(object.frames().size(), id3::MaximumFrameCount);
            QCOMPARE(listed(path).isCut, count > id3::MaximumFrameCount);
        }
        // Millions cost no more.
        GeneratedFile millions(tagHeader(3, 0, id3::MaximumBodySize), frame(3, "COMM", "x"), LargestTag);
        QVERIFY(parsed(millions, Detail::Everything).isCut());
        QVERIFY(millions.bytesRead < Mebi);
    }

    void bigTagsThatAreNoBombsAreReadAndWritten()
    {
        const QByteArray cover = pictureFrame(3, 10 * Mebi);
        const QByteArray objects = frame(3, "GEOB", QByteArray(1000 * 1000, 'g')).repeated(30);
        for (const quint8 flags : {quint8{0x00}, quint8{0x80}}) {
            const QByteArray content =
                id3v2(3, cover + objects + fiveFields(3), {.flags = flags, .padding = 100}) + audio();
            const QString path = file(content);
            QCOMPARE(listed(path).title, QStringLiteral("t"));
            QVERIFY(!listed(path).isCut);
            TagObject object = linked(path);
            object.setTitle(QStringLiteral("new title"));
            const auto saved = object.SaveV2Tag();
            QVERIFY(saved.has_value());
            const TagObject again = linked(path);
            QCOMPARE(again.Title(), QStringLiteral("new title"));
            QCOMPARE(again.frames().size(), size_t{1 + 30 + 5});
            const QByteArray after = readFile(path);
            const QByteArray kept = after.mid(10, again.frames()[30].header.end - 10);
            QCOMPARE(flags == 0 ? kept : id3::removeUnsynchronisation({kept.constData(), size_t(kept.size())}),
                cover + objects);
            QCOMPARE(after.last(audio().size()), audio());
        }
    }

    void nothingIsSavedFromACutTag()
    {
        const QByteArray content = bombFile(3, "COMM", 20, fiveFields(3)) + id3v1({.title = "v1"});
        const QString path = file(content);
        using Write = Result<storage::WriteOutcome> (*)(TagObject &);
        const std::initializer_list<Write> writes{[](TagObject &object) { return object.SaveV1Tag(); },
            [](TagObject &object) { return object.SaveV2Tag(); }, [](TagObject &object) { return object.StripV1Tag(); },
            [](TagObject &object) { return object.StripV2Tag(); }};
        for (const Write write : writes) {
            TagObject object = linked(path);
            object.setTitle(QStringLiteral("new"));
            const auto written = write(object);
            QVERIFY(!written);
            QCOMPARE(written.error().code, ErrorCode::TagTooLarge);
            QCOMPARE(written.error().path, path);
        }
        for (int mode = 1; mode <= 5; ++mode) {
            ProgramState state = roomyState(mode);
            TagStore store(state, platform::FileSystem::native());
            TagRecord record;
            QCOMPARE(store.ReadTag(path, record).error().code, ErrorCode::TagTooLarge);
            QCOMPARE(record.Title, QStringLiteral("t"));
            QCOMPARE(record.Track, QStringLiteral("7"));
            QVERIFY(record.HasV1 && record.HasV2);
            QCOMPARE(store.readRecordLeniently(path).error().code, ErrorCode::TagTooLarge);
            QCOMPARE(store.SaveTag(path, record).error().code, ErrorCode::TagTooLarge);
            QCOMPARE(PageSave(store, record).save(path).error().code, ErrorCode::TagTooLarge);
            QCOMPARE(store.RemoveV1(path).error().code, ErrorCode::TagTooLarge);
            QCOMPARE(store.RemoveV2(path).error().code, ErrorCode::TagTooLarge);
        }
        QCOMPARE(readFile(path), content);
        // The writer itself refuses too.
        auto opened = platform::FileSystem::native().open(path, platform::OpenMode::Read);
        const std::optional<id3::Tag> tag = parsed(**opened, Detail::Everything);
        platform::FileSource source(**opened, content.size());
        const auto composed = id3::composeSave(source, tag, {{FrameKind::Title, {false, QStringLiteral("new"), 0}}});
        QCOMPARE(composed.error().code, ErrorCode::TagTooLarge);
    }

    // --- tags that are unsynchronised as a whole

    void anUnsynchronisedBodyIsReadAsAStream()
    {
        const QByteArray artist = textFrame(3, "TPE1", QStringLiteral("artist"));
        const QByteArray picture("APIC\x0A\0\0\0\0\0", 10); // 168 MB
        const QByteArray head = tagHeader(3, 0x80, id3::MaximumBodySize) + artist + picture;
        for (const QByteArray &pattern : {QByteArray(1, '\0'), QByteArray("\xFF\0", 2)}) {
            for (const Detail detail : {Detail::ListFields, Detail::Everything}) {
                GeneratedFile huge(head, pattern, LargestTag);
                const id3::Tag tag = parsed(huge, detail);
                QVERIFY(tag.isCut());
                QCOMPARE(tag.programFrame(FrameKind::LeadArtist)->text, QStringLiteral("artist"));
                QVERIFY(huge.bytesRead <= id3::MaximumUnsynchronisedSize + Slack);
                QVERIFY(huge.largestRead <= Mebi / 8);
            }
        }
    }

    // Whether a frame's size is of its own version is seen at two places far away. Looking there again and again must
    // not mean walking there again and again.
    void lookingAheadInAnUnsynchronisedTagIsNotQuadratic()
    {
        // 16 MB, or 2 MB as ID3v2.4 would have it: there the next frame begins.
        const QByteArray period = QByteArray("PRIV\x01\0\0\0\0\0", 10) + QByteArray(2 * Mebi, 'y');
        GeneratedFile file(tagHeader(3, 0x80, 60 * Mebi), period, 60 * Mebi + 10);
        QVERIFY(parsed(file, Detail::Everything).frames().size() > 20);
        QVERIFY(file.bytesRead <= 65 * Mebi);
    }

    // Zeros of the scheme at each place around the ends of the blocks that the body is read in.
    void blocksOfAnUnsynchronisedBodyJoin()
    {
        for (qsizetype size = 4040; size < 4100; ++size) {
            for (const char *marker : {"\xFF", "\xFF\xFF", "\xFF\xE0\xFF", "x"}) {
                const QByteArray first = frame(3, "PRIV", QByteArray(size, 'p') + marker);
                const QByteArray text = QByteArray("\0", 1) + QByteArray(4080, 'a') + QByteArray(40, '\xFF');
                const QByteArray content = id3v2(3,
                    first + frame(3, "TIT2", text) + frame(3, "GEOB", "\xFF") +
                        textFrame(3, "TALB", QStringLiteral("z")),
                    {.flags = 0x80, .padding = 50});
                for (const Detail detail : {Detail::ListFields, Detail::Everything}) {
                    const id3::Tag tag = parsed(content, detail);
                    QCOMPARE(titleOf(tag), QString::fromLatin1(text.sliced(1)).first(titleOf(tag).size()));
                    QVERIFY(titleOf(tag).size() >= 4097);
                    QVERIFY(tag.programFrame(FrameKind::Album));
                }
                const id3::Tag tag = parsed(content, Detail::Everything);
                QCOMPARE(tag.frames().size(), size_t{4});
                for (size_t i = 0; i < 4; ++i) {
                    const id3::FrameHeader &header = tag.frames()[i].header;
                    const QByteArray stored = content.mid(header.offset, header.end - header.offset);
                    const QByteArray decoded =
                        id3::removeUnsynchronisation({stored.constData(), size_t(stored.size())});
                    QCOMPARE(decoded.size(), header.size());
                    QVERIFY(decoded.startsWith(QByteArray(header.id.data(), 4)));
                    const qint64 stuffing = content[header.offset + 7] == '\xFF' ? 1 : 0; // in the size
                    QCOMPARE(header.bodyOffset, header.offset + 10 + stuffing);
                }
                QCOMPARE(tag.framesEnd(), tag.frames().back().header.end);
                QCOMPARE(content.mid(tag.framesEnd()), QByteArray(50, '\0'));
            }
        }
    }

    // Frames that stay keep their bytes, also where another program left zeros of the scheme out.
    void framesOfAnUnsynchronisedTagKeepTheirBytes()
    {
        const QByteArray priv = frame(3, "PRIV", QByteArray("\xFF\0\x41\xFF", 4)); // stored as it is: reads FF 41 FF
        QByteArray body = priv;
        body[7] = 3; // its size without the zero
        const QByteArray title = textFrame(3, "TIT2", QStringLiteral("old"));
        const QByteArray end = frame(3, "GEOB", "\xFF");
        for (const QString &newTitle : {QStringLiteral("new"), QString(), QString(3000, QChar(0xFF))}) {
            for (const qsizetype padding : {0, 30}) {
                const QByteArray content = tagHeader(3, 0x80, body.size() + title.size() + end.size() + padding) +
                                           body + title + end + QByteArray(padding, '\0') + audio();
                const QString path = file(content);
                TagObject object = linked(path);
                QCOMPARE(object.frames().size(), size_t{3});
                object.setTitle(newTitle);
                QVERIFY(object.SaveV2Tag());
                const QByteArray after = readFile(path);
                QCOMPARE(after.mid(10, body.size()), body);
                QVERIFY(after.mid(10 + body.size()).contains(end));
                QCOMPARE(after.last(audio().size()), audio());
                const TagObject again = linked(path);
                QCOMPARE(again.Title(), newTitle);
                QCOMPARE(again.frames().size(), size_t{newTitle.isEmpty() ? 2U : 3U});
                QCOMPARE(again.frames().back().header.bodySize, 1);
            }
        }
    }

    // A program that sets the flag and does nothing. Strict readers don't take such a tag for an unsynchronised one,
    // and would misread a new frame that is.
    void aTagThatOnlySaysItIsUnsynchronisedBecomesOne()
    {
        const QByteArray priv = frame(3, "PRIV", QByteArray("\xFF\xFB\x90\xFF\xE0\xFF", 6));
        const QByteArray title = textFrame(3, "TIT2", QStringLiteral("old"));
        const QByteArray other = frame(3, "GEOB", QByteArray(5000, 'g') + QByteArray("\xFF\xF0", 2));
        const QByteArray body = priv + title + other;
        const QString path = file(tagHeader(3, 0x80, body.size() + 100) + body + QByteArray(100, '\0') + audio());
        TagObject object = linked(path);
        object.setTitle(QStringLiteral("ÿþ new"));
        QVERIFY(object.SaveV2Tag());
        const QByteArray after = readFile(path);
        const QByteArray tag = after.mid(10, regionSize(after) - 10);
        for (qsizetype i = 0; i + 1 < tag.size(); ++i)
            QVERIFY(tag[i] != '\xFF' || static_cast<unsigned char>(tag[i + 1]) < 0xE0);
        const QByteArray decoded = id3::removeUnsynchronisation({tag.constData(), size_t(tag.size())});
        QVERIFY(decoded.startsWith(priv));
        QVERIFY(decoded.contains(other));
        QCOMPARE(linked(path).Title(), QStringLiteral("ÿþ new"));
        QCOMPARE(after.mid(regionSize(after)), audio());
    }

    void thePaddingOfAnUnsynchronisedTagIsNotHeld()
    {
        const QByteArray head = tagHeader(3, 0x80, 10 * Mebi) + textFrame(3, "TIT2", QStringLiteral("t"));
        for (const qint64 size : {1, 20, 5000}) {
            GeneratedFile file(head, QByteArray(1, '\0'), 11 * Mebi);
            const std::optional<id3::Tag> tag = parsed(file, Detail::Everything);
            platform::FileSource source(file, 11 * Mebi);
            const auto composed = id3::composeSave(source, tag, {{FrameKind::Title, {false, QString(size, u'n'), 0}}});
            QVERIFY(composed && *composed);
            qint64 length = 0;
            qint64 fresh = 0;
            for (const storage::Segment &segment : **composed) {
                length += segment.length;
                fresh += segment.bytes.size();
            }
            QCOMPARE(length, 11 * Mebi);
            QVERIFY(fresh < size + 100);
        }
    }

    // --- stopping

    void aStopEndsReadingInsideATag()
    {
        const QByteArray frames = compressedFrame(3, "TIT2", zeros()).repeated(4);
        const QByteArray huge("APIC\x0A\0\0\0\0\0", 10);
        const std::initializer_list<std::pair<QByteArray, QByteArray>> files{
            {tagHeader(3, 0, id3::MaximumBodySize) + frames, frame(3, "PRIV", QByteArray(5000, 'x'))},
            {tagHeader(3, 0x80, id3::MaximumBodySize) + huge, "x"}};
        for (const auto &[head, pattern] : files) {
            std::stop_source source;
            GeneratedFile file(head, pattern, LargestTag);
            int readsAtStop = 0;
            file.afterRead = [&] {
                if (file.reads == 3) {
                    source.request_stop();
                    readsAtStop = file.reads;
                }
            };
            const Result<ListFields> fields = readListFields(file, source.get_token());
            QVERIFY(!fields);
            QCOMPARE(fields.error().code, ErrorCode::Cancelled);
            QVERIFY(file.reads <= readsAtStop + 3);
        }
    }

    void aStoppedListingHasNoFailures()
    {
        QTemporaryDir folder;
        writeFile(folder.path(), QStringLiteral("a.mp3"), bombFile(3, "TIT2", 100));
        std::stop_source source;
        source.request_stop();
        const Result<Listing> stopped = ListFolder(folder.path(), {}, {.stop = source.get_token()});
        QVERIFY(stopped->failures.empty());
        QVERIFY(!stopped->isComplete);
        const Result<Listing> whole = ListFolder(folder.path(), {});
        QCOMPARE(whole->rows.size(), size_t{1});
        QVERIFY(whole->rows.front().file.isCut());
        QVERIFY(whole->rows.front().file.tag().isCut);
    }

    // The last frame goes, and what follows the tag can't be read: perhaps another tag, which must not be uncovered.
    void aReadErrorBehindTheTagIsNoEndOfTheTags()
    {
        const QByteArray first = id3v2(3, textFrame(3, "TIT2", QStringLiteral("t")), {.padding = 2 * 4096});
        GeneratedFile file(first + id3v2(3, fiveFields(3)), audio(), 60000);
        const std::optional<id3::Tag> tag = parsed(file, Detail::Everything);
        platform::FileSource source(file, 60000);
        const auto compose = [&] { return id3::composeSave(source, tag, {{FrameKind::Title, {true, {}, 0}}}); };
        const auto kept = compose();
        QVERIFY(kept && *kept && (*kept)->front().oldOffset < 0); // a tag of padding stays in front
        file.failsAt = first.size();
        const auto composed = compose();
        QVERIFY(!composed);
        QCOMPARE(composed.error().code, ErrorCode::Io);
    }

    void anExtendedHeaderOfMegabytesIsNotHeld()
    {
        const QByteArray extended = QByteArray("\0\x40\0\0", 4) + QByteArray(4 * Mebi, 'x');
        const QByteArray content =
            id3v2(3, textFrame(3, "TIT2", QStringLiteral("t")), {.extendedHeader = extended}) + audio();
        const QString path = file(content);
        TagObject object = linked(path);
        QCOMPARE(object.Title(), QStringLiteral("t"));
        object.setTitle(QStringLiteral("new"));
        QCOMPARE(object.SaveV2Tag().error().code, ErrorCode::BrokenTag);
        QCOMPARE(readFile(path), content);
    }
};

QTEST_GUILESS_MAIN(TestTagBombs)
#include "tst_tagbombs.moc"
