// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/id3/id3text.h"

#include <QStringConverter>

#include <algorithm>
#include <cstring>

namespace ravlin::id3 {

namespace {

TextEncoding encodingOf(unsigned char byte)
{
    return byte <= 3 ? static_cast<TextEncoding>(byte) : TextEncoding::Latin1;
}

bool isWide(TextEncoding encoding)
{
    return encoding == TextEncoding::Utf16 || encoding == TextEncoding::Utf16Be;
}

/// Guesses the byte order of a text without a mark: most texts consist mainly of characters below U+0100.
bool looksBigEndian(std::string_view bytes)
{
    qsizetype zeroFirst = 0;
    qsizetype zeroSecond = 0;
    for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
        zeroFirst += bytes[i] == '\0' ? 1 : 0;
        zeroSecond += bytes[i + 1] == '\0' ? 1 : 0;
    }
    return zeroFirst > zeroSecond;
}

enum class ByteOrder
{
    Unknown,
    Little,
    Big
};

/// Removes a byte order mark at the front.
ByteOrder takeByteOrderMark(std::string_view &bytes)
{
    if (bytes.size() < 2)
        return ByteOrder::Unknown;
    const auto first = static_cast<unsigned char>(bytes[0]);
    const auto second = static_cast<unsigned char>(bytes[1]);
    if (first == 0xFF && second == 0xFE) {
        bytes.remove_prefix(2);
        return ByteOrder::Little;
    }
    if (first == 0xFE && second == 0xFF) {
        bytes.remove_prefix(2);
        return ByteOrder::Big;
    }
    return ByteOrder::Unknown;
}

QString decodeWide(std::string_view bytes, bool bigEndian)
{
    const auto count = static_cast<qsizetype>(bytes.size() / 2);
    QString text(count, Qt::Uninitialized);
    QChar *out = text.data();
    for (qsizetype i = 0; i < count; ++i) {
        const auto first = static_cast<unsigned char>(bytes[static_cast<size_t>(2 * i)]);
        const auto second = static_cast<unsigned char>(bytes[static_cast<size_t>(2 * i + 1)]);
        out[i] = bigEndian ? QChar((first << 8) | second) : QChar((second << 8) | first);
    }
    return text;
}

/// The end of the value at the start of the bytes: the offset of its terminator, or of the end.
size_t valueEnd(std::string_view bytes, TextEncoding encoding)
{
    if (!isWide(encoding))
        return std::min(bytes.find('\0'), bytes.size());
    for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
        if (bytes[i] == '\0' && bytes[i + 1] == '\0')
            return i;
    }
    return bytes.size() & ~size_t{1};
}

/// Decodes one value without its terminator. The byte order of a value with a mark holds for later ones without.
QString decodeValue(std::string_view bytes, TextEncoding encoding, ByteOrder &order)
{
    const auto size = static_cast<qsizetype>(bytes.size());
    switch (encoding) {
    case TextEncoding::Latin1:
        return QString::fromLatin1(bytes.data(), size);
    case TextEncoding::Utf8: {
        if (bytes.starts_with("\xEF\xBB\xBF"))
            bytes.remove_prefix(3);
        return QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
    }
    case TextEncoding::Utf16Be:
    case TextEncoding::Utf16: {
        const ByteOrder marked = takeByteOrderMark(bytes);
        if (marked != ByteOrder::Unknown)
            order = marked;
        if (order == ByteOrder::Unknown && !bytes.empty())
            order = looksBigEndian(bytes) ? ByteOrder::Big : ByteOrder::Little;
        return decodeWide(bytes, order == ByteOrder::Big);
    }
    }
    return {};
}

/// How many zeros the bytes begin with. Texts of hostile tags consist of them, so eight are looked at at once.
size_t leadingZeros(std::string_view bytes)
{
    size_t count = 0;
    for (quint64 eight = 0; count + sizeof eight <= bytes.size(); count += sizeof eight) {
        std::memcpy(&eight, bytes.data() + count, sizeof eight);
        if (eight != 0)
            break;
    }
    return std::min(bytes.find_first_not_of('\0', count), bytes.size());
}

/// Calls use for each value up to the last one that is not empty, until it returns false. A value that takes more than
/// longest bytes may be handed over cut.
template <typename Use>
void forEachValue(std::string_view body, size_t longest, Use use)
{
    if (body.empty())
        return;
    const TextEncoding encoding = encodingOf(static_cast<unsigned char>(body[0]));
    body.remove_prefix(1);
    ByteOrder order = encoding == TextEncoding::Utf16Be ? ByteOrder::Big : ByteOrder::Unknown;
    const size_t terminator = isWide(encoding) ? 2 : 1;
    size_t pendingEmpty = 0;
    bool isFirst = true;
    while (!body.empty()) {
        const size_t empty = leadingZeros(body) / terminator;
        pendingEmpty += empty;
        body.remove_prefix(empty * terminator);
        const size_t end = valueEnd(body, encoding);
        const QString value = decodeValue(body.substr(0, std::min(end, longest)), encoding, order);
        body.remove_prefix(std::min(body.size(), end + terminator));
        if (value.isEmpty()) {
            ++pendingEmpty;
            continue;
        }
        for (; pendingEmpty > 0 && !isFirst; --pendingEmpty) {
            if (!use(QString()))
                return;
        }
        pendingEmpty = 0;
        isFirst = false;
        if (!use(value))
            return;
    }
}

