// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/webserver.h"

#include "support/cddbcertificate.h"

#include <QSslCertificate>
#include <QSslKey>
#include <QTcpServer>

#include <algorithm>
#include <functional>
#include <utility>

using namespace Qt::StringLiterals;

namespace ravlin::test {

class WebServer::Listener : public QTcpServer
{
public:
    explicit Listener(std::function<void(qintptr)> take) : m_take(std::move(take)) {}

protected:
    void incomingConnection(qintptr descriptor) override { m_take(descriptor); }

private:
    std::function<void(qintptr)> m_take;
};

WebServer::WebServer(Security security)
    : m_security(security),
      m_listener(std::make_unique<Listener>([this](qintptr descriptor) { takeConnection(descriptor); }))
{
    const QString address = security == Security::EncryptedElsewhere ? u"127.0.0.2"_s : u"127.0.0.1"_s;
    if (!m_listener->listen(QHostAddress(address)))
        qFatal("no port to listen on: %s", qPrintable(m_listener->errorString()));
}

WebServer::~WebServer()
{
    // Open connections must not call a half-destroyed server.
    for (const QPointer<QSslSocket> &socket : std::as_const(m_connections)) {
        if (socket)
            socket->disconnect();
    }
}

QByteArray WebServer::certificate()
{
    return Certificate;
}

quint16 WebServer::port() const
{
    return m_listener->serverPort();
}

QString WebServer::hostAndPort() const
{
    return u"%1:%2"_s.arg(m_listener->serverAddress().toString()).arg(port());
}

QString WebServer::origin() const
{
    return (m_security == Security::Plain ? u"http://"_s : u"https://"_s) + hostAndPort();
}

int WebServer::openConnections() const
{
    return int(std::ranges::count_if(m_connections, [](const QPointer<QSslSocket> &socket) { return bool(socket); }));
}

void WebServer::stop()
{
    m_listener->close();
    const QList<QPointer<QSslSocket>> open = m_connections;
    for (const QPointer<QSslSocket> &socket : open) {
        if (socket)
            socket->abort();
    }
}

QByteArray WebServer::httpHead(const QByteArray &status, const QByteArrayList &fields)
{
    QByteArray head = "HTTP/1.1 " + status + "\r\nConnection: close\r\n";
    for (const QByteArray &field : fields)
        head += field + "\r\n";
    return head + "\r\n";
}

QByteArray WebServer::httpAnswer(const QByteArray &body, const QByteArray &type, const QByteArray &status)
{
    return httpHead(status, {"Content-Type: " + type, "Content-Length: " + QByteArray::number(body.size())}) + body;
}

void WebServer::takeConnection(qintptr descriptor)
{
    auto *const socket = new QSslSocket(m_listener.get());
    socket->setSocketDescriptor(descriptor);
    m_connections << socket;
    QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    QObject::connect(socket, &QTcpSocket::readyRead, m_listener.get(), [this, socket] { takeBytes(*socket); });
    if (m_security != Security::Plain) {
        socket->setLocalCertificate(QSslCertificate(certificate()));
        socket->setPrivateKey(QSslKey(QByteArray(Key), QSsl::Ec));
        socket->startServerEncryption();
    }
}

void WebServer::takeBytes(QSslSocket &socket)
{
    const QByteArray head = socket.property("head").toByteArray() + socket.readAll();
    socket.setProperty("head", head);
    const bool isWhole = head.contains("\r\n\r\n") || head.contains("\n\n");
    if (!isWhole || socket.property("answered").toBool())
        return;
    socket.setProperty("answered", true);
    answer(socket, head);
}

} // namespace ravlin::test
