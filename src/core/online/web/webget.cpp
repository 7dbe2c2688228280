// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/web/webget.h"

#include <QPointer>
#include <QSslError>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace ravlin {

namespace {

constexpr qint64 MostUnread = 256 * 1024; ///< bytes that arrived and are not taken yet
constexpr qint64 Noticeable = 1024;       ///< less than this many bytes don't put the idle limit off
constexpr int Ok = 200;
constexpr int Transformed = 203; ///< by a proxy
constexpr int ProxyLogin = 407;

bool isRedirect(int status)
{
    return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

WebFailureKind kindOf(QAbstractSocket::SocketError error)
{
    switch (error) {
    case QAbstractSocket::SslHandshakeFailedError:
    case QAbstractSocket::SslInternalError:
    case QAbstractSocket::SslInvalidUserDataError:
        return WebFailureKind::Certificate;
    case QAbstractSocket::SocketTimeoutError:
        return WebFailureKind::TimedOut;
    case QAbstractSocket::ProxyAuthenticationRequiredError:
    case QAbstractSocket::ProxyConnectionRefusedError:
    case QAbstractSocket::ProxyConnectionClosedError:
    case QAbstractSocket::ProxyConnectionTimeoutError:
    case QAbstractSocket::ProxyNotFoundError:
    case QAbstractSocket::ProxyProtocolError:
        return WebFailureKind::Proxy;
    default:
        return WebFailureKind::NoConnection;
    }
}

/// Why an answer with such a head is not what was asked for: the whole content as it is.
std::optional<WebFailure> refusalOf(const HttpAnswer &answer)
{
    const int status = answer.status();
    if (status != Ok && status != Transformed) {
        const QString words = u"HTTP %1 "_s.arg(status) + answer.reason();
        return WebFailure{
            status == ProxyLogin ? WebFailureKind::Proxy : WebFailureKind::HttpStatus, words.trimmed(), status};
    }
    const QByteArray coding = answer.field("content-encoding").toLower();
    if (!coding.isEmpty() && coding != "identity")
        return WebFailure{WebFailureKind::Garbage, u"unasked-for Content-Encoding"_s, status};
    if (answer.hasField("content-range"))
        return WebFailure{WebFailureKind::Garbage, u"unasked-for Content-Range"_s, status};
    return {};
}

} // namespace

WebGet::WebGet(QObject *parent) : QObject(parent)
{
    m_timeLimit.setSingleShot(true);
    m_idleLimit.setSingleShot(true);
    for (QTimer *limit : {&m_timeLimit, &m_idleLimit})
        connect(limit, &QTimer::timeout, this, [this] { fail(WebFailureKind::TimedOut); });
}

WebGet::~WebGet()
{
    cancel();
}

void WebGet::get(const QUrl &url)
{
    cancel();
    m_step.reset();
    m_redirects = 0;
    m_timeLimit.start(m_settings.timeLimit);
    ask(url);
    reach(WebStep::LookingUp);
}

void WebGet::cancel()
{
    m_timeLimit.stop();
    m_idleLimit.stop();
    m_socket.reset();
    m_content.clear();
}

/// Opens a connection for one request. Its signals are queued: a slot may then delete the socket, and even an immediate
/// failure is told after get() has returned.
void WebGet::ask(const QUrl &url)
{
    m_url = url;
    m_answer = {};
    m_content.clear();
    m_isAnswering = false;
    m_received = 0;
    m_noticed = 0;
    if (m_settings.idleLimit.count() > 0)
        m_idleLimit.start(m_settings.idleLimit);
    m_socket = std::make_unique<QSslSocket>();
    // A server that never stops can keep the queued signals waiting for ever: on Windows the system's come first.
    m_socket->setReadBufferSize(MostUnread);
    const int connection = ++m_connections;
    const auto on = [this, connection](auto signal, auto slot) {
        const auto ifCurrent = [this, connection, slot](auto... arguments) {
            if (m_socket && m_connections == connection)
                slot(arguments...);
        };
        connect(m_socket.get(), signal, this, ifCurrent, Qt::QueuedConnection);
    };
    on(&QSslSocket::hostFound, [this] { reach(WebStep::Connecting); });
    on(&QSslSocket::connected, [this] {
        if (!m_route.isEncrypted)
            send();
    });
    on(&QSslSocket::encrypted, [this] { send(); });
    on(&QSslSocket::readyRead, [this] { takeBytes(); });
    on(&QSslSocket::errorOccurred, [this](QAbstractSocket::SocketError error) { takeError(error); });
    on(&QSslSocket::disconnected, [this] { takeEnd(); });
    if (!isWebAddress(url)) {
        const auto failIfCurrent = [this, connection] {
            if (m_socket && m_connections == connection)
                fail(WebFailureKind::NoConnection, u"not an address of the web"_s);
        };
        QMetaObject::invokeMethod(this, failIfCurrent, Qt::QueuedConnection);
        return;
    }
    m_route = routeTo(url, m_settings);
    m_socket->setProxy(m_route.proxy);
    if (m_route.isEncrypted)
        m_socket->connectToHostEncrypted(m_route.host, m_route.port);
    else
        m_socket->connectToHost(m_route.host, m_route.port);
}

void WebGet::send()
{
    m_socket->write(m_route.head);
    reach(WebStep::RequestSent);
}

/// Tells the steps up to this one, each once a fetch. Returns whether the fetch goes on: a slot may end it.
bool WebGet::reach(WebStep step)
{
    const int connection = m_connections;
    while (!m_step || *m_step < step) {
        m_step = m_step ? static_cast<WebStep>(int(*m_step) + 1) : WebStep::LookingUp;
        const QPointer<WebGet> self(this);
        Q_EMIT stepped(*m_step);
        if (!self || !m_socket || m_connections != connection)
            return false;
    }
    return true;
}

void WebGet::takeBytes()
{
    const QByteArray content = m_answer.take(m_socket->readAll());
    if (m_answer.state() == HttpAnswer::State::Broken) {
        end(m_answer.failure());
        return;
    }
    if (m_answer.state() == HttpAnswer::State::Head || (!m_isAnswering && !takeHead()))
        return;
    m_content += content;
    m_received += content.size();
    if (m_received > m_settings.sizeLimit) {
        fail(WebFailureKind::TooLarge);
        return;
    }
    if (m_idleLimit.isActive() && m_received - m_noticed >= Noticeable) {
        m_noticed = m_received;
        m_idleLimit.start();
    }
    const int connection = m_connections;
    const QPointer<WebGet> self(this);
    if (!content.isEmpty())
        Q_EMIT readable();
    if (self && m_socket && m_connections == connection && m_answer.state() == HttpAnswer::State::Whole)
        end([this] { Q_EMIT finished(); });
}

/// Returns whether content follows.
bool WebGet::takeHead()
{
    if (isRedirect(m_answer.status())) {
        redirect();
        return false;
    }
    if (const std::optional<WebFailure> refusal = refusalOf(m_answer)) {
        end(*refusal);
        return false;
    }
    if (announcedSize() > m_settings.sizeLimit) {
        end({WebFailureKind::TooLarge, {}, m_answer.status()});
        return false;
    }
    m_isAnswering = true;
    if (m_idleLimit.isActive())
        m_idleLimit.start();
    return reach(WebStep::Answering);
}

void WebGet::redirect()
{
    const auto goal = redirectGoal(m_url, m_answer.field("location"));
    if (!goal)
        end(goal.error());
    else if (++m_redirects > m_settings.redirectLimit)
        fail(WebFailureKind::TooManyRedirects, goal->toDisplayString());
    else
        ask(*goal);
}

/// The connection has ended, in whatever way.
void WebGet::takeEnd()
{
    const int connection = m_connections;
    const QPointer<WebGet> self(this);
    takeBytes();
    if (!self || !m_socket || m_connections != connection)
        return;
    m_answer.end();
    if (m_answer.state() == HttpAnswer::State::Whole)
        end([this] { Q_EMIT finished(); });
    else
        end(m_answer.failure());
}

void WebGet::takeError(QAbstractSocket::SocketError error)
{
    if (const QList<QSslError> troubles = m_socket->sslHandshakeErrors(); !troubles.isEmpty()) {
        fail(WebFailureKind::Certificate, troubles.front().errorString());
        return;
    }
    if (error == QAbstractSocket::RemoteHostClosedError && m_step >= WebStep::RequestSent) {
        takeEnd();
        return;
    }
    WebFailureKind kind = kindOf(error);
    if (error == QAbstractSocket::RemoteHostClosedError)
        kind = WebFailureKind::Incomplete;
    // With a proxy, only the proxy was called, so it is the one that is missing.
    if (kind == WebFailureKind::NoConnection && m_route.hasProxy)
        kind = WebFailureKind::Proxy;
    fail(kind, m_socket->errorString());
}

QByteArray WebGet::read(qint64 size)
{
    const QByteArray bytes = m_content.left(size);
    m_content.remove(0, bytes.size());
    return bytes;
}

void WebGet::fail(WebFailureKind kind, const QString &detail)
{
    end(WebFailure{kind, detail, m_answer.status()});
}

void WebGet::end(const WebFailure &failure)
{
    end([this, failure] { Q_EMIT failed(failure); });
}

void WebGet::end(const std::function<void()> &tell)
{
    m_timeLimit.stop();
    m_idleLimit.stop();
    const int connection = m_connections;
    const QPointer<WebGet> self(this); // a slot may delete this
    tell();
    if (self && m_connections == connection) // or start another fetch
        cancel();
}

} // namespace ravlin
