// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/mp3builder.h"

#include <QDir>
#include <QFile>
#include <QtEndian>

namespace ravlin::test {

namespace {

QByteArray syncsafe(qint64 value)
{
    QByteArray bytes(4, '\0');
    for (int i = 3; i >= 0; --i) {
        bytes[i] = static_cast<char>(value & 0x7F);
        value >>= 7;
    }
    return bytes;
}

QByteArray bigEndian(quint32 value)
{
    QByteArray bytes(4, '\0');
    qToBigEndian(value, bytes.data());
    return bytes;
}

QByteArray littleEndian(quint32 value)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

qint64 readNumber(const QByteArray &bytes, int shift)
{
    qint64 value = 0;
    for (const char c : bytes)
        value = (value << shift) | static_cast<unsigned char>(c);
    return value;
}

QByteArray unsynchronised(const QByteArray &bytes)
{
    QByteArray out;
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        out += bytes[i];
        const auto next = i + 1 < bytes.size() ? static_cast<unsigned char>(bytes[i + 1]) : 0;
        if (bytes[i] == '\xFF' && (next >= 0xE0 || next == 0))
            out += '\0';
    }
    return out;
}

QByteArray wide(const QString &text, bool bigEndianOrder)
{
    QByteArray out;
    for (const QChar c : text) {
        const char high = static_cast<char>(c.unicode() >> 8);
        const char low = static_cast<char>(c.unicode() & 0xFF);
        out += bigEndianOrder ? high : low;
        out += bigEndianOrder ? low : high;
    }
    return out;
}

QByteArray encoded(int encoding, const QString &text)
{
    switch (encoding) {
    case 1:
        return QByteArray("\xFF\xFE") + wide(text, false);
    case 2:
        return wide(text, true);
    case 3:
        return text.toUtf8();
    default:
        return text.toLatin1();
    }
}

} // namespace

QByteArray frame(int majorVersion, const char *id, const QByteArray &body, quint16 flags)
{
    const auto size = static_cast<quint32>(body.size());
    if (majorVersion == 2)
        return QByteArray(id, 3) + bigEndian(size).mid(1) + body;
    QByteArray header = QByteArray(id, 4) + (majorVersion == 4 ? syncsafe(size) : bigEndian(size));
    header += static_cast<char>(flags >> 8);
    header += static_cast<char>(flags & 0xFF);
    return header + body;
}

QByteArray textBody(int encoding, const QString &text)
{
    return QByteArray(1, static_cast<char>(encoding)) + encoded(encoding, text);
}

QByteArray textFrame(int majorVersion, const char *id, const QString &text, int encoding)
{
    return frame(majorVersion, id, textBody(encoding, text));
}

QByteArray commentFrame(
    int majorVersion, const QString &text, const QString &description, const char *language, int encoding)
{
    const bool isWide = encoding == 1 || encoding == 2;
    return frame(majorVersion, majorVersion == 2 ? "COM" : "COMM",
        QByteArray(1, static_cast<char>(encoding)) + QByteArray(language, 3) + encoded(encoding, description) +
            QByteArray(isWide ? 2 : 1, '\0') + encoded(encoding, text));
}

QByteArray id3v2(int majorVersion, const QByteArray &frames, const TagOptions &options)
{
    quint8 flags = options.flags;
    if (!options.extendedHeader.isEmpty())
        flags |= 0x40;
    if (options.footer)
        flags |= 0x10;
    QByteArray body = options.extendedHeader + frames;
    if (majorVersion < 4 && (flags & 0x80) != 0)
        body = unsynchronised(body);
    body += QByteArray(options.padding, '\0') + options.tail;
    QByteArray rest;
    rest += static_cast<char>(majorVersion);
    rest += '\0';
    rest += static_cast<char>(flags);
    rest += syncsafe(body.size());
    return "ID3" + rest + body + (options.footer ? "3DI" + rest : QByteArray());
}

QByteArray pictureFrame(int majorVersion, qsizetype size)
{
    QByteArray data = QByteArray("\0image/png\0\3\0", 13);
    if (majorVersion == 2)
        data = QByteArray("\0PNG\3\0", 6);
    while (data.size() < size)
        data += QByteArray("\xFF\xFB\x90\x64TIT2\0\0\0\5\0\0\0decoy\xFF\0\x01\xFFID3\3\0", 29);
    data.truncate(size);
    return frame(majorVersion, majorVersion == 2 ? "PIC" : "APIC", data);
}

QByteArray id3v1(const V1 &fields)
{
    const auto field = [&fields](const QByteArray &text, qsizetype size) {
        return text.leftJustified(size, fields.fill, true);
    };
    QByteArray block =
        "TAG" + field(fields.title, 30) + field(fields.artist, 30) + field(fields.album, 30) + field(fields.year, 4);
    if (fields.track > 0)
        block += field(fields.comment, 28) + '\0' + static_cast<char>(fields.track);
    else
        block += field(fields.comment, 30);
    return block + static_cast<char>(fields.genre);
}

QByteArray audio(int frames)
{
    const QByteArray one = QByteArray("\xFF\xFB\x90\x64", 4) + QByteArray(413, '\0');
    return one.repeated(frames);
}

QByteArray apeTag(const QByteArray &key, const QByteArray &value)
{
    const QByteArray item =
        littleEndian(static_cast<quint32>(value.size())) + littleEndian(0) + key + QByteArray(1, '\0') + value;
    const auto block = [&item](quint32 flags) {
        return "APETAGEX" + littleEndian(2000) + littleEndian(static_cast<quint32>(item.size() + 32)) +
               littleEndian(1) + littleEndian(flags) + QByteArray(8, '\0');
    };
    return block(0xA0000000U) + item + block(0x80000000U);
}

QByteArray lyrics3()
{
    const QByteArray content = "LYRICSBEGININD00002"
                               "10"
                               "LYR00005hello";
    return content + QByteArray::number(content.size()).rightJustified(6, '0') + "LYRICS200";
}

QString writeFile(const QString &folder, const QString &name, const QByteArray &content)
{
    const QString path = folder + u'/' + name;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(path));
    return QDir::toNativeSeparators(path);
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(path));
    return file.readAll();
}

QList<RawFrame> rawFrames(const QByteArray &file)
{
    QList<RawFrame> frames;
    if (!file.startsWith("ID3"))
        return frames;
    const int version = file[3];
    const int headerSize = version == 2 ? 6 : 10;
    const qint64 end = 10 + readNumber(file.mid(6, 4), 7);
    qint64 at = 10;
    if (version > 2 && (file[5] & 0x40) != 0)
        at += version == 3 ? 4 + readNumber(file.mid(at, 4), 8) : readNumber(file.mid(at, 4), 7);
    while (at + headerSize <= end && file[at] != '\0') {
        const QByteArray sizeBytes = file.mid(at + (version == 2 ? 3 : 4), version == 2 ? 3 : 4);
        const qint64 size = headerSize + readNumber(sizeBytes, version == 4 ? 7 : 8);
        frames.append({file.mid(at, version == 2 ? 3 : 4), file.mid(at, size)});
        at += size;
    }
    return frames;
}

qint64 regionSize(const QByteArray &file)
{
    if (!file.startsWith("ID3"))
        return 0;
    return 10 + readNumber(file.mid(6, 4), 7) + ((file[5] & 0x10) != 0 ? 10 : 0);
}

} // namespace ravlin::test
