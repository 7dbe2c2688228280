// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/updateserver.h"

#include <QCryptographicHash>

namespace ravlin::test {

namespace {

QByteArray chunk(const QByteArray &bytes)
{
    return QByteArray::number(bytes.size(), 16) + "\r\n" + bytes + "\r\n";
}

/// Two chunks, and the empty last one.
QByteArray chunked(const QByteArray &content)
{
    const qsizetype half = content.size() / 2;
    return (half > 0 ? chunk(content.left(half)) : QByteArray()) + chunk(content.mid(half)) +
           (content.isEmpty() ? "" : "0\r\n\r\n");
}

QByteArray announced(qint64 size)
{
    return "Content-Length: " + QByteArray::number(size);
}

} // namespace

void UpdateServer::serveVersionFile(const QByteArray &content, Serving way)
{
    serve("/ravlin/app/ravlin.ver", {.content = content, .way = way});
}

void UpdateServer::serveChecksum(const QByteArray &path)
{
    const QByteArray sum = QCryptographicHash::hash(m_served[path].content, QCryptographicHash::Sha256).toHex();
    serve(path + ".sha256", {.content = sum + "  " + path.mid(path.lastIndexOf('/') + 1) + "\n"});
}

void UpdateServer::allow(qint64 bytes)
{
    m_allowed = bytes;
    for (Gate &gate : m_gates)
        sendAllowed(gate);
}

void UpdateServer::sendAllowed(Gate &gate) const
{
    if (!gate.socket || gate.sent >= m_allowed)
        return;
    const QByteArray now = gate.rest.left(m_allowed - gate.sent);
    gate.rest.remove(0, now.size());
    gate.sent += now.size();
    gate.socket->write(now);
    gate.socket->flush();
    if (gate.rest.isEmpty())
        gate.socket->disconnectFromHost();
}

/// For the ways that send something and hang up.
std::optional<QByteArray> UpdateServer::wholeAnswer(const Served &served)
{
    const QByteArray &content = served.content;
    const QByteArray length = announced(content.size());
    switch (served.way) {
    case Serving::Length:
        return httpAnswer(content, "application/octet-stream");
    case Serving::Chunked:
        return httpHead("200 OK", {"Transfer-Encoding: chunked"}) + chunked(content);
    case Serving::Unmarked:
        return httpHead("200 OK", {}) + content;
    case Serving::CutOff:
        return httpHead("200 OK", {length}) + content.left(content.size() / 2);
    case Serving::CutChunked:
        return httpHead("200 OK", {"Transfer-Encoding: chunked"}) + chunk(content);
    case Serving::CutHead:
        return httpHead("200 OK", {length}).chopped(length.size());
    case Serving::Overlong:
        return httpHead("200 OK", {announced(content.size() / 2)}) + content;
    case Serving::HangsUp:
        return QByteArray();
    case Serving::Enormous:
        return httpHead("200 OK", {announced(qint64(3) << 30)}) + content;
    case Serving::Redirect:
        return httpHead("302 Found", {"Location: " + served.goal, "Content-Length: 0"});
    case Serving::Status:
        return httpAnswer(content, "text/html", served.status);
    case Serving::Garbage:
        return content;
    case Serving::BrokenCoding:
        return httpHead("200 OK", {"Transfer-Encoding: chunked"}) + "not a number\r\n" + content + "\r\n0\r\n\r\n";
    default:
        return {};
    }
}

void UpdateServer::answer(QSslSocket &socket, const QByteArray &head)
{
    const QByteArray path = head.split('\n').front().trimmed().split(' ').value(1);
    m_requests << path;
    const auto found = m_served.constFind(path);
    const Served served = found != m_served.constEnd()
                              ? *found
                              : Served{.content = "nothing here", .way = Serving::Status, .status = "404 Not Found"};
    if (const std::optional<QByteArray> whole = wholeAnswer(served)) {
        socket.write(*whole);
        socket.disconnectFromHost(); // when all is written
        return;
    }
    const QByteArray lengthHead = httpHead("200 OK", {announced(served.content.size())});
    switch (served.way) {
    case Serving::Gated:
        socket.write(lengthHead);
        socket.flush();
        m_gates.append({.socket = &socket, .rest = served.content});
        sendAllowed(m_gates.last());
        break;
    case Serving::Stalls:
        socket.write(lengthHead + served.content.left(served.content.size() / 2));
        socket.flush();
        break;
    case Serving::Endless:
        QObject::connect(&socket, &QSslSocket::bytesWritten, &socket, [&socket] {
            constexpr qint64 Waiting = 1 << 16;
            if (socket.bytesToWrite() < Waiting)
                socket.write(chunk(QByteArray(Waiting, 'x')));
        });
        socket.write(httpHead("200 OK", {"Transfer-Encoding: chunked"}));
        break;
    default:
        break; // silence
    }
}

} // namespace ravlin::test
