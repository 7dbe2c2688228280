// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

/// Builds small MP3 files byte by byte, independently of the code under test: the file holds exactly what the test
/// says.
namespace ravlin::test {

/// An ID3v2 frame of a tag of that major version (2, 3 or 4), its body as given.
QByteArray frame(int majorVersion, const char *id, const QByteArray &body, quint16 flags = 0);

/// A text frame's body: an encoding byte (0 Latin-1, 1 UTF-16 with BOM, 2 UTF-16BE, 3 UTF-8) and the text.
QByteArray textBody(int encoding, const QString &text);
QByteArray textFrame(int majorVersion, const char *id, const QString &text, int encoding = 0);
QByteArray commentFrame(int majorVersion, const QString &text, const QString &description = {},
    const char *language = "eng", int encoding = 0);

struct TagOptions
{
    quint8 flags = 0;               ///< header flags; unsynchronisation is applied to the body in versions below 2.4
    qint64 padding = 0;             ///< zero bytes behind the frames
    QByteArray extendedHeader = {}; ///< as it stands in the file; sets its flag
    QByteArray tail = {};           ///< bytes behind the padding, inside the tag
    bool footer = false;
};

QByteArray id3v2(int majorVersion, const QByteArray &frames, const TagOptions &options = {});

/// A picture frame with that many bytes of data, which contain what looks like MPEG headers and frame identifiers.
QByteArray pictureFrame(int majorVersion, qsizetype size);

struct V1
{
    QByteArray title = {};
    QByteArray artist = {};
    QByteArray album = {};
    QByteArray year = {};
    QByteArray comment = {};
    int track = 0;
    int genre = 255;
    char fill = '\0'; ///< what follows a text in its field
};
QByteArray id3v1(const V1 &fields);

/// Silent MPEG-1 layer III frames, 128 kbit/s, 44,100 Hz, joint stereo: 417 bytes each.
QByteArray audio(int frames = 10);
/// An APEv2 tag with header and footer and one item.
QByteArray apeTag(const QByteArray &key = "Title", const QByteArray &value = "from APE");
/// A Lyrics3 v2.00 block.
QByteArray lyrics3();

/// A file in a folder with that content. Returns its path.
QString writeFile(const QString &folder, const QString &name, const QByteArray &content);
QByteArray readFile(const QString &path);

/// The frames of the tag at the start of the file as raw bytes, in order: an independent reader for checks (no
/// unsynchronisation, no faults tolerated).
struct RawFrame
{
    QByteArray id;
    QByteArray bytes; ///< with the header
};
QList<RawFrame> rawFrames(const QByteArray &file);
/// Bytes of the tag region at the start of the file; 0 without a tag.
qint64 regionSize(const QByteArray &file);

} // namespace ravlin::test
