#include "online/cddbfetch.h"

#include <QHostAddress>
#include <QNetworkProxyFactory>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSslError>

#include <memory>

using namespace Qt::StringLiterals;

namespace ravlin {

namespace {

bool isThisComputer(const QString &host)
{
    const QHostAddress address(host);
    return address.isLoopback() || host.compare(u"localhost", Qt::CaseInsensitive) == 0 ||
           host.endsWith(u".localhost", Qt::CaseInsensitive);
}

/// The system's proxies, as far as they are wanted.
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
    // An answer that unpacks to many times its size is not for us.
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

LookupFailureKind kindOf(QNetworkReply::NetworkError error)
{
    switch (error) {
    case QNetworkReply::TooManyRedirectsError:
        return LookupFailureKind::TooManyRedirects;
    case QNetworkReply::InsecureRedirectError:
    case QNetworkReply::ProtocolUnknownError:
        return LookupFailureKind::InsecureRedirect;
    case QNetworkReply::SslHandshakeFailedError:
        return LookupFailureKind::Certificate;
    case QNetworkReply::TimeoutError:
        return LookupFailureKind::TimedOut;
    case QNetworkReply::ProxyConnectionRefusedError:
    case QNetworkReply::ProxyConnectionClosedError:
    case QNetworkReply::ProxyNotFoundError:
    case QNetworkReply::ProxyTimeoutError:
    case QNetworkReply::ProxyAuthenticationRequiredError:
    case QNetworkReply::UnknownProxyError:
        return LookupFailureKind::Proxy;
    case QNetworkReply::RemoteHostClosedError:
        return LookupFailureKind::Incomplete;
    case QNetworkReply::ProtocolFailure:
        return LookupFailureKind::Garbage;
    default:
        return LookupFailureKind::NoConnection;
    }
}

} // namespace

CddbFetch::CddbFetch(QObject *parent) : QObject(parent)
{
    m_timeLimit.setSingleShot(true);
    connect(&m_timeLimit, &QTimer::timeout, this, [this] { end(LookupFailureKind::TimedOut); });
    setSettings({});
}

CddbFetch::~CddbFetch()
{
    cancel();
}

void CddbFetch::setSettings(const FetchSettings &settings)
{
    m_settings = settings;
    m_network.setProxyFactory(new WantedProxies(settings)); // which the manager owns
}

void CddbFetch::get(const QUrl &url, Done done)
{
    cancel();
    m_done = std::move(done);
    m_body.clear();
    m_certificateTrouble.clear();
    m_reply = m_network.get(requestFor(url, m_settings));
    m_reply->setReadBufferSize(m_settings.sizeLimit + 1);
    connect(m_reply, &QNetworkReply::metaDataChanged, this, &CddbFetch::takeHeaders);
    connect(m_reply, &QNetworkReply::readyRead, this, &CddbFetch::takeBytes);
    connect(m_reply, &QNetworkReply::sslErrors, this, [this](const QList<QSslError> &errors) {
        m_certificateTrouble = errors.isEmpty() ? QString() : errors.front().errorString();
    });
    // Queued, so that an error known at once is told later, too; by then the fetch may have been ended.
    connect(
        m_reply, &QNetworkReply::finished, this,
        [this, reply = m_reply] {
            if (reply == m_reply)
                finish();
        },
        Qt::QueuedConnection);
    m_timeLimit.start(m_settings.timeLimit);
}

void CddbFetch::cancel()
{
    m_timeLimit.stop();
    m_done = nullptr;
    QNetworkReply *const reply = std::exchange(m_reply, nullptr);
    if (reply == nullptr)
        return;
    reply->disconnect(this);
    reply->abort();
    reply->deleteLater();
}

void CddbFetch::takeHeaders()
{
    const qint64 size = m_reply->header(QNetworkRequest::ContentLengthHeader).toLongLong();
    if (size <= m_settings.sizeLimit)
        return;
    // The reply must not be aborted while it is reading its headers.
    const auto endIfStillThere = [this, reply = m_reply] {
        if (reply == m_reply)
            end(LookupFailureKind::TooLarge);
    };
    QMetaObject::invokeMethod(this, endIfStillThere, Qt::QueuedConnection);
}

void CddbFetch::takeBytes()
{
    m_body += m_reply->read(m_settings.sizeLimit + 1 - m_body.size());
    if (m_body.size() > m_settings.sizeLimit)
        end(LookupFailureKind::TooLarge);
}

void CddbFetch::finish()
{
    takeBytes();
    if (m_reply == nullptr)
        return;
    if (m_reply->error() != QNetworkReply::NoError)
        end(tl::unexpected(failureOf(*m_reply)));
    else
        end(LookupResult<QByteArray>(m_body));
}

LookupFailure CddbFetch::failureOf(const QNetworkReply &reply) const
{
    const int status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    constexpr int FirstRefusal = 400;
    if (status >= FirstRefusal) {
        const QString reason = reply.attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString();
        return {LookupFailureKind::HttpStatus, u"HTTP %1 %2"_s.arg(status).arg(reason).trimmed()};
    }
    if (!m_certificateTrouble.isEmpty())
        return {LookupFailureKind::Certificate, m_certificateTrouble};
    LookupFailureKind kind = kindOf(reply.error());
    // With a proxy between it is the proxy that is not there: only that one was called.
    const QList<QNetworkProxy> proxies = m_network.proxyFactory()->queryProxy(QNetworkProxyQuery(reply.url()));
    if (kind == LookupFailureKind::NoConnection && !proxies.isEmpty() &&
        proxies.front().type() != QNetworkProxy::NoProxy)
        kind = LookupFailureKind::Proxy;
    return {kind, reply.errorString()};
}

void CddbFetch::end(LookupFailureKind kind, const QString &detail)
{
    end(tl::unexpected(LookupFailure{kind, detail}));
}

void CddbFetch::end(const LookupResult<QByteArray> &result)
{
    const Done done = std::move(m_done);
    cancel();
    if (done)
        done(result);
}

} // namespace ravlin
