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

/// How an answer is fetched, and what is too much.
struct FetchSettings
{
    static constexpr std::chrono::milliseconds UsualTimeLimit = std::chrono::seconds(30);

    std::chrono::milliseconds timeLimit = UsualTimeLimit; ///< for the whole answer with all redirects
    std::chrono::milliseconds idleLimit{0};               ///< for a time without a sign of life; 0: none of its own
    qint64 sizeLimit = 1024 * 1024;                       ///< bytes of an answer
    int redirectLimit = 5;
    bool ignoresProxy = false;             ///< connects directly, whatever proxy the system has
    bool usesProxyForThisComputer = false; ///< servers on this computer too are asked by way of the system's proxy
};

/// Where a fetch has got to.
enum class WebStep
{
    LookingUp,
    Connecting,
    RequestSent,
    Answering, ///< the answer's headers are there, with a status that promises content
};

/// Fetches one thing after the other over HTTP or HTTPS, on the event loop of the thread that it lives in, and keeps
/// the network from doing harm: an answer that is late, too long, from an address that is not as secure as the one
/// asked for, or from a server that cannot prove who it is becomes a failure. Nothing is stored: no cookies, no cache.
///
/// The owner takes the content in pieces with read(); what is not taken is not fetched either, but for a small buffer.
class WebGet : public QObject
{
    Q_OBJECT

public:
    explicit WebGet(QObject *parent = nullptr);
    ~WebGet() override;

    void setSettings(const FetchSettings &settings);
    const FetchSettings &settings() const { return m_settings; }

    /// Begins; the end is told by a signal, later than this returns, and not at all after cancel() or another get(),
    /// which ends this one.
    void get(const QUrl &url);
    /// Ends the fetch, if there is one, without a signal.
    void cancel();
    bool isBusy() const { return m_reply != nullptr; }

    /// The content's size in bytes as the server announced it, once it is Answering; -1 where it did not.
    qint64 announcedSize() const;
    /// Whether the end of the content can be told from a connection that broke: by its size or by its encoding.
    bool isEndMarked() const;
    /// Bytes of the content that read() would give at once.
    qint64 available() const;
    QByteArray read(qint64 size);

Q_SIGNALS:
    void stepped(WebStep step);
    /// There is content to read.
    void readable();
    /// One of these two, once for each fetch. What read() did not take yet can be taken from a slot and no later.
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
    bool m_isRefused = false; ///< by its headers: the content is none
    bool m_isSent = false;
    bool m_isAnswering = false;
    qint64 m_taken = 0; ///< bytes of the content
    QString m_certificateTrouble;
};

} // namespace ravlin
