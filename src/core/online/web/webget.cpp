// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/web/webget.h"

#include <QHostAddress>
#include <QNetworkProxyFactory>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>
#include <QSslError>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace ravlin {

namespace {

bool isThisComputer(const QString &host)
{
    const QHostAddress address(host);
    return address.isLoopback() || host.compare(u"localhost", Qt::CaseInsensitive) == 0 ||
           host.endsWith(u".localhost", Qt::CaseInsensitive);
}

/// The system's proxies, as the settings want them.
class WantedProxies : public QNetworkProxyFactory
{
public:
    explicit WantedProxies(const FetchSettings &settings) : m_settings(settings) {}

    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery &query) override
    {
        const bool isKeptHere = !m_settings.usesProxyForThisComputer && isThisComputer(query.peerHostName());
        if (m_settings.ignoresProxy || isKeptHere)
            return {QNetworkProxy(QNetworkProxy::NoProxy)};
        return systemProxyForQuery(query);
    }

private:
    FetchSettings m_settings;
};

QNetworkRequest requestFor(const QUrl &url, const FetchSettings &settings)
{
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::UserAgentHeader, u"ravlin/"_s + QString::fromLatin1(RAVLIN_VERSION));
    // Refuse compression: an answer could unpack to many times its size.
    request.setRawHeader("Accept-Encoding", "identity");
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setMaximumRedirectsAllowed(settings.redirectLimit);
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    return request;
}

WebFailureKind kindOf(QNetworkReply::NetworkError error)
{
    switch (error) {
    case QNetworkReply::TooManyRedirectsError:
        return WebFailureKind::TooManyRedirects;
    case QNetworkReply::InsecureRedirectError:
    case QNetworkReply::ProtocolUnknownError:
        return WebFailureKind::InsecureRedirect;
    case QNetworkReply::SslHandshakeFailedError:
        return WebFailureKind::Certificate;
    case QNetworkReply::TimeoutError:
        return WebFailureKind::TimedOut;
    case QNetworkReply::ProxyConnectionRefusedError:
    case QNetworkReply::ProxyConnectionClosedError:
    case QNetworkReply::ProxyNotFoundError:
    case QNetworkReply::ProxyTimeoutError:
    case QNetworkReply::ProxyAuthenticationRequiredError:
    case QNetworkReply::UnknownProxyError:
        return WebFailureKind::Proxy;
    case QNetworkReply::RemoteHostClosedError:
        return WebFailureKind::Incomplete;
    case QNetworkReply::ProtocolFailure:
        return WebFailureKind::Garbage;
    default:
        return WebFailureKind::NoConnection;
    }
}

int statusOf(const QNetworkReply &reply)
{
    return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

/// 2xx. Redirects are followed where allowed, and fail where not.
bool promisesContent(int status)
{
    constexpr int Hundred = 100;
    return status / Hundred == 2;
}

WebFailure refusalOf(const QNetworkReply &reply)
{
    const int status = statusOf(reply);
    if (status == 0)
        return {WebFailureKind::Garbage, {}};
    const QString reason = reply.attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString();
    return {WebFailureKind::HttpStatus, u"HTTP %1 %2"_s.arg(status).arg(reason).trimmed(), status};
}

} // namespace

WebGet::WebGet(QObject *parent) : QObject(parent)
{
    m_timeLimit.setSingleShot(true);
    m_idleLimit.setSingleShot(true);
    for (QTimer *limit : {&m_timeLimit, &m_idleLimit})
        connect(limit, &QTimer::timeout, this, [this] { fail(WebFailureKind::TimedOut); });
    setSettings({});
}

WebGet::~WebGet()
{
    cancel();
}

void WebGet::setSettings(const FetchSettings &settings)
{
    m_settings = settings;
    m_network.setProxyFactory(new WantedProxies(settings)); // the manager owns it
}

void WebGet::get(const QUrl &url)
{
    constexpr qint64 Buffered = 1024 * 1024; // anything beyond waits at the server
    cancel();
    m_certificateTrouble.clear();
    m_isRefused = false;
    m_isSent = false;
    m_isAnswering = false;
    m_taken = 0;
    m_timeLimit.start(m_settings.timeLimit);
    if (m_settings.idleLimit.count() > 0)
        m_idleLimit.start(m_settings.idleLimit);
    m_reply = m_network.get(requestFor(url, m_settings));
    m_reply->setReadBufferSize(std::min(m_settings.sizeLimit + 1, Buffered));
    connect(m_reply, &QNetworkReply::socketStartedConnecting, this, [this] { Q_EMIT stepped(WebStep::Connecting); });
    connect(m_reply, &QNetworkReply::requestSent, this, [this] {
        if (!m_isAnswering)
            tellSent();
    });
    connect(m_reply, &QNetworkReply::metaDataChanged, this, &WebGet::takeHeaders);
    connect(m_reply, &QNetworkReply::readyRead, this, &WebGet::tellReadable);
    connect(m_reply, &QNetworkReply::sslErrors, this, [this](const QList<QSslError> &errors) {
        m_certificateTrouble = errors.isEmpty() ? QString() : errors.front().errorString();
    });
    // Queued, so that even an immediate error is reported after get() has returned. The fetch may have been ended
    // meanwhile.
    connect(
        m_reply, &QNetworkReply::finished, this,
        [this, reply = m_reply] {
            if (reply == m_reply)
                finish();
        },
        Qt::QueuedConnection);
    Q_EMIT stepped(WebStep::LookingUp);
}

