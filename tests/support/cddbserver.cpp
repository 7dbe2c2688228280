// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/cddbserver.h"

#include <QSslSocket>
#include <QUrl>
#include <QUrlQuery>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <span>
#include <utility>

using namespace Qt::StringLiterals;

namespace ravlin::test {

namespace {

constexpr std::array<std::pair<Fault, const char *>, 24> FaultNames{{{Fault::None, "None"}, {Fault::Silence, "Silence"},
    {Fault::HangsUp, "HangsUp"}, {Fault::Garbage, "Garbage"}, {Fault::WebPage, "WebPage"}, {Fault::Zeros, "Zeros"},
    {Fault::HalfSent, "HalfSent"}, {Fault::CutList, "CutList"}, {Fault::Stalls, "Stalls"}, {Fault::TooLong, "TooLong"},
    {Fault::Endless, "Endless"}, {Fault::RedirectLoop, "RedirectLoop"}, {Fault::RedirectToFile, "RedirectToFile"},
    {Fault::RedirectInsecure, "RedirectInsecure"}, {Fault::RedirectOnce, "RedirectOnce"},
    {Fault::HttpRefused, "HttpRefused"}, {Fault::HttpLogin, "HttpLogin"}, {Fault::Compressed, "Compressed"},
    {Fault::Code401, "Code401"}, {Fault::Code402, "Code402"}, {Fault::Code403, "Code403"}, {Fault::Code409, "Code409"},
    {Fault::Code500, "Code500"}, {Fault::Code530, "Code530"}}};

/// A parsed request.
struct Request
{
    QByteArray target;
    QByteArray command; ///< decoded
    QByteArrayList words;
    QByteArray artist;
    QByteArray album;
    QByteArrayList hello;
    int level = 1;
};

QByteArray decoded(QByteArray value)
{
    return QByteArray::fromPercentEncoding(value.replace('+', ' '));
}

Request parseRequest(const QByteArray &head)
{
    Request request;
    request.target = head.split('\n').front().trimmed().split(' ').value(1);
    const QByteArray query = request.target.mid(request.target.indexOf('?') + 1);
    for (const QByteArray &field : query.split('&')) {
        const QByteArray name = field.left(field.indexOf('='));
        const QByteArray value = decoded(field.mid(field.indexOf('=') + 1));
        if (name == "cmd")
            request.command = value;
        else if (name == "artist")
            request.artist = value;
        else if (name == "album")
            request.album = value;
        else if (name == "hello")
            request.hello = value.split(' ');
        else if (name == "proto")
            request.level = value.toInt();
    }
    request.words = request.command.simplified().split(' ');
    return request;
}

QByteArray titleOf(const ServedDisc &disc)
{
    return (disc.artist + u" / "_s + disc.album).toUtf8();
}

/// "KEY=value" in as many short lines as needed, none ending within a letter or an escape.
QByteArray keyLines(const QByteArray &key, const QString &value)
{
    QByteArray lines;
    QString line;
    const auto endLine = [&] { lines += key + '=' + line.toUtf8() + "\r\n"; };
    for (const QChar character : value) {
        constexpr qsizetype Longest = 60;
        if (line.size() >= Longest) {
            endLine();
            line.clear();
        }
        if (character == u'\\')
            line += u"\\\\"_s;
        else if (character == u'\n')
            line += u"\\n"_s;
        else
            line += character;
    }
    endLine();
    return lines;
}

QByteArray recordOf(const ServedDisc &disc, int level)
{
    QByteArray text = "# xmcd CD database file\r\n#\r\n# Track frame offsets:\r\n";
    for (const qint64 mark : std::span(disc.marks).first(disc.marks.size() - 1))
        text += "#\t" + QByteArray::number(mark) + "\r\n";
    text += "#\r\n# Disc length: " + QByteArray::number(disc.marks.back() / 75) + " seconds\r\n#\r\n# Revision: 2\r\n" +
            "# Processed by: a server for tests v1\r\n# Submitted via: a client 1.0\r\n#\r\n";
    text += "DISCID=" + disc.discId() + "\r\n" + keyLines("DTITLE", disc.artist + u" / "_s + disc.album);
    constexpr int YearLevel = 5;
    if (level >= YearLevel)
        text += "DYEAR=" + disc.year + "\r\nDGENRE=" + disc.genre.toUtf8() + "\r\n";
    for (int track = 0; track < disc.titles.size(); ++track)
        text += keyLines("TTITLE" + QByteArray::number(track), disc.titles[track]);
    QString remark = disc.remark;
    if (level < YearLevel && !disc.year.isEmpty())
        remark += u" YEAR: "_s + QString::fromLatin1(disc.year);
    text += keyLines("EXTD", remark);
    for (int track = 0; track < disc.titles.size(); ++track)
        text += "EXTT" + QByteArray::number(track) + "=\r\n";
    return text + "PLAYORDER=\r\n";
}

bool areClose(const std::vector<qint64> &marks, const std::vector<qint64> &others)
{
    constexpr qint64 Frames = 300;
    return std::ranges::equal(
        marks, others, [](qint64 mark, qint64 other) { return std::abs(mark - other) <= Frames; });
}

QByteArray listOf(const std::vector<const ServedDisc *> &discs)
{
    QByteArray lines;
    for (const ServedDisc *disc : discs)
        lines += disc->category + ' ' + disc->discId() + ' ' + titleOf(*disc) + "\r\n";
    return lines + ".\r\n";
}

/// The database, without the network.
class Database
{
public:
    int newestLevel = 6;
    bool knowsSearch = true;
    bool knowsAlbum = true;
    bool isAlwaysLatin1 = false;

