// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/mpegbuilder.h"

#include <QList>
#include <QtEndian>

namespace ravlin::test {

namespace {

using mpeg::Version;

const QList<int> &bitRates(Version version, int layer)
{
    static const QList<int> layer1{0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448};
    static const QList<int> layer2{0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384};
    static const QList<int> layer3{0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320};
    static const QList<int> lowLayer1{0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256};
    static const QList<int> lowLayer23{0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160};
    if (version == Version::Mpeg1)
        return layer == 1 ? layer1 : layer == 2 ? layer2 : layer3;
    return layer == 1 ? lowLayer1 : lowLayer23;
}

int sampleRateIndex(Version version, int sampleRate)
{
    const int divisor = version == Version::Mpeg1 ? 1 : version == Version::Mpeg2 ? 2 : 4;
    return int(QList<int>{44100, 48000, 32000}.indexOf(sampleRate * divisor));
}

QByteArray bigEndian(quint32 number)
{
    QByteArray bytes(4, '\0');
    qToBigEndian(number, bytes.data());
    return bytes;
}

QByteArray littleEndian(quint32 number)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(number, bytes.data());
    return bytes;
}

int sideInfoEnd(const FrameSpec &spec)
{
    const bool mono = spec.channelMode == mpeg::ChannelMode::Mono;
    if (spec.version == Version::Mpeg1)
        return mono ? 4 + 17 : 4 + 32;
    return mono ? 4 + 9 : 4 + 17;
}

QByteArray frameWith(const FrameSpec &spec, qsizetype offset, const QByteArray &block)
{
    QByteArray frame = bigEndian(spec.header()) + QByteArray(spec.length() - 4, '\0');
    frame.replace(offset, block.size(), block);
    return frame;
}

} // namespace

quint32 FrameSpec::header() const
{
    const quint32 versionBits = version == Version::Mpeg1 ? 3 : version == Version::Mpeg2 ? 2 : 0;
    return 0xFFE00000U | versionBits << 19U | quint32(4 - layer) << 17U | (checksum ? 0U : 1U) << 16U |
           quint32(bitRates(version, layer).indexOf(bitRate)) << 12U |
           quint32(sampleRateIndex(version, sampleRate)) << 10U | (padded ? 1U : 0U) << 9U | quint32(channelMode) << 6U;
}

int FrameSpec::length() const
{
    const int pad = padded ? 1 : 0;
    if (bitRate == 0)
        return freeLength + (layer == 1 ? 4 * pad : pad);
    if (layer == 1)
        return (12 * bitRate * 1000 / sampleRate + pad) * 4;
    const bool isShort = layer == 3 && version != Version::Mpeg1;
    return (isShort ? 72 : 144) * bitRate * 1000 / sampleRate + pad;
}

FrameSpec ofBitRate(int bitRate)
{
    FrameSpec spec;
    spec.bitRate = bitRate;
    return spec;
}

FrameSpec freeFormatFrame(int length, int layer)
{
    FrameSpec spec;
    spec.layer = layer;
    spec.bitRate = 0;
    spec.freeLength = length;
    return spec;
}

FrameSpec padded(FrameSpec spec)
{
    spec.padded = true;
    return spec;
}

QByteArray junk(int size)
{
    QByteArray bytes(size, '\0');
    quint32 state = 12345;
    for (char &byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = char((state >> 24U) % 255U);
    }
    return bytes;
}

MpegBuilder &MpegBuilder::frames(int count, const FrameSpec &spec)
{
    for (int i = 0; i < count; ++i)
        m_data += bigEndian(spec.header()) + QByteArray(spec.length() - 4, '\x55');
    return *this;
}

MpegBuilder &MpegBuilder::xing(const InfoSpec &info)
{
    QByteArray block = info.mark + bigEndian(info.frames ? 1 : 0);
    if (info.frames)
        block += bigEndian(*info.frames);
    if (!info.encoder.isEmpty()) {
        block += info.encoder.leftJustified(21, '\0');
        block += char(info.delay >> 4);
        block += char((info.delay & 15) << 4 | info.padding >> 8);
        block += char(info.padding & 255);
    }
    return bytes(frameWith(m_spec, sideInfoEnd(m_spec) + info.shift, block));
}

MpegBuilder &MpegBuilder::vbri(quint32 frames)
{
    const QByteArray block = QByteArray("VBRI") + QByteArray(6, '\0') + bigEndian(0) + bigEndian(frames);
    return bytes(frameWith(m_spec, 36, block));
}

MpegBuilder &MpegBuilder::bytes(const QByteArray &bytes)
{
    m_data += bytes;
    return *this;
}

MpegBuilder &MpegBuilder::id3v2(int contentSize, bool footer)
{
    QByteArray fields = QByteArray("\4\0", 2) + char(footer ? 0x10 : 0);
    for (const int shift : {21, 14, 7, 0})
        fields += char((contentSize >> shift) & 0x7F);
    m_data += "ID3" + fields + QByteArray(contentSize, '\0');
    if (footer)
        m_data += "3DI" + fields;
    return *this;
}

MpegBuilder &MpegBuilder::id3v1(bool extended)
{
    if (extended)
        m_data += QByteArray("TAG+").leftJustified(227, '\0');
    m_data += QByteArray("TAGTitle").leftJustified(127, '\0') + '\x11';
    return *this;
}

MpegBuilder &MpegBuilder::ape(int version, bool header)
{
    const QByteArray item = littleEndian(4) + littleEndian(0) + QByteArray("Artist\0Name", 11);
    const auto block = [&](quint32 flags) {
        return "APETAGEX" + littleEndian(quint32(version)) + littleEndian(quint32(item.size() + 32)) + littleEndian(1) +
               littleEndian(flags) + QByteArray(8, '\0');
    };
    const quint32 hasHeader = header ? 0x80000000U : 0U;
    if (header)
        m_data += block(hasHeader | 0x20000000U);
    m_data += item + block(hasHeader);
    return *this;
}

MpegBuilder &MpegBuilder::lyrics3v1()
{
    m_data += "LYRICSBEGIN[00:01]la la la\r\nLYRICSEND";
    return *this;
}

MpegBuilder &MpegBuilder::lyrics3v2()
{
    const QByteArray body = "LYRICSBEGININD0000200LYR00010la la la l";
    m_data += body + QByteArray::number(body.size()).rightJustified(6, '0') + "LYRICS200";
    return *this;
}

MpegBuilder &MpegBuilder::cut(qsizetype count)
{
    m_data.chop(count);
    return *this;
}

} // namespace ravlin::test
