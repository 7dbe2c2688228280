// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <QPointer>
#include <QSslSocket>
#include <QString>

#include <memory>

/// Base of the tests' servers: plain or encrypted HTTP on its own port of this computer, one request per connection,
/// served by the event loop of the thread that made it. Shares no code with the program.
namespace ravlin::test {

class WebServer
{
    Q_DISABLE_COPY_MOVE(WebServer)

public:
    enum class Security
    {
        Plain,
        Encrypted,         ///< with its own untrusted certificate, see certificate()
        EncryptedElsewhere ///< the same, at an address the certificate is not for
    };

    explicit WebServer(Security security);
    virtual ~WebServer();

    /// The encrypted server's certificate (PEM, for 127.0.0.1 and localhost).
    static QByteArray certificate();

    quint16 port() const;
    QString hostAndPort() const; ///< "127.0.0.1:1234"
    QString origin() const;      ///< "https://127.0.0.1:1234"
    int openConnections() const;
    /// Drops every connection, and accepts no new ones.
    void stop();

    static QByteArray httpHead(const QByteArray &status, const QByteArrayList &fields);
    static QByteArray httpAnswer(
        const QByteArray &body, const QByteArray &type = "text/plain", const QByteArray &status = "200 OK");

protected:
    /// Called with a request's head. The connection stays open until disconnectFromHost() is called.
    virtual void answer(QSslSocket &socket, const QByteArray &head) = 0;

private:
    class Listener;

    void takeConnection(qintptr descriptor);
    void takeBytes(QSslSocket &socket);

    const Security m_security;
    QList<QPointer<QSslSocket>> m_connections;
    std::unique_ptr<Listener> m_listener;
};

} // namespace ravlin::test
