// SPDX-License-Identifier: GPL-3.0-or-later
// The tag object with damaged and odd tags: what can be read is read, what can't be written without loss is refused,
// and what is not understood stays where other programs find it.

#include "core/platform/filesystem.h"
#include "core/tags/store/tagobject.h"
#include "support/mp3builder.h"

#include <QTemporaryDir>
#include <QTest>

using namespace ravlin;
using namespace ravlin::test;

class TestTagDamage : public QObject
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
    /// Saves a new title into ID3v2 and returns the file.
    QByteArray withTitle(const QByteArray &content, const QString &title) const
    {
        const QString path = file(content);
        TagObject object = linked(path);
        object.setTitle(title);
        if (const auto result = object.SaveV2Tag(); !result)
            qFatal("%s", qPrintable(result.error().detail));
        const TagObject again = linked(path);
        if (again.Title() != title)
            qFatal("title is %s", qPrintable(again.Title()));
        return readFile(path);
    }
    static QList<QByteArray> foreign(const QByteArray &content)
    {
        QList<QByteArray> frames;
        for (const RawFrame &raw : rawFrames(content)) {
            if (raw.id != "TIT2" && raw.id != "TT2")
                frames += raw.bytes;
        }
        return frames;
    }

private Q_SLOTS:
    void anEmptyFrameDoesNotHideOneThatHasAValue()
    {
        const QByteArray years = textFrame(4, "TDRC", QString()) + textFrame(4, "TYER", QStringLiteral("1999"));
        QCOMPARE(linked(file(id3v2(4, years) + audio())).Year(), QStringLiteral("1999"));
        const QByteArray titles = textFrame(3, "TIT2", QString()) + textFrame(3, "TIT2", QStringLiteral("Second"));
        QCOMPARE(linked(file(id3v2(3, titles) + audio())).Title(), QStringLiteral("Second"));
        const QByteArray comments =
            commentFrame(3, QString()) + commentFrame(3, QStringLiteral("bar"), QStringLiteral("foo"));
        QCOMPARE(linked(file(id3v2(3, comments) + audio())).Comment(), QStringLiteral("bar"));
    }

    void aTrackThatIsNoNumberIsShownAsNoneAndLeftAlone()
    {
        const QByteArray frames =
            textFrame(3, "TRCK", QStringLiteral("A1")) + textFrame(3, "TIT2", QStringLiteral("x"));
        const QString path = file(id3v2(3, frames, {.padding = 50}) + audio());
        TagObject object = linked(path);
        QCOMPARE(object.Track(), 0);
        object.removeFrames(FrameKind::TrackNumber);
        object.setTitle(QStringLiteral("new"));
        QVERIFY(object.SaveV2Tag());
        QCOMPARE(rawFrames(readFile(path)).at(0).bytes, textFrame(3, "TRCK", QStringLiteral("A1")));
    }

    void oneId3v1TagBehindAnotherGoesWithIt()
    {
        const QString path = file(audio() + id3v1({.title = "old"}) + id3v1({.title = "new"}));
        QVERIFY(linked(path).StripV1Tag());
        QCOMPARE(readFile(path), audio());
    }

    void theExtendedHeaderOfAnUnsynchronisedTagTellsThePadding()
    {
        const QByteArray extended("\0\0\0\x06\0\0\0\0\0\x64", 10);
        const QString path = file(id3v2(3, textFrame(3, "TIT2", QStringLiteral("x")),
                                      {.flags = 0x80, .padding = 100, .extendedHeader = extended}) +
                                  audio());
        TagObject object = linked(path);
        object.setTitle(QStringLiteral("xyz"));
        QVERIFY(object.SaveV2Tag());
        QCOMPARE(readFile(path).mid(10, 10), QByteArray("\0\0\0\x06\0\0\0\0\0\x62", 10));
    }

    void sizesOfTheOtherVersionAreUnderstood()
    {
        // A 2.4 tag whose frame sizes are not syncsafe, as an old program wrote them.
        const QByteArray picture = pictureFrame(3, 300);
        const QByteArray before =
            id3v2(4,
                textFrame(3, "TALB", QString(200, u'a')) + picture + textFrame(3, "TIT2", QStringLiteral("behind")),
                {.padding = 90}) +
            audio();
        const QString path = file(before);
        TagObject object = linked(path);
        QCOMPARE(object.Title(), QStringLiteral("behind"));
        QCOMPARE(object.Album(), QString(200, u'a'));
        object.setTitle(QStringLiteral("changed"));
        QVERIFY(object.SaveV2Tag());
        // Only the sizes are corrected: what follows a frame would no longer show how to read them.
        QVERIFY(readFile(path).contains(pictureFrame(4, 300)));
        QCOMPARE(linked(path).Title(), QStringLiteral("changed"));
        QCOMPARE(linked(path).Album(), QString(200, u'a'));
    }

    void aSizeOfTheOtherVersionIsReadTheSameAfterTheTagGrew()
    {
        // A 2.3 tag with a syncsafe size: read as 2.3 has it, it would reach into fresh padding and swallow the new
        // frame.
        const QByteArray before = id3v2(3, frame(4, "XAAA", QByteArray(140, 'x'))) + audio();
        const QByteArray after = withTitle(before, QStringLiteral("new"));
        QCOMPARE(foreign(after), QList<QByteArray>{frame(3, "XAAA", QByteArray(140, 'x'))});
    }

    void anUnknownFrameStaysWithTheOthers()
    {
        // Padding ends a tag, so what other programs can read behind the last frame must not be separated from it.
        const QByteArray unknown =
            "rgAD" + QByteArray("\0\0\0\4\0\0gain", 10) + textFrame(3, "TCOM", QStringLiteral("c"));
        for (const qint64 padding : {0, 400}) {
            const QByteArray before = id3v2(3, textFrame(3, "TIT2", QStringLiteral("old title")),
                                          {.tail = unknown + QByteArray(padding, '\0')}) +
                                      audio();
            for (const QString &title : {QStringLiteral("new"), QString(100, u'x'), QString(5000, u'x')}) {
                const QByteArray after = withTitle(before, title);
                QVERIFY(after.contains(textFrame(3, "TIT2", title) + unknown));
                QCOMPARE(after.mid(regionSize(after)), audio());
            }
        }
    }

    void id3v1BehindACutOffTagIsNoPartOfIt()
    {
        // Ten bytes of the tag are missing; the 128 bytes behind are not part of it.
        const QByteArray before = id3v2(3, textFrame(3, "TIT2", QStringLiteral("title")), {.padding = 50}).chopped(10);
        const QString path = file(before);
        TagObject object = linked(path);
        object.setArtist(QStringLiteral("artist"));
        QVERIFY(object.SaveV1Tag());
        const QByteArray after = readFile(path);
        QCOMPARE(after.left(before.size()), before);
        TagObject again = linked(path);
        QVERIFY(again.HasV1Tag());
        again.setTitle(QStringLiteral("new"));
        QCOMPARE(again.SaveV2Tag().error().code, ErrorCode::BrokenTag);
        QCOMPARE(again.StripV2Tag().error().code, ErrorCode::BrokenTag);
        QCOMPARE(readFile(path), after);
    }

    void manySmallCompressedFramesAskForLittleMemory()
    {
        const QByteArray text = QByteArray(1, '\0') + QByteArray(1000000, 'x');
        const QByteArray body = qCompress(text); // its first four bytes are the size, as ID3v2.3 has it
        const QByteArray before = id3v2(3, frame(3, "TPE1", body, 0x80).repeated(200)) + audio();
        const TagObject object = linked(file(before));
        qsizetype characters = 0;
        for (const id3::Frame &frame : object.frames())
            characters += frame.text.size();
        QCOMPARE(object.Artist().size(), 1000000);
        QVERIFY(2 * characters <= id3::MaximumHeldSize);
        QVERIFY(object.isV2Cut());
    }

    void whatFollowsThePaddingInsideATagIsKept()
    {
        const QByteArray tail("\x01garbage\xFF");
        const QByteArray tag = id3v2(3, textFrame(3, "TIT2", QStringLiteral("x")), {.padding = 20, .tail = tail});
        for (const QString &title :
            {QStringLiteral("y"), QStringLiteral("some more"), QString(100, u'z'), QString(5000, u'z')}) {
            const QByteArray after = withTitle(tag + audio(), title);
            QCOMPARE(after.mid(regionSize(after) - tail.size()), tail + audio());
        }
    }

    void aFrameOfALyingSizeEndsTheDirectoryAndIsKept()
    {
        QByteArray lying = frame(3, "TALB", QByteArray("\0album", 6));
        lying[5] = '\x7F'; // claims eight million bytes
        const QByteArray tag = id3v2(3, textFrame(3, "TIT2", QStringLiteral("x")) + lying);
        const QByteArray after = withTitle(tag + audio(), QStringLiteral("new title"));
        QVERIFY(after.left(regionSize(after)).endsWith(lying));
        QCOMPARE(after.mid(regionSize(after)), audio());
        QCOMPARE(linked(file(tag + audio())).Album(), QString());
    }

    void aTagThatClaimsMoreThanTheFileIsReadAndNeverWritten()
    {
        QByteArray content = id3v2(3, textFrame(3, "TIT2", QStringLiteral("x"))) + audio(1);
        content[6] = '\x7F';
        const QString path = file(content);
        TagObject object = linked(path);
        QVERIFY(object.HasV2Tag());
        QCOMPARE(object.Title(), QStringLiteral("x"));
        object.setTitle(QStringLiteral("new"));
        QCOMPARE(object.SaveV2Tag().error().code, ErrorCode::BrokenTag);
        QCOMPARE(object.StripV2Tag().error().code, ErrorCode::BrokenTag);
        QCOMPARE(readFile(path), content);
        QVERIFY(object.SaveV1Tag());
        QCOMPARE(readFile(path).left(content.size()), content);
    }

    void tagsOfUnknownVersionsAreLeftAlone()
    {
        for (const int version : {1, 5, 9}) {
            QByteArray content = id3v2(3, textFrame(3, "TIT2", QStringLiteral("x"))) + audio();
            content[3] = static_cast<char>(version);
            TagObject object = linked(file(content));
            QVERIFY(object.HasV2Tag());
            object.setTitle(QStringLiteral("new"));
            QCOMPARE(object.SaveV2Tag().error().code, ErrorCode::BrokenTag);
        }
    }
};

QTEST_GUILESS_MAIN(TestTagDamage)
#include "tst_tagdamage.moc"
