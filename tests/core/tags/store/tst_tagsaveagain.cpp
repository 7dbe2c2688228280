// SPDX-License-Identifier: GPL-3.0-or-later
// A save settles a tag: what was written reads back as it was written, and the same save again writes nothing, whatever
// surrounds the frames.

#include "core/platform/filesystem.h"
#include "core/tags/store/tagobject.h"
#include "support/mp3builder.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

using namespace ravlin;
using namespace ravlin::test;
using storage::WriteOutcome;

class TestTagSaveAgain : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

    static QByteArray extendedHeader() { return {"\0\0\0\x0A\x80\0\0\0\0\x05\1\2\3\4", 14}; }
    /// A frame whose size lies: nothing behind it can be read.
    static QByteArray lyingFrame() { return QByteArray("TIT2\0\0\x20\x62\0\0", 10) + "what it holds"; }
    /// The padding that the extended header of an ID3v2.3 tag states.
    static quint32 toldPadding(const QByteArray &content) { return qFromBigEndian<quint32>(content.constData() + 16); }

    QString path() const { return m_folder.filePath(QStringLiteral("a.mp3")); }
    Result<WriteOutcome> saveTitle(const QString &title) const
    {
        TagObject object(platform::FileSystem::native());
        if (const Result<void> linked = object.Link(path()); !linked)
            return tl::unexpected(linked.error());
        object.setTitle(title);
        return object.SaveV2Tag();
    }
    QString title() const
    {
        TagObject object(platform::FileSystem::native());
        return object.Link(path()) ? object.Title() : QStringLiteral("unreadable");
    }
    void write(const QByteArray &content) const { writeFile(m_folder.path(), QStringLiteral("a.mp3"), content); }

