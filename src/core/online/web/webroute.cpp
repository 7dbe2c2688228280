// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/web/webroute.h"

#include <QHostAddress>
#include <QNetworkProxyFactory>
#include <QNetworkProxyQuery>

using namespace Qt::StringLiterals;

namespace ravlin {

namespace {

constexpr int HttpPort = 80;
constexpr int HttpsPort = 443;

bool isThisComputer(const QString &host)
{
    const QHostAddress address(host);
    return address.isLoopback() || host.compare(u"localhost", Qt::CaseInsensitive) == 0 ||
           host.endsWith(u".localhost", Qt::CaseInsensitive);
}

bool isEncrypted(const QUrl &url)
{
    return url.scheme() == u"https"_s;
}

QNetworkProxy proxyFor(const QUrl &url, const ProxyChoice &choice)
{
    const QNetworkProxy none(QNetworkProxy::NoProxy);
    const bool isKeptHere = !choice.usesProxyForThisComputer && isThisComputer(url.host());
    if (choice.ignoresProxy || isKeptHere)
        return none;
    for (const QNetworkProxy &proxy : QNetworkProxyFactory::systemProxyForQuery(QNetworkProxyQuery(url))) {
        switch (proxy.type()) {
        case QNetworkProxy::NoProxy:
        case QNetworkProxy::DefaultProxy:
            return none;
        case QNetworkProxy::HttpProxy:
        case QNetworkProxy::Socks5Proxy:
            return proxy;
        case QNetworkProxy::HttpCachingProxy:
            if (!isEncrypted(url))
                return proxy;
            break;
        case QNetworkProxy::FtpCachingProxy:
            break;
        }
    }
    return none;
}

/// "host:port", without a port that is the usual one.
QByteArray hostField(const QUrl &url)
{
    const QString host = url.host(QUrl::FullyEncoded);
    const QString quoted = host.contains(u':') ? u'[' + host + u']' : host;
    return (quoted + (url.port() < 0 ? QString() : u':' + QString::number(url.port()))).toLatin1();
}

QByteArray credentials(const QNetworkProxy &proxy)
{
    if (proxy.user().isEmpty())
        return {};
    const QByteArray both = (proxy.user() + u':' + proxy.password()).toUtf8();
    return "Proxy-Authorization: Basic " + both.toBase64() + "\r\n";
}

/// Refuses compression: an answer could unpack to many times its size. One connection serves one request, so that its
/// end can't be taken for the end of another.
QByteArray headFor(const QUrl &url, const QByteArray &target, const QByteArray &further)
{
    return "GET " + target + " HTTP/1.1\r\nHost: " + hostField(url) +
           "\r\nUser-Agent: ravlin/" RAVLIN_VERSION
           "\r\nAccept: */*\r\nAccept-Encoding: identity\r\nConnection: close\r\n" +
           further + "\r\n";
}

} // namespace

WebRoute routeTo(const QUrl &url, const ProxyChoice &choice)
{
    const QNetworkProxy proxy = proxyFor(url, choice);
    WebRoute route;
    route.hasProxy = proxy.type() != QNetworkProxy::NoProxy;
    route.isEncrypted = isEncrypted(url);
    QUrl asked = url.adjusted(QUrl::RemoveFragment);
    if (asked.path().isEmpty())
        asked.setPath(u"/"_s);
    const bool isAskedOfProxy = route.hasProxy && !route.isEncrypted && proxy.type() != QNetworkProxy::Socks5Proxy;
    if (isAskedOfProxy) {
        route.host = proxy.hostName();
        route.port = proxy.port();
        route.head = headFor(url, asked.toEncoded(), credentials(proxy));
    } else {
        route.proxy = proxy;
        route.host = url.host(QUrl::FullyEncoded);
        route.port = quint16(url.port(route.isEncrypted ? HttpsPort : HttpPort));
        route.head = headFor(url, asked.toEncoded(QUrl::RemoveScheme | QUrl::RemoveAuthority), {});
    }
    return route;
}

bool isWebAddress(const QUrl &url)
{
    return url.isValid() && (isEncrypted(url) || url.scheme() == u"http"_s) && !url.host().isEmpty() &&
           url.userInfo().isEmpty();
}

tl::expected<QUrl, WebFailure> redirectGoal(const QUrl &from, const QByteArray &location)
{
    const auto failure = [&location](WebFailureKind kind) {
        constexpr qsizetype Longest = 200;
        QString shown = QString::fromUtf8(location);
        shown.removeIf([](QChar c) { return !c.isPrint(); });
        return tl::unexpected(WebFailure{kind, shown.left(Longest)});
    };
    const QUrl relative = QUrl::fromEncoded(location);
    if (location.isEmpty() || !relative.isValid())
        return failure(WebFailureKind::BadRedirect);
    const QUrl goal = from.resolved(relative);
    if (goal.scheme() != u"https"_s && goal.scheme() != u"http"_s)
        return failure(WebFailureKind::ForeignRedirect);
    if (!isWebAddress(goal))
        return failure(WebFailureKind::BadRedirect);
    if (isEncrypted(from) && !isEncrypted(goal))
        return failure(WebFailureKind::InsecureRedirect);
    return goal;
}

} // namespace ravlin
