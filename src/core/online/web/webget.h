// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/web/webfailure.h"

#include <QByteArray>
#include <QNetworkAccessManager>
#include <QTimer>
#include <QUrl>

#include <chrono>
#include <functional>

class QNetworkReply;

namespace ravlin {

/// Limits for a fetch, and its use of the proxy.
struct FetchSettings
{
    static constexpr std::chrono::milliseconds UsualTimeLimit = std::chrono::seconds(30);

    std::chrono::milliseconds timeLimit = UsualTimeLimit; ///< for the whole answer, redirects included
    std::chrono::milliseconds idleLimit{0};               ///< without any bytes; 0: no limit
    qint64 sizeLimit = 1024 * 1024;                       ///< bytes
    int redirectLimit = 5;
    bool ignoresProxy = false;             ///< connects directly, even if the system has a proxy
    bool usesProxyForThisComputer = false; ///< uses the proxy even for servers on this computer
};

enum class WebStep
{
    LookingUp,
    Connecting,
    RequestSent,
    Answering, ///< the headers are there, with a status that promises content
};

/// Fetches over HTTP or HTTPS, one address at a time, on the event loop of its thread. An answer that is late, too
/// long, from a less secure address than the one requested, or from a server that cannot prove its identity becomes a
/// failure. Stores nothing: no cookies, no cache.
///
/// The owner takes the content in pieces with read(). Except for a small buffer, what it does not take is not fetched.
class WebGet : public QObject
{
    Q_OBJECT

public:
    explicit WebGet(QObject *parent = nullptr);
    ~WebGet() override;

    void setSettings(const FetchSettings &settings);
    const FetchSettings &settings() const { return m_settings; }

    /// Starts a fetch. A signal reports its end after this has returned; none comes after cancel() or another get(),
    /// which ends this one.
    void get(const QUrl &url);
    /// Ends the fetch, if there is one, without a signal.
    void cancel();
    bool isBusy() const { return m_reply != nullptr; }

    /// The announced size of the content in bytes, once Answering; -1 if not announced.
    qint64 announcedSize() const;
    /// Whether a complete answer can be told from a broken connection, by its size or its encoding.
    bool isEndMarked() const;
    /// Bytes that read() would return now.
    qint64 available() const;
    QByteArray read(qint64 size);

Q_SIGNALS:
    void stepped(WebStep step);
    void readable();
    /// Each fetch ends with one of these. A slot can still read() what was not taken.
    void finished();
    void failed(const WebFailure &failure);

private:
    void tellSent();
    void takeHeaders();
    void tellReadable();
    void finish();
    void fail(WebFailureKind kind, const QString &detail = {});
    void failSoon(const WebFailure &failure);
    void end(const std::function<void()> &tell);
    void end(const WebFailure &failure);
    WebFailure failureOf(const QNetworkReply &reply) const;

    FetchSettings m_settings;
    QNetworkAccessManager m_network;
    QTimer m_timeLimit;
    QTimer m_idleLimit;
    QNetworkReply *m_reply = nullptr;
    bool m_isRefused = false; ///< by its headers: there is no content
    bool m_isSent = false;
    bool m_isAnswering = false;
    qint64 m_taken = 0; ///< bytes
    QString m_certificateTrouble;
};

} // namespace ravlin