private Q_SLOTS:
    void aTextThatCannotBeStoredAsItIsIsWrittenOnce_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("stored");
        QTest::newRow("zeros") << QStringLiteral("TCON") + QString(3, QChar(u'\0')) + QStringLiteral("Кино")
                               << QStringLiteral("TCONКино");
        QTest::newRow("a mark in front") << QStringLiteral("\uFEFFКино") << QStringLiteral("Кино");
        QTest::newRow("half a character") << QString(QChar(0xD800)) + u'a' << QStringLiteral("\uFFFDa");
    }
    void aTextThatCannotBeStoredAsItIsIsWrittenOnce()
    {
        QFETCH(QString, text);
        QFETCH(QString, stored);
        for (const int version : {2, 3, 4}) {
            const TagOptions options{.padding = 8,
                .extendedHeader = version == 3 ? extendedHeader() : QByteArray(),
                .tail = version == 2 ? QByteArray() : lyingFrame()};
            write(id3v2(version, textFrame(version, version == 2 ? "TT2" : "TIT2", QStringLiteral("x")), options) +
                  audio());
            QVERIFY(saveTitle(text).value() != WriteOutcome::Unchanged);
            QCOMPARE(title(), stored);
            const QByteArray once = readFile(path());
            QCOMPARE(saveTitle(text).value(), WriteOutcome::Unchanged);
            QCOMPARE(readFile(path()), once);
        }
    }

    void anEmptyValueAtTheEndIsWrittenOnce()
    {
        write(id3v2(4, frame(4, "TIT2", QByteArray("\3one\0two", 8)), {.padding = 40}) + audio());
        const QString text = QStringLiteral("one / ");
        QVERIFY(saveTitle(text).value() != WriteOutcome::Unchanged);
        QCOMPARE(title(), text); // as one value, for two would read as "one"
        QCOMPARE(saveTitle(text).value(), WriteOutcome::Unchanged);
    }

    // The stated padding once excluded the tail if the tag had to grow, and included it if it was written in place.
    void paddingIsToldAlikeInPlaceAndInAGrownTag()
    {
        write(id3v2(3, textFrame(3, "TIT2", QStringLiteral("x")),
                  {.padding = 12, .extendedHeader = extendedHeader(), .tail = lyingFrame()}) +
              audio());
        QVERIFY(saveTitle(QString(100, u'a')).has_value());
        const QByteArray grown = readFile(path());
        QCOMPARE(qint64{toldPadding(grown)}, regionSize(grown) - 10 - 10 - (10 + 101));
        QVERIFY(saveTitle(QString(100, u'b')).has_value());
        const QByteArray inPlace = readFile(path());
        QCOMPARE(inPlace.size(), grown.size());
        QCOMPARE(toldPadding(inPlace), toldPadding(grown));
    }

    // 150 bytes are stored as 01 16 in ID3v2.4, which reads as 278 in the form of ID3v2.3. With less padding behind the
    // frame than the size of a header, the other form looked right, as if the frame held what follows.
    void aFrameIsReadWithTheSizeItWasWrittenWith_data()
    {
        QTest::addColumn<int>("zeros");
        for (const int zeros : {0, 1, 5, 9, 10, 11})
            QTest::addRow("%d zeros left", zeros) << zeros;
    }
    void aFrameIsReadWithTheSizeItWasWrittenWith()
    {
        QFETCH(int, zeros);
        const QByteArray tail = QByteArray(278 - 150 - zeros, 'x') + textFrame(4, "TALB", QStringLiteral("album"));
        write(id3v2(4, textFrame(4, "TIT2", QStringLiteral("x")), {.padding = 148 + zeros, .tail = tail}) + audio());
        const QString text(149, u'a');
        QVERIFY(saveTitle(text).has_value());
        QCOMPARE(title(), text);
        QVERIFY(readFile(path()).contains(tail));
        QVERIFY(readFile(path()).endsWith(audio()));
        QCOMPARE(saveTitle(text).value(), WriteOutcome::Unchanged);
    }

    void aSizeThatWouldBeReadDifferentlyIsNotWritten()
    {
        const QByteArray unknown = QByteArray(278 - 150, 'x') + textFrame(4, "TALB", QStringLiteral("album"));
        const QByteArray before =
            id3v2(4, textFrame(4, "TIT2", QStringLiteral("x")) + unknown, {.padding = 300}) + audio();
        write(before);
        QCOMPARE(saveTitle(QString(149, u'a')).error().code, ErrorCode::BrokenTag);
        QCOMPARE(readFile(path()), before);
        // A size that both forms read alike can be written.
        QVERIFY(saveTitle(QString(60, u'a')).has_value());
        QCOMPARE(title(), QString(60, u'a'));
        QVERIFY(readFile(path()).contains(unknown));
    }

    void brokenCompressedFramesAreCarriedAlongInSilence_data()
    {
        QTest::addColumn<QByteArray>("body");
        const QByteArray packed = qCompress(textBody(0, QString(500, u'a')));
        QByteArray wrongSum = packed;
        wrongSum.back() = static_cast<char>(wrongSum.back() ^ 1);
        QTest::newRow("no zlib stream") << QByteArray("\0\0\0\x09not zlib", 12);
        QTest::newRow("cut off") << packed.chopped(6);
        QTest::newRow("wrong checksum") << wrongSum;
        QTest::newRow("more than it claims") << QByteArray("\0\0\0\x05", 4) + packed.mid(4);
        QTest::newRow("less than it claims") << QByteArray("\0\0\x7F\x05", 4) + packed.mid(4);
        QTest::newRow("no stream at all") << QByteArray("\0\0\0\x05", 4);
    }
    void brokenCompressedFramesAreCarriedAlongInSilence()
    {
        QFETCH(QByteArray, body);
        QTest::failOnWarning(QRegularExpression(QStringLiteral(".*")));
        const QByteArray broken = frame(3, "TIT2", body, 0x0080);
        write(id3v2(3, broken, {.padding = 100}) + audio());
        QVERIFY(saveTitle(QStringLiteral("new")).has_value());
        QCOMPARE(title(), QStringLiteral("new"));
        QVERIFY(readFile(path()).contains(broken));
    }
};

QTEST_GUILESS_MAIN(TestTagSaveAgain)
#include "tst_tagsaveagain.moc"
