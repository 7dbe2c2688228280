#pragma once

#include "online/lookupfailure.h"

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
    qint64 sizeLimit = 1024 * 1024;                       ///< bytes of an answer
    int redirectLimit = 5;
    bool ignoresProxy = false;             ///< connects directly, whatever proxy the system has
    bool usesProxyForThisComputer = false; ///< servers on this computer too are asked by way of the system's proxy
};

/// Fetches one answer after the other over HTTP or HTTPS, on the event loop of the thread that it lives in, and keeps
/// the network from doing harm: an answer that is late, too long, from an address that is not as secure as the one
/// asked for, or from a server that cannot prove who it is becomes a failure. Nothing is stored: no cookies, no cache.
class CddbFetch : public QObject
{
    Q_OBJECT

public:
    using Done = std::function<void(const LookupResult<QByteArray> &)>;

    explicit CddbFetch(QObject *parent = nullptr);
    ~CddbFetch() override;

    void setSettings(const FetchSettings &settings);
    const FetchSettings &settings() const { return m_settings; }

    /// Calls done once with the answer's body or what went wrong, later than this returns; not at all after cancel()
    /// or another get(), which ends this one.
    void get(const QUrl &url, Done done);
    /// Ends the fetch, if there is one.
    void cancel();
    bool isBusy() const { return m_reply != nullptr; }

private:
    void takeHeaders();
    void takeBytes();
    void finish();
    void end(LookupFailureKind kind, const QString &detail = {});
    void end(const LookupResult<QByteArray> &result);
    LookupFailure failureOf(const QNetworkReply &reply) const;

    FetchSettings m_settings;
    QNetworkAccessManager m_network;
    QTimer m_timeLimit;
    QNetworkReply *m_reply = nullptr;
    QByteArray m_body;
    QString m_certificateTrouble;
    Done m_done;
};

} // namespace ravlin
