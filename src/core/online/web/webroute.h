// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/web/webfailure.h"

#include <QByteArray>
#include <QNetworkProxy>
#include <QUrl>

#include <tl/expected.hpp>

/// How a request reaches its server, what it says, and where an answer may send it on to.
namespace ravlin {

/// Which of the system's proxies a request takes.
struct ProxyChoice
{
    bool ignoresProxy = false;             ///< connects directly, even if the system has a proxy
    bool usesProxyForThisComputer = false; ///< uses the proxy even for servers on this computer
};

struct WebRoute
{
    QNetworkProxy proxy = QNetworkProxy(QNetworkProxy::NoProxy); ///< through which the connection leads
    QString host;                                                ///< whom to connect to
    quint16 port = 0;
    bool isEncrypted = false;
    bool hasProxy = false; ///< also when that is the host
    QByteArray head;       ///< of the request
};

/// An unencrypted address is asked of an HTTP proxy itself; any other connection leads through the proxy.
WebRoute routeTo(const QUrl &url, const ProxyChoice &choice);

/// Whether an address is one to fetch from: http or https, with a host and without user and password.
bool isWebAddress(const QUrl &url);

/// The address that a redirect leads to. Fails with BadRedirect, ForeignRedirect or InsecureRedirect.
tl::expected<QUrl, WebFailure> redirectGoal(const QUrl &from, const QByteArray &location);

} // namespace ravlin
