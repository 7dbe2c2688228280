// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/cddb/disccontents.h"
#include "core/online/cddb/lookupfailure.h"
#include "core/online/cddb/xmcdrecord.h"

#include <QByteArrayView>
#include <QString>
#include <QUrl>

#include <vector>

/// The protocol of CD databases over HTTP: how a question is put into an address, and what an answer says. Levels 1 to
/// 6 of the public CDDB protocol; texts are UTF-8 at level 6 and Latin-1 below. Nothing here uses the network.
namespace ravlin::cddb {

/// The levels in the order in which they are tried: newest first.
inline constexpr int NewestLevel = 6;
inline constexpr int LatinLevel = 5; ///< as 6, in Latin-1
inline constexpr int OldestLevel = 1;

/// Codes that an answer begins with.
enum AnswerCode
{
    Found = 200, ///< one exact match, or a list after a search by text
    NoMatch = 202,
    ExactMatches = 210, ///< a list follows; of a read: the record follows
    InexactMatches = 211,
    NoEntry = 401,
    ServerError = 402,
    BrokenEntry = 403,
    NoHandshake = 409,
    SyntaxError = 500,
    IllegalLevel = 501,
    ServerTimeout = 530,
};

/// Who asks. Each part is one word; blanks in it are sent as underscores.
struct Hello
{
    QString user;
    QString host;
    QString client;
    QString version;

    /// User and host of an e-mail address. What is no address becomes the user, at "localhost".
    static Hello of(const QString &mail, const QString &client, const QString &version);
};

/// The address of a server's program for questions: "host", "host:port" or a whole URL (http, https), which may name
/// another path than the usual "/~cddb/cddb.cgi". BadAddress for anything else.
LookupResult<QUrl> serverUrl(const QString &server);

/// A disc that the server offers.
struct Match
{
    QString category; ///< part of the database: a word of a few letters
    QString discId;   ///< eight hexadecimal digits
    QString artist;
    QString album;
    bool isExact = false;

    bool operator==(const Match &) const = default;
};

/// What a search by text looks for. An empty one is not asked for.
struct SearchWords
{
    QString artist;
    QString album;

    bool isEmpty() const { return artist.isEmpty() && album.isEmpty(); }
    /// "artist / album" and "artist - album" divided; any other text is the artist.
    static SearchWords of(const QString &text);
};

/// Puts questions into addresses for one server at one level.
class Questions
{
public:
    Questions(QUrl server, Hello hello, int level)
        : m_server(std::move(server)), m_hello(std::move(hello)), m_level(level)
    {
    }

    QUrl query(const DiscContents &disc) const;
    QUrl read(const Match &match) const;
    QUrl search(const SearchWords &words) const;
    /// The same search as a command, which older servers know.
    QUrl album(const SearchWords &words) const;

private:
    QUrl command(const QString &words) const;
    QUrl url(const QByteArray &question) const;
    QByteArray encoded(const QString &text) const;

    QUrl m_server;
    Hello m_hello;
    int m_level;
};

/// The answer to a query: what matches, which may be nothing.
LookupResult<std::vector<Match>> readQueryAnswer(QByteArrayView bytes);
/// The answer to a search by text, or to the album command.
LookupResult<std::vector<Match>> readSearchAnswer(QByteArrayView bytes);
/// The answer to a read.
LookupResult<DiscRecord> readRecordAnswer(QByteArrayView bytes);

/// Whether the server may understand the question at an older level.
bool mayUnderstandOlderLevel(const LookupFailure &failure);

} // namespace ravlin::cddb