    QByteArray answer(const Request &request) const
    {
        if (request.hello.size() != 4)
            return "409 No handshake.\r\n";
        if (request.level < 1 || request.level > newestLevel)
            return "501 Illegal protocol level.\r\n";
        QByteArray text = "500 Unrecognized command.\r\n";
        if (request.command == "search" && knowsSearch)
            text = search(request);
        else if (request.command.startsWith("cddb query "))
            text = query(request);
        else if (request.command.startsWith("cddb read "))
            text = read(request);
        else if (request.command.startsWith("cddb album ") && knowsAlbum)
            text = album(request);
        constexpr int Utf8Level = 6;
        const bool isLatin1 = request.level < Utf8Level || isAlwaysLatin1;
        return isLatin1 ? QString::fromUtf8(text).toLatin1() : text;
    }

private:
    static QByteArray query(const Request &request)
    {
        constexpr qsizetype WordsBeforeOffsets = 4;
        const qsizetype tracks = request.words.value(3).toInt();
        if (tracks < 1 || request.words.size() != WordsBeforeOffsets + tracks + 1)
            return "500 Command syntax error: incorrect number of arguments.\r\n";
        std::vector<qint64> marks;
        for (const QByteArray &word : request.words.sliced(WordsBeforeOffsets))
            marks.push_back(word.toLongLong());
        marks.back() *= 75;
        std::vector<const ServedDisc *> exact;
        std::vector<const ServedDisc *> close;
        for (const ServedDisc &disc : CddbServer::discs()) {
            if (disc.discId() == request.words[2].toLower())
                exact.push_back(&disc);
            else if (areClose(disc.marks, marks))
                close.push_back(&disc);
        }
        constexpr int ListLevel = 4;
        if (exact.size() == 1 || (!exact.empty() && request.level < ListLevel))
            return "200 " + exact[0]->category + ' ' + exact[0]->discId() + ' ' + titleOf(*exact[0]) + "\r\n";
        if (!exact.empty())
            return "210 Found exact matches, list follows (until terminating `.')\r\n" + listOf(exact);
        if (!close.empty())
            return "211 Found inexact matches, list follows (until terminating `.')\r\n" + listOf(close);
        return "202 No match for disc ID " + request.words[2] + ".\r\n";
    }

