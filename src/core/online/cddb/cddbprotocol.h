// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/cddb/disccontents.h"
#include "core/online/cddb/lookupfailure.h"
#include "core/online/cddb/xmcdrecord.h"

#include <QByteArrayView>
#include <QString>
#include <QUrl>

#include <vector>

/// The CDDB protocol over HTTP, levels 1 to 6: builds the addresses of questions and parses answers. Text is UTF-8 at
/// level 6 and Latin-1 below. Does not use the network.
namespace ravlin::cddb {

/// Protocol levels, in the order in which they are tried.
inline constexpr int NewestLevel = 6;
inline constexpr int LatinLevel = 5; ///< like 6, in Latin-1
inline constexpr int OldestLevel = 1;

/// Code at the start of an answer.
enum AnswerCode
{
    Found = 200, ///< one exact match; after a text search, a list
    NoMatch = 202,
    ExactMatches = 210, ///< a list follows; after a read, the record
    InexactMatches = 211,
    NoEntry = 401,
    ServerError = 402,
    BrokenEntry = 403,
    NoHandshake = 409,
    SyntaxError = 500,
    IllegalLevel = 501,
    ServerTimeout = 530,
};

/// The client's greeting. Each part is one word; blanks in it are sent as underscores.
struct Hello
{
    QString user;
    QString host;
    QString client;
    QString version;

    /// Splits an e-mail address into user and host. Any other text becomes the user, at "localhost".
    static Hello of(const QString &mail, const QString &client, const QString &version);
};

/// The address that a server takes questions at, from "host", "host:port" or a whole http or https URL, which may
/// replace the usual path "/~cddb/cddb.cgi". Fails with BadAddress for anything else.
LookupResult<QUrl> serverUrl(const QString &server);

struct Match
{
    QString category; ///< section of the database: a short word
    QString discId;   ///< eight hexadecimal digits
    QString artist;
    QString album;
    bool isExact = false;

    bool operator==(const Match &) const = default;
};

/// The words of a text search. Nothing is asked for empty words.
struct SearchWords
{
    QString artist;
    QString album;

    bool isEmpty() const { return artist.isEmpty() && album.isEmpty(); }
    /// Splits "artist / album" and "artist - album"; any other text is the artist.
    static SearchWords of(const QString &text);
};

/// Builds the addresses of questions to one server at one level.
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
    /// The same search as the album command, for older servers.
    QUrl album(const SearchWords &words) const;

private:
    QUrl command(const QString &words) const;
    QUrl url(const QByteArray &question) const;
    QByteArray encoded(const QString &text) const;

    QUrl m_server;
    Hello m_hello;
    int m_level;
};

/// Parses the answer to a query: the matches, possibly none.
LookupResult<std::vector<Match>> readQueryAnswer(QByteArrayView bytes);
/// Parses the answer to a text search or an album command.
LookupResult<std::vector<Match>> readSearchAnswer(QByteArrayView bytes);
/// Parses the answer to a read.
LookupResult<DiscRecord> readRecordAnswer(QByteArrayView bytes);

/// Whether the server may understand the question at a lower level.
bool mayUnderstandOlderLevel(const LookupFailure &failure);

} // namespace ravlin::cddb