bool isLatin1(QStringView text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() <= 0xFF; });
}

/// The text as it can be stored and read back unchanged: valid UTF-16, without zero characters, and without byte order
/// marks at the start.
QString storable(QStringView text)
{
    while (text.startsWith(QChar(QChar::ByteOrderMark)))
        text = text.sliced(1);
    QString result;
    result.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            result += c;
            result += text[++i];
        } else if (c.isSurrogate()) {
            result += QChar(QChar::ReplacementCharacter);
        } else if (!c.isNull()) {
            result += c;
        }
    }
    return result;
}

TextEncoding encodingFor(const QStringList &texts, int majorVersion)
{
    if (std::all_of(texts.begin(), texts.end(), [](const QString &text) { return isLatin1(text); }))
        return TextEncoding::Latin1;
    return majorVersion == 4 ? TextEncoding::Utf8 : TextEncoding::Utf16;
}

void appendEncoded(QByteArray &out, const QString &text, TextEncoding encoding)
{
    switch (encoding) {
    case TextEncoding::Latin1:
        out += text.toLatin1();
        return;
    case TextEncoding::Utf8:
        out += text.toUtf8();
        return;
    case TextEncoding::Utf16:
    case TextEncoding::Utf16Be:
        out += "\xFF\xFE";
        for (const QChar c : text) {
            out += static_cast<char>(c.unicode() & 0xFF);
            out += static_cast<char>(c.unicode() >> 8);
        }
        return;
    }
}

void appendTerminator(QByteArray &out, TextEncoding encoding)
{
    out.append(isWide(encoding) ? 2 : 1, '\0');
}

} // namespace

TextBody decodeTextBody(std::string_view body, qsizetype maximumSize)
{
    TextBody result;
    // No encoding needs more than four bytes for a character, and a byte order mark no more than that.
    const size_t longest = 4 * (std::min(body.size(), static_cast<size_t>(maximumSize)) + 2);
    forEachValue(body, longest, [&](const QString &value) {
        if (result.valueCount++ > 0)
            result.text += ValueSeparator;
        result.text += value;
        result.isCut = result.text.size() > maximumSize;
        return !result.isCut;
    });
    result.text.truncate(maximumSize);
    return result;
}

bool decodeCommentBody(std::string_view body, CommentBody &comment)
{
    if (body.size() < 4)
        return false;
    const TextEncoding encoding = encodingOf(static_cast<unsigned char>(body[0]));
    comment.language = QByteArray(body.data() + 1, 3);
    body.remove_prefix(4);
    ByteOrder order = encoding == TextEncoding::Utf16Be ? ByteOrder::Big : ByteOrder::Unknown;
    const size_t terminator = isWide(encoding) ? 2 : 1;
    const size_t descriptionEnd = valueEnd(body, encoding);
    if (descriptionEnd + terminator > body.size()) {
        // Without a terminator this is the text: old programs left the description out.
        comment.description.clear();
        comment.text = decodeValue(body.substr(0, descriptionEnd), encoding, order);
        return true;
    }
    comment.description = decodeValue(body.substr(0, descriptionEnd), encoding, order);
    body.remove_prefix(descriptionEnd + terminator);
    comment.text = decodeValue(body.substr(0, valueEnd(body, encoding)), encoding, order);
    return true;
}

QByteArray encodeTextBody(const QStringList &values, int majorVersion)
{
    QStringList texts;
    for (const QString &value : values)
        texts += storable(value);
    const TextEncoding encoding = encodingFor(texts, majorVersion);
    QByteArray body(1, static_cast<char>(encoding));
    for (qsizetype i = 0; i < texts.size(); ++i) {
        if (i > 0)
            appendTerminator(body, encoding);
        appendEncoded(body, texts[i], encoding);
    }
    return body;
}

QByteArray encodeCommentBody(const CommentBody &comment, int majorVersion)
{
    const QString description = storable(comment.description);
    const QString text = storable(comment.text);
    const TextEncoding encoding = encodingFor({description, text}, majorVersion);
    QByteArray body(1, static_cast<char>(encoding));
    body += comment.language.leftJustified(3, 'X', true);
    appendEncoded(body, description, encoding);
    appendTerminator(body, encoding);
    appendEncoded(body, text, encoding);
    return body;
}

} // namespace ravlin::id3
