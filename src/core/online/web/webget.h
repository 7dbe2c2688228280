// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/web/httpanswer.h"
#include "core/online/web/webfailure.h"
#include "core/online/web/webroute.h"

#include <QByteArray>
#include <QSslSocket>
#include <QTimer>
#include <QUrl>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace ravlin {

/// Limits for a fetch, and its use of the proxy.
struct FetchSettings : ProxyChoice
{
    static constexpr std::chrono::milliseconds UsualTimeLimit = std::chrono::seconds(30);

    std::chrono::milliseconds timeLimit = UsualTimeLimit; ///< for the whole answer, redirects included
    std::chrono::milliseconds idleLimit{0};               ///< for each head, and for each KiB of content; 0: no limit
    qint64 sizeLimit = 1024 * 1024;                       ///< bytes
    int redirectLimit = 5;
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
/// failure; so does one that is not whole or not what was asked for (HttpAnswer). Each request is sent once, over a
/// connection of its own. Stores nothing: no cookies, no cache.
class WebGet : public QObject
{
    Q_OBJECT

public:
    explicit WebGet(QObject *parent = nullptr);
    ~WebGet() override;

    void setSettings(const FetchSettings &settings) { m_settings = settings; }
    const FetchSettings &settings() const { return m_settings; }

    /// Starts a fetch. A signal reports its end after this has returned; none comes after cancel() or another get(),
    /// which ends this one.
    void get(const QUrl &url);
    /// Ends the fetch, if there is one, without a signal.
    void cancel();
    bool isBusy() const { return m_socket != nullptr; }

    /// The announced size of the content in bytes, once Answering; -1 if not announced.
    qint64 announcedSize() const { return m_answer.announcedSize(); }
    /// Whether a complete answer can be told from a broken connection, by its size or its encoding.
    bool isEndMarked() const { return m_answer.isEndMarked(); }
    /// Bytes that read() would return now.
    qint64 available() const { return m_content.size(); }
    /// Takes content. What arrives is kept until it is taken here.
    QByteArray read(qint64 size);

Q_SIGNALS:
    void stepped(WebStep step);
    void readable();
    /// Each fetch ends with one of these. A slot can still read() what was not taken.
    void finished();
    void failed(const WebFailure &failure);

private:
    void ask(const QUrl &url);
    void send();
    bool reach(WebStep step);
    void takeBytes();
    bool takeHead();
    void redirect();
    void takeEnd();
    void takeError(QAbstractSocket::SocketError error);
    void fail(WebFailureKind kind, const QString &detail = {});
    void end(const std::function<void()> &tell);
    void end(const WebFailure &failure);

    FetchSettings m_settings;
    QTimer m_timeLimit;
    QTimer m_idleLimit;
    QUrl m_url; ///< as redirected
    WebRoute m_route;
    std::unique_ptr<QSslSocket> m_socket; ///< none when idle
    int m_connections = 0;                ///< so far; tells a socket's last signals from the next one's
    HttpAnswer m_answer;
    QByteArray m_content; ///< not taken yet
    std::optional<WebStep> m_step;
    int m_redirects = 0;
    bool m_isAnswering = false;
    qint64 m_received = 0; ///< bytes of content
    qint64 m_noticed = 0;  ///< of which were there when the idle limit was last put off
};

} // namespace ravlin