    static QByteArray read(const Request &request)
    {
        const QByteArray name = request.words.value(2) + ' ' + request.words.value(3);
        for (const ServedDisc &disc : CddbServer::discs()) {
            if (disc.category + ' ' + disc.discId() == name)
                return "210 " + name + " CD database entry follows (until terminating `.')\r\n" +
                       recordOf(disc, request.level) + ".\r\n";
        }
        return "401 " + name + " No such CD entry in database.\r\n";
    }

    static std::vector<const ServedDisc *> found(const QString &artist, const QString &album)
    {
        std::vector<const ServedDisc *> discs;
        for (const ServedDisc &disc : CddbServer::discs()) {
            if (disc.artist.contains(artist, Qt::CaseInsensitive) && disc.album.contains(album, Qt::CaseInsensitive))
                discs.push_back(&disc);
        }
        return discs;
    }

    static QString textOf(const Request &request, const QByteArray &bytes)
    {
        constexpr int Utf8Level = 6;
        return request.level < Utf8Level ? QString::fromLatin1(bytes) : QString::fromUtf8(bytes);
    }

    static QByteArray search(const Request &request)
    {
        const auto discs = found(textOf(request, request.artist), textOf(request, request.album));
        return discs.empty() ? "202 No match found.\r\n"
                             : "200 Found matches, list follows (until terminating `.')\r\n" + listOf(discs);
    }

    static QByteArray album(const Request &request)
    {
        const QString words = textOf(request, request.command.mid(qsizetype(sizeof "cddb album")));
        const qsizetype slash = words.indexOf(u" / ");
        auto discs = found(words.left(slash), slash < 0 ? QString() : words.mid(slash + 3));
        if (slash < 0 && discs.empty())
            discs = found({}, words);
        return discs.empty() ? "202 No match found.\r\n"
                             : "211 Found inexact matches, list follows (until terminating `.')\r\n" + listOf(discs);
    }
};

/// The words after the code of a refusal.
QByteArray refusalOf(Fault fault)
{
    switch (fault) {
    case Fault::Code401:
        return "401 No such CD entry in database.\r\n";
    case Fault::Code402:
        return "402 Server error.\r\n";
    case Fault::Code403:
        return "403 Database entry is corrupt.\r\n";
    case Fault::Code409:
        return "409 No handshake.\r\n";
    case Fault::Code500:
        return "500 Command syntax error.\r\n";
    default:
        return "530 Server error, server timeout.\r\n";
    }
}

} // namespace

std::optional<Fault> faultFromName(const QByteArray &name)
{
    for (const auto &[fault, text] : FaultNames) {
        if (name == text)
            return fault;
    }
    return {};
}

class CddbServer::Private : public WebServer
{
public:
    using WebServer::WebServer;

    void answer(QSslSocket &socket, const QByteArray &head) override
    {
        const Request request = parseRequest(head);
        requests << request.target;
        commands << request.command;
        if (listener)
            listener(request.target);
        const bool misbehaves = fault != Fault::None && request.command.startsWith(faultyCommand);
        answer(socket, request, misbehaves ? fault : Fault::None);
    }

    void answer(QSslSocket &socket, const Request &request, Fault wrong)
    {
        const QByteArray body = database.answer(request);
        switch (wrong) {
        case Fault::Silence:
            return;
        case Fault::HangsUp:
            break;
        case Fault::Stalls:
            socket.write(httpAnswer(body).chopped(body.size() / 2));
            socket.flush();
            return;
        case Fault::Endless:
            QObject::connect(&socket, &QSslSocket::bytesWritten, &socket, [&socket] { writeMore(socket); });
            socket.write(httpHead("200 OK", {"Content-Type: text/plain"}));
            return;
        default:
            socket.write(wrongAnswer(request, body, wrong));
        }
        socket.disconnectFromHost(); // when all is written
    }

