// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/path.h"

#include <algorithm>

namespace ravlin::platform {
namespace {

constexpr char16_t FirstEscape = 0xDC80; ///< stands for the byte 0x80
constexpr char16_t LastEscape = 0xDCFF;  ///< stands for the byte 0xFF
constexpr char32_t Replacement = 0xFFFD;

bool isAscii(const char *bytes, qsizetype size)
{
    // An OR over everything instead of an early exit: the compiler vectorises it.
    unsigned char seen = 0;
    for (qsizetype i = 0; i < size; ++i)
        seen = static_cast<unsigned char>(seen | static_cast<unsigned char>(bytes[i]));
    return seen < 0x80;
}

bool isAscii(const QString &text)
{
    char16_t seen = 0;
    for (const QChar c : text)
        seen = static_cast<char16_t>(seen | c.unicode());
    return seen < 0x80;
}

/// One well-formed UTF-8 sequence (Unicode 15, table 3-7) at the start of the bytes.
struct Sequence
{
    char32_t codePoint = 0;
    int length = 0; ///< bytes; 0 if the bytes do not begin with a well-formed sequence
};

Sequence continued(char32_t lead, const uchar *bytes, qsizetype size, int length)
{
    if (size < length)
        return {};
    char32_t codePoint = lead;
    for (int i = 1; i < length; ++i) {
        if ((bytes[i] & 0xC0U) != 0x80)
            return {};
        codePoint = (codePoint << 6) | (bytes[i] & 0x3FU);
    }
    return {codePoint, length};
}

Sequence firstSequence(const uchar *bytes, qsizetype size)
{
    const uchar lead = bytes[0];
    if (lead < 0x80)
        return {lead, 1};
    Sequence found;
    char32_t smallest = 0;
    if ((lead & 0xE0U) == 0xC0) {
        found = continued(lead & 0x1FU, bytes, size, 2);
        smallest = 0x80;
    } else if ((lead & 0xF0U) == 0xE0) {
        found = continued(lead & 0x0FU, bytes, size, 3);
        smallest = 0x800;
    } else if ((lead & 0xF8U) == 0xF0) {
        found = continued(lead & 0x07U, bytes, size, 4);
        smallest = 0x10000;
    }
    // Overlong forms and encoded surrogates would not come back as the same bytes.
    const bool valid =
        found.codePoint >= smallest && found.codePoint <= 0x10FFFF && !QChar::isSurrogate(found.codePoint);
    return valid ? found : Sequence{};
}

char *appendUtf8(char *out, char32_t codePoint)
{
    const auto put = [&out](char32_t byte) { *out++ = static_cast<char>(byte); };
    if (codePoint < 0x80) {
        put(codePoint);
    } else if (codePoint < 0x800) {
        put(0xC0 | (codePoint >> 6));
        put(0x80 | (codePoint & 0x3F));
    } else if (codePoint < 0x10000) {
        put(0xE0 | (codePoint >> 12));
        put(0x80 | ((codePoint >> 6) & 0x3F));
        put(0x80 | (codePoint & 0x3F));
    } else {
        put(0xF0 | (codePoint >> 18));
        put(0x80 | ((codePoint >> 12) & 0x3F));
        put(0x80 | ((codePoint >> 6) & 0x3F));
        put(0x80 | (codePoint & 0x3F));
    }
    return out;
}

/// Length of the path's root, which has no folder above it: the root of a drive, or a network share.
qsizetype rootSize(const QString &path)
{
    if (Separator != u'\\')
        return 1;
    if (path.startsWith(QStringLiteral(R"(\\)"))) { // \\server\share
        const qsizetype server = path.indexOf(Separator, 2);
        const qsizetype share = server < 0 ? -1 : path.indexOf(Separator, server + 1);
        return share < 0 ? path.size() : share;
    }
    return path.size() > 2 && path.at(1) == u':' && path.at(2) == Separator ? 3 : 1;
}

} // namespace

QString decodePath(const char *bytes, qsizetype size)
{
    if (isAscii(bytes, size))
        return QString::fromLatin1(bytes, size);

    // No sequence yields more UTF-16 units than it has bytes.
    QString text(size, Qt::Uninitialized);
    QChar *out = text.data();
    const auto *next = reinterpret_cast<const uchar *>(bytes);
    const uchar *const end = next + size;
    while (next < end) {
        const Sequence sequence = firstSequence(next, end - next);
        if (sequence.length == 0) {
            *out++ = QChar(static_cast<char16_t>(FirstEscape + (*next - 0x80)));
            ++next;
        } else if (sequence.codePoint < 0x10000) {
            *out++ = QChar(static_cast<char16_t>(sequence.codePoint));
            next += sequence.length;
        } else {
            *out++ = QChar(QChar::highSurrogate(sequence.codePoint));
            *out++ = QChar(QChar::lowSurrogate(sequence.codePoint));
            next += sequence.length;
        }
    }
    text.truncate(out - text.constData());
    return text;
}

QByteArray encodePath(const QString &path)
{
    if (isAscii(path))
        return path.toLatin1();

    // A unit takes at most three bytes, a pair four.
    QByteArray bytes(path.size() * 3, Qt::Uninitialized);
    char *out = bytes.data();
    for (qsizetype i = 0; i < path.size(); ++i) {
        const char16_t unit = path.at(i).unicode();
        if (!QChar::isSurrogate(unit)) {
            out = appendUtf8(out, unit);
        } else if (QChar::isHighSurrogate(unit) && i + 1 < path.size() && path.at(i + 1).isLowSurrogate()) {
            out = appendUtf8(out, QChar::surrogateToUcs4(unit, path.at(i + 1).unicode()));
            ++i;
        } else if (unit >= FirstEscape && unit <= LastEscape) {
            *out++ = static_cast<char>(unit - FirstEscape + 0x80);
        } else {
            out = appendUtf8(out, Replacement);
        }
    }
    bytes.truncate(out - bytes.constData());
    return bytes;
}

qsizetype nameStart(QStringView path)
{
    return path.lastIndexOf(Separator) + 1;
}

QString nameOf(const QString &path)
{
    return path.sliced(nameStart(path));
}

QString folderPrefix(const QString &path)
{
    return path.first(nameStart(path));
}

QString folderOf(const QString &path)
{
    const qsizetype start = nameStart(path);
    return start == 0 ? QStringLiteral(".") : path.left(std::max(start - 1, rootSize(path)));
}

QString withEndSeparator(const QString &path)
{
    return path.endsWith(Separator) ? path : path + Separator;
}

QString withoutEndSeparator(QString path)
{
    while (path.size() > rootSize(path) && path.endsWith(Separator))
        path.chop(1);
    return path;
}

QString inFolder(const QString &folder, const QString &name)
{
    return withEndSeparator(folder) + name;
}

bool isPlainName(const QString &name)
{
    // On Windows a colon would name a drive or a stream of the file.
    return !name.isEmpty() && name != QStringLiteral(".") && name != QStringLiteral("..") &&
           !name.contains(Separator) && !name.contains(u'/') && !name.contains(QChar(0)) &&
           (Separator == u'/' || !name.contains(u':'));
}

} // namespace ravlin::platform
