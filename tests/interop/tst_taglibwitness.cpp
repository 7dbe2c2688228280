// SPDX-License-Identifier: GPL-3.0-or-later
// Over thousands of generated well-formed tags we read the same title, artist, album, comment, year and track as
// TagLib. Where the two differ on purpose, expected() says why.

#include "core/tags/store/tagobject.h"
#include "support/mp3builder.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <id3v1tag.h>
#include <id3v2tag.h>
#include <mpegfile.h>

using namespace ravlin;
using namespace ravlin::test;

namespace {

QString toQString(const TagLib::String &text)
{
    return QString::fromStdString(text.to8Bit(true));
}

/// Makes tags of every version from random fields.
class Generator
{
public:
    explicit Generator(quint32 seed) : m_random(seed) {}

    QByteArray file()
    {
        QByteArray content = audio(3);
        const int kinds = below(8);
        if (kinds != 0)
            content = tag(2 + below(3)) + content;
        if (kinds == 0 || kinds > 4)
            content += id3v1({.title = latin(30),
                .artist = latin(30),
                .album = latin(30),
                .year = year(),
                .comment = latin(28),
                .track = below(100),
                .genre = below(126),
                .fill = below(2) != 0 ? ' ' : '\0'});
        return content;
    }

private:
    int below(int limit) { return m_random.bounded(limit); }
    QByteArray year() { return below(3) == 0 ? QByteArray() : QByteArray::number(1900 + below(130)); }
    QByteArray latin(int size)
    {
        QByteArray text;
        while (text.size() < below(size + 1))
            text += below(4) == 0 ? static_cast<char>(0xE0 + below(31)) : static_cast<char>('a' + below(26));
        return text;
    }
    QString text(int encoding)
    {
        if (encoding == 0)
            return QString::fromLatin1(latin(40));
        static const QStringList Words{QStringLiteral("Кино"), QStringLiteral("日本語"), QStringLiteral("🎵"),
            QStringLiteral("Ελλάδα"), QStringLiteral("été"), QStringLiteral("a\u0301"), QStringLiteral("plain"),
            QStringLiteral("(17)"), QStringLiteral("a/b")};
        QString text;
        for (int i = below(5); i >= 0; --i)
            text += Words[below(static_cast<int>(Words.size()))] + (i > 0 ? QStringLiteral(" ") : QString());
        return text;
    }
    QByteArray textFrameOf(int version, const char *id)
    {
        const int encoding = below(version == 4 ? 4 : 2);
        return textFrame(version, id, text(encoding), encoding);
    }
    QByteArray someFrame(int version, int kind)
    {
        const bool old = version == 2;
        switch (kind) {
        case 0:
            return textFrameOf(version, old ? "TT2" : "TIT2");
        case 1:
            return textFrameOf(version, old ? "TP1" : "TPE1");
        case 2:
            return textFrameOf(version, old ? "TAL" : "TALB");
        case 3:
            return textFrame(version, old ? "TYE" : version == 3 ? "TYER" : "TDRC", date(version));
        case 4:
            return textFrame(version, old ? "TRK" : "TRCK", track());
        case 5: {
            const int encoding = below(version == 4 ? 4 : 2);
            const QString description = below(2) == 0 ? QString() : QStringLiteral("about");
            return commentFrame(version, text(encoding), description, "eng", encoding);
        }
        case 6:
            return pictureFrame(version, 100 + below(3000));
        default:
            return textFrameOf(version, old ? "TCM" : "TCOM");
        }
    }
    QString date(int version)
    {
        const QString text = QString::number(1900 + below(130));
        return version == 4 && below(2) == 0 ? text + QStringLiteral("-05-01") : text;
    }
    QString track()
    {
        const QString text = QString::number(1 + below(99));
        return below(2) == 0 ? text : text + u'/' + QString::number(99);
    }
    QByteArray tag(int version)
    {
        QList<int> kinds{0, 1, 2, 3, 4, 5, 6, 7};
        std::shuffle(kinds.begin(), kinds.end(), m_random);
        kinds.resize(1 + below(8));
        QByteArray frames;
        for (const int kind : kinds)
            frames += someFrame(version, kind);
        TagOptions options{.padding = below(2) * below(500)};
        if (version < 4 && below(5) == 0) {
            options.flags = 0x80;
            options.padding = 64;
        } else if (version == 4 && below(8) == 0) {
            options.padding = 0;
            options.footer = true;
            // TagLib 1.13 counts the footer as part of the tag's size and loses the frame in the last ten bytes.
            frames += frame(4, "PRIV", QByteArray(20, 'p'));
        }
        return id3v2(version, frames, options);
    }

    QRandomGenerator m_random;
};

struct Fields
{
    QString title, artist, album, comment;
    int year = 0;
    int track = 0;

    bool operator==(const Fields &) const = default;
    QString toString() const
    {
        return QStringList{title, artist, album, comment, QString::number(year), QString::number(track)}.join(u'|');
    }
};

Fields ours(const QString &path)
{
    TagObject object(platform::FileSystem::native());
    if (!object.Link(path))
        qFatal("cannot read %s", qPrintable(path));
    return {object.Title(), object.Artist(), object.Album(), object.Comment(), object.Year().toInt(), object.Track()};
}

Fields fieldsOf(const TagLib::Tag &tag)
{
    return {toQString(tag.title()), toQString(tag.artist()), toQString(tag.album()), toQString(tag.comment()),
        static_cast<int>(tag.year()), static_cast<int>(tag.track())};
}

/// TagLib's fields of both tags, ID3v2 first. TagLib's own union would also read an APE tag, and keeps the blanks that
/// pad an ID3v1 text, which its ID3v1 handler leaves to the caller.
Fields expected(const QString &path)
{
    TagLib::MPEG::File file(path.toUtf8().constData(), false);
    Fields fields = file.hasID3v2Tag() ? fieldsOf(*file.ID3v2Tag()) : Fields{};
    if (file.hasID3v1Tag()) {
        const Fields old = fieldsOf(*file.ID3v1Tag());
        for (QString Fields::*field : {&Fields::title, &Fields::artist, &Fields::album, &Fields::comment}) {
            if ((fields.*field).isEmpty())
                fields.*field = old.*field;
            while ((fields.*field).endsWith(u' '))
                (fields.*field).chop(1);
        }
        fields.year = fields.year != 0 ? fields.year : old.year;
        fields.track = fields.track != 0 ? fields.track : old.track;
    }
    return fields;
}

} // namespace

class TestTagLibWitness : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsWhatTagLibReads()
    {
        constexpr int Count = 5000;
        const QTemporaryDir folder;
        Generator generator(20240501);
        int withValues = 0;
        for (int i = 0; i < Count; ++i) {
            const QByteArray content = generator.file();
            const QString path = writeFile(folder.path(), QStringLiteral("a.mp3"), content);
            const Fields our = ours(path);
            const Fields theirs = expected(path);
            withValues += our.title.isEmpty() ? 0 : 1;
            QVERIFY2(our == theirs, qPrintable(QStringLiteral("file %1:\n%2\n%3\n%4")
                                                   .arg(i)
                                                   .arg(our.toString(), theirs.toString(),
                                                       QString::fromLatin1(content.last(128).toHex(' ') + " ... " +
                                                                           content.left(300).toHex(' ')))));
        }
        QVERIFY2(withValues > Count / 4, "the generator makes tags with titles");
    }
};

QTEST_GUILESS_MAIN(TestTagLibWitness)
#include "tst_taglibwitness.moc"
