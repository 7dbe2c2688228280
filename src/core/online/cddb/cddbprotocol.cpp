// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/cddb/cddbprotocol.h"

#include "core/online/cddb/cddbtext.h"
#include "core/online/web/webtext.h"

#include <QStringList>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace ravlin::cddb {

namespace {

constexpr QStringView UsualPath = u"/~cddb/cddb.cgi";

/// An answer's first line and the rest.
struct Answer
{
    int code = 0;
    QByteArrayView text; ///< after the code
    QByteArrayView rest; ///< after the first line
};

/// Cuts off the first line and its line break.
QByteArrayView takeLine(QByteArrayView &bytes)
{
    const qsizetype end = bytes.indexOf('\n');
    QByteArrayView line = end < 0 ? bytes : bytes.first(end);
    bytes = end < 0 ? QByteArrayView() : bytes.sliced(end + 1);
    while (line.endsWith('\r'))
        line.chop(1);
    return line;
}

tl::unexpected<LookupFailure> failure(LookupFailureKind kind, QByteArrayView detail = {})
{
    // Messages show a single short line.
    constexpr qsizetype Longest = 200;
    return tl::unexpected(LookupFailure{kind, onOneLine(decodedText(detail).left(Longest))});
}

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

LookupResult<Answer> parseAnswer(QByteArrayView bytes)
{
    constexpr QByteArrayView ByteOrderMark = "\xEF\xBB\xBF";
    if (bytes.startsWith(ByteOrderMark))
        bytes = bytes.sliced(ByteOrderMark.size());
    while (bytes.startsWith('\n') || bytes.startsWith('\r'))
        bytes = bytes.sliced(1);
    if (bytes.isEmpty())
        return failure(LookupFailureKind::Incomplete);
    const QByteArrayView line = takeLine(bytes);
    constexpr qsizetype CodeSize = 3;
    const bool hasCode = line.size() >= CodeSize && std::all_of(line.begin(), line.begin() + CodeSize, isDigit) &&
                         (line.size() == CodeSize || line[CodeSize] == ' ');
    if (!hasCode)
        return failure(LookupFailureKind::Garbage, line);
    return Answer{line.first(CodeSize).toInt(), line.sliced(CodeSize).trimmed(), bytes};
}

/// The failure that a refusal stands for.
tl::unexpected<LookupFailure> refusal(const Answer &answer)
{
    const QByteArray words = QByteArray::number(answer.code) + ' ' + answer.text.toByteArray();
    switch (answer.code) {
    case NoEntry:
        return failure(LookupFailureKind::NoEntry, words);
    case BrokenEntry:
        return failure(LookupFailureKind::BrokenEntry, words);
    case ServerError:
    case ServerTimeout:
        return failure(LookupFailureKind::ServerTrouble, words);
    case NoHandshake:
        return failure(LookupFailureKind::NotGreeted, words);
    default:
        // Success codes that don't fit the question, and unknown codes, are garbage.
        const bool isRefusal = answer.code >= 400 && answer.code < 600;
        return failure(isRefusal ? LookupFailureKind::Refused : LookupFailureKind::Garbage, words);
    }
}

bool isHexDigit(QChar digit)
{
    return (digit >= u'0' && digit <= u'9') || (digit >= u'a' && digit <= u'f') || (digit >= u'A' && digit <= u'F');
}

/// Checks a word that goes back to the server in the next question: only letters that are safe there.
bool isCategory(const QString &word)
{
    constexpr qsizetype Longest = 40;
    return !word.isEmpty() && word.size() <= Longest && std::ranges::all_of(word, [](QChar letter) {
        return letter.isLetterOrNumber() || letter == u'-' || letter == u'_' || letter == u'.';
    });
}

std::optional<Match> parseMatch(QByteArrayView line, bool isExact)
{
    const QString text = decodedText(line).trimmed();
    const qsizetype afterCategory = text.indexOf(u' ');
    if (afterCategory < 0)
        return {};
    const QString rest = text.sliced(afterCategory).trimmed();
    const QString discId = rest.section(u' ', 0, 0);
    constexpr qsizetype DiscIdSize = 8;
    Match match{text.first(afterCategory), discId.toLower(), {}, {}, isExact};
    if (!isCategory(match.category) || discId.size() != DiscIdSize || !std::ranges::all_of(discId, isHexDigit))
        return {};
    const ArtistAndTitle title = dividedTitle(rest.sliced(DiscIdSize));
    match.artist = title.artist;
    match.album = title.title;
    return match;
}

/// The bytes before the line with a single full stop.
LookupResult<QByteArrayView> textUpToEnd(QByteArrayView bytes)
{
    QByteArrayView rest = bytes;
    while (!rest.isEmpty()) {
        const QByteArrayView before = bytes.first(bytes.size() - rest.size());
        if (takeLine(rest) == ".")
            return before;
    }
    return failure(LookupFailureKind::Incomplete);
}

LookupResult<std::vector<Match>> parseMatches(QByteArrayView bytes, bool areExact)
{
    LookupResult<QByteArrayView> list = textUpToEnd(bytes);
    if (!list)
        return tl::unexpected(list.error());
    std::vector<Match> matches;
    while (!list->isEmpty()) {
        if (const std::optional<Match> match = parseMatch(takeLine(*list), areExact))
            matches.push_back(*match);
    }
    if (matches.empty())
        return failure(LookupFailureKind::Garbage);
    return matches;
}

/// A word of the greeting, where blanks separate words.
QString oneWord(const QString &text)
{
    QString word = onOneLine(text);
    for (QChar &character : word) {
        if (character.isSpace())
            character = u'_';
    }
    return word.isEmpty() ? u"unknown"_s : word;
}

} // namespace