    /// For the faults that send something and hang up.
    QByteArray wrongAnswer(const Request &request, const QByteArray &body, Fault wrong) const
    {
        switch (wrong) {
        case Fault::None:
            return httpAnswer(body);
        case Fault::Garbage:
            return QByteArray("\x16\x03\x01\x02\xff\xfe HTTP? no\r\n\r\n\0\0", 22).repeated(20);
        case Fault::WebPage:
            return httpAnswer("<!DOCTYPE html>\n<html><title>Sign in</title></html>\n", "text/html");
        case Fault::Zeros:
            return httpAnswer(QByteArray(5000, '\0'));
        case Fault::HalfSent:
            return httpAnswer(body).chopped(body.size() / 2);
        case Fault::CutList:
            return httpAnswer(body.left(body.lastIndexOf("\r\n.\r\n")));
        case Fault::TooLong:
            return httpHead("200 OK", {"Content-Length: 1048577"}) + body;
        case Fault::Compressed:
            return httpHead("200 OK", {"Content-Encoding: gzip"}) + QByteArray("\x1f\x8b\x08\0\0\0\0\0", 8) + body;
        case Fault::HttpRefused:
            return httpAnswer("busy", "text/plain", "503 Service Unavailable");
        case Fault::HttpLogin:
            return httpHead("401 Unauthorized", {"WWW-Authenticate: Basic realm=\"x\"", "Content-Length: 0"});
        case Fault::RedirectLoop:
        case Fault::RedirectToFile:
        case Fault::RedirectInsecure:
        case Fault::RedirectOnce:
            return redirect(request, body, wrong);
        default:
            return httpAnswer(refusalOf(wrong));
        }
    }

    QByteArray redirect(const Request &request, const QByteArray &body, Fault wrong) const
    {
        QByteArray goal = request.target;
        if (wrong == Fault::RedirectOnce && goal.endsWith("&again"))
            return httpAnswer(body);
        if (wrong == Fault::RedirectOnce)
            goal += "&again";
        else if (wrong == Fault::RedirectToFile)
            goal = "file:///etc/hostname";
        else if (wrong == Fault::RedirectInsecure)
            goal = "http://127.0.0.1:" + QByteArray::number(port()) + request.target;
        return httpHead("302 Found", {"Location: " + goal, "Content-Length: 0"});
    }

    static void writeMore(QSslSocket &socket)
    {
        constexpr qint64 Waiting = 1 << 16;
        if (socket.bytesToWrite() < Waiting)
            socket.write(QByteArray(1 << 16, 'x'));
    }

    Database database;
    Fault fault = Fault::None;
    QByteArray faultyCommand;
    QByteArrayList requests;
    QByteArrayList commands;
    std::function<void(const QByteArray &)> listener;
};

CddbServer::CddbServer(Security security) : d(std::make_unique<Private>(security)) {}

CddbServer::~CddbServer() = default;

QByteArray CddbServer::certificate()
{
    return WebServer::certificate();
}

quint16 CddbServer::port() const
{
    return d->port();
}

QString CddbServer::hostAndPort() const
{
    return d->hostAndPort();
}

QString CddbServer::url() const
{
    return d->origin() + u"/~cddb/cddb.cgi"_s;
}

void CddbServer::setNewestLevel(int level)
{
    d->database.newestLevel = level;
}

void CddbServer::setKnowsSearch(bool knows)
{
    d->database.knowsSearch = knows;
}

void CddbServer::setKnowsAlbum(bool knows)
{
    d->database.knowsAlbum = knows;
}

void CddbServer::setAlwaysLatin1(bool always)
{
    d->database.isAlwaysLatin1 = always;
}

void CddbServer::setFault(Fault fault, const QByteArray &command)
{
    d->fault = fault;
    d->faultyCommand = command;
}

QByteArrayList CddbServer::requests() const
{
    return d->requests;
}

QByteArrayList CddbServer::commands() const
{
    return d->commands;
}

void CddbServer::setListener(std::function<void(const QByteArray &)> listener)
{
    d->listener = std::move(listener);
}

int CddbServer::openConnections() const
{
    return d->openConnections();
}

} // namespace ravlin::test