void WebGet::cancel()
{
    m_timeLimit.stop();
    m_idleLimit.stop();
    QNetworkReply *const reply = std::exchange(m_reply, nullptr);
    if (reply == nullptr)
        return;
    reply->disconnect(this);
    // Destruction ends the fetch. After abort() Qt would complain about an error already on its way from the network's
    // thread.
    reply->deleteLater();
}

qint64 WebGet::announcedSize() const
{
    if (m_reply == nullptr)
        return -1;
    bool isNumber = false;
    const qint64 size = m_reply->header(QNetworkRequest::ContentLengthHeader).toLongLong(&isNumber);
    return isNumber && size >= 0 ? size : -1;
}

bool WebGet::isEndMarked() const
{
    return announcedSize() >= 0 ||
           (m_reply != nullptr &&
               m_reply->rawHeader("Transfer-Encoding").trimmed().compare("chunked", Qt::CaseInsensitive) == 0);
}

qint64 WebGet::available() const
{
    return m_reply != nullptr && !m_isRefused ? m_reply->bytesAvailable() : 0;
}

QByteArray WebGet::read(qint64 size)
{
    if (m_reply == nullptr || m_isRefused)
        return {};
    QByteArray bytes = m_reply->read(size);
    m_taken += bytes.size();
    return bytes;
}

void WebGet::tellSent()
{
    m_isSent = true;
    Q_EMIT stepped(WebStep::RequestSent);
}

void WebGet::takeHeaders()
{
    if (m_isRefused || m_isAnswering)
        return;
    const int status = statusOf(*m_reply);
    if (m_idleLimit.isActive())
        m_idleLimit.start();
    if (!promisesContent(status)) {
        constexpr int FirstRefusal = 400;
        if (status >= FirstRefusal)
            failSoon(refusalOf(*m_reply));
        return;
    }
    if (announcedSize() > m_settings.sizeLimit) {
        failSoon({WebFailureKind::TooLarge, {}, status});
        return;
    }
    m_isAnswering = true;
    const QNetworkReply *const reply = m_reply;
    if (!m_isSent) // some systems report it too late
        tellSent();
    if (m_reply == reply) // a slot may have ended the fetch
        Q_EMIT stepped(WebStep::Answering);
}

/// Fails later, because a reply must not be aborted while it reads its headers.
void WebGet::failSoon(const WebFailure &failure)
{
    m_isRefused = true;
    const auto endIfStillThere = [this, reply = m_reply, failure] {
        if (reply == m_reply)
            end(failure);
    };
    QMetaObject::invokeMethod(this, endIfStillThere, Qt::QueuedConnection);
}

void WebGet::tellReadable()
{
    if (m_idleLimit.isActive())
        m_idleLimit.start();
    if (m_isRefused)
        return;
    if (m_taken + m_reply->bytesAvailable() > m_settings.sizeLimit) {
        fail(WebFailureKind::TooLarge);
        return;
    }
    Q_EMIT readable();
}

void WebGet::finish()
{
    if (m_isRefused) // its end is on its way
        return;
    if (m_reply->error() != QNetworkReply::NoError)
        end(failureOf(*m_reply));
    else if (!promisesContent(statusOf(*m_reply)))
        end(refusalOf(*m_reply));
    else if (m_taken + m_reply->bytesAvailable() > m_settings.sizeLimit)
        fail(WebFailureKind::TooLarge);
    else
        end([this] { Q_EMIT finished(); });
}

WebFailure WebGet::failureOf(const QNetworkReply &reply) const
{
    const int status = statusOf(reply);
    constexpr int FirstRefusal = 400;
    if (status >= FirstRefusal)
        return refusalOf(reply);
    if (!m_certificateTrouble.isEmpty())
        return {WebFailureKind::Certificate, m_certificateTrouble};
    WebFailureKind kind = kindOf(reply.error());
    // With a proxy, only the proxy was called, so it is the one that is missing.
    const QList<QNetworkProxy> proxies = m_network.proxyFactory()->queryProxy(QNetworkProxyQuery(reply.url()));
    if (kind == WebFailureKind::NoConnection && !proxies.isEmpty() && proxies.front().type() != QNetworkProxy::NoProxy)
        kind = WebFailureKind::Proxy;
    return {kind, reply.errorString(), status};
}

void WebGet::fail(WebFailureKind kind, const QString &detail)
{
    end(WebFailure{kind, detail});
}

void WebGet::end(const WebFailure &failure)
{
    end([this, &failure] { Q_EMIT failed(failure); });
}

void WebGet::end(const std::function<void()> &tell)
{
    m_timeLimit.stop();
    m_idleLimit.stop();
    const QNetworkReply *const reply = m_reply;
    const QPointer<WebGet> self(this); // a slot may delete this
    tell();
    if (self && reply == m_reply) // or start another fetch
        cancel();
}

} // namespace ravlin