Hello Hello::of(const QString &mail, const QString &client, const QString &version)
{
    const QString address = mail.trimmed();
    const qsizetype at = address.lastIndexOf(u'@');
    const QString host = at < 0 ? QString() : address.sliced(at + 1);
    return {oneWord(at < 0 ? address : address.first(at)), oneWord(host.isEmpty() ? u"localhost"_s : host),
        oneWord(client), oneWord(version)};
}

LookupResult<QUrl> serverUrl(const QString &server)
{
    const QString text = server.trimmed();
    QUrl url(text.contains(u"://") ? text : u"http://"_s + text, QUrl::StrictMode);
    const bool isWeb = url.scheme() == u"http" || url.scheme() == u"https";
    if (!url.isValid() || !isWeb || url.host().isEmpty() || url.port() == 0)
        return tl::unexpected(LookupFailure{LookupFailureKind::BadAddress, onOneLine(text)});
    if (url.path().isEmpty() || url.path() == u"/")
        url.setPath(UsualPath.toString());
    url.setQuery(QString());
    url.setFragment(QString());
    return url;
}

SearchWords SearchWords::of(const QString &text)
{
    for (const QStringView divider : {QStringView(u" / "), QStringView(u" - ")}) {
        if (const qsizetype place = text.indexOf(divider); place >= 0)
            return {onOneLine(text.first(place)), onOneLine(text.sliced(place + divider.size()))};
    }
    return {onOneLine(text), {}};
}

QByteArray Questions::encoded(const QString &text) const
{
    QByteArray bytes = text.toUtf8();
    if (m_level < NewestLevel)
        bytes = text.toLatin1();
    return bytes.toPercentEncoding().replace("%20", "+");
}

QUrl Questions::url(const QByteArray &question) const
{
    QByteArrayList hello;
    for (const QString &word : {m_hello.user, m_hello.host, m_hello.client, m_hello.version})
        hello << encoded(word);
    QUrl url = m_server;
    // Pass the encoded question as bytes: at older levels it is not UTF-8.
    const QByteArray all =
        url.toEncoded() + '?' + question + "&hello=" + hello.join('+') + "&proto=" + QByteArray::number(m_level);
    return QUrl::fromEncoded(all, QUrl::StrictMode);
}

QUrl Questions::command(const QString &words) const
{
    return url("cmd=" + encoded(words));
}

QUrl Questions::query(const DiscContents &disc) const
{
    QStringList words{u"cddb"_s, u"query"_s, disc.discIdText(), QString::number(disc.trackCount())};
    for (const qint64 offset : disc.frameOffsets())
        words << QString::number(offset);
    words << QString::number(disc.totalSeconds());
    return command(words.join(u' '));
}

QUrl Questions::read(const Match &match) const
{
    return command(u"cddb read "_s + match.category + u' ' + match.discId);
}

QUrl Questions::search(const SearchWords &words) const
{
    return url("cmd=search&artist=" + encoded(words.artist) + "&album=" + encoded(words.album));
}

QUrl Questions::album(const SearchWords &words) const
{
    const bool areBoth = !words.artist.isEmpty() && !words.album.isEmpty();
    return command(u"cddb album "_s + (areBoth ? words.artist + u" / "_s + words.album : words.artist + words.album));
}

LookupResult<std::vector<Match>> readQueryAnswer(QByteArrayView bytes)
{
    const LookupResult<Answer> answer = parseAnswer(bytes);
    if (!answer)
        return tl::unexpected(answer.error());
    if (answer->code == NoMatch)
        return std::vector<Match>();
    if (answer->code == ExactMatches || answer->code == InexactMatches)
        return parseMatches(answer->rest, answer->code == ExactMatches);
    if (answer->code != Found)
        return refusal(*answer);
    const std::optional<Match> match = parseMatch(answer->text, true);
    if (!match)
        return failure(LookupFailureKind::Garbage, answer->text);
    return std::vector{*match};
}

LookupResult<std::vector<Match>> readSearchAnswer(QByteArrayView bytes)
{
    const LookupResult<Answer> answer = parseAnswer(bytes);
    if (!answer)
        return tl::unexpected(answer.error());
    // A list follows "Found", except from servers that treat the search as a query and name the disc in the first line.
    if (answer->code == Found && !parseMatch(answer->text, true))
        return parseMatches(answer->rest, false);
    LookupResult<std::vector<Match>> matches = readQueryAnswer(bytes);
    if (matches) {
        for (Match &match : *matches)
            match.isExact = false;
    }
    return matches;
}

LookupResult<DiscRecord> readRecordAnswer(QByteArrayView bytes)
{
    const LookupResult<Answer> answer = parseAnswer(bytes);
    if (!answer)
        return tl::unexpected(answer.error());
    if (answer->code != ExactMatches)
        return refusal(*answer);
    const LookupResult<QByteArrayView> text = textUpToEnd(answer->rest);
    if (!text)
        return tl::unexpected(text.error());
    std::optional<DiscRecord> record = parseXmcdRecord(*text);
    if (!record)
        return failure(LookupFailureKind::Garbage);
    return *std::move(record);
}

bool mayUnderstandOlderLevel(const LookupFailure &failure)
{
    return failure.kind == LookupFailureKind::Refused;
}

} // namespace ravlin::cddb
