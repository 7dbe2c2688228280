// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QHash>
#include <QString>
#include <QThread>

#include <atomic>
#include <memory>
#include <mutex>

/// A server on a thread of its own that answers each request with given bytes as fast as it can and closes at once: the
/// end of the connection reaches the client together with the answer. Shares no code with the program.
namespace ravlin::test {

class RawServer
{
    Q_DISABLE_COPY_MOVE(RawServer)

public:
    RawServer();
    ~RawServer();

    /// The bytes to answer with where no others are set for the path.
    void setAnswer(const QByteArray &bytes) { setAnswer({}, bytes); }
    void setAnswer(const QByteArray &path, const QByteArray &bytes);
    /// How long to wait after each that many bytes; without it everything is sent at once.
    void setDrip(qsizetype bytes, int milliseconds);

    QString origin() const; ///< "http://127.0.0.1:1234"
    /// The first lines of the requests so far.
    QByteArrayList requests() const;

private:
    void serve();
    QByteArray answerTo(const QByteArray &requestLine);

    mutable std::mutex m_mutex;
    QHash<QByteArray, QByteArray> m_answers;
    QByteArrayList m_requests;
    qsizetype m_drip = 0;
    int m_pause = 0;
    std::atomic<quint16> m_port = 0;
    std::atomic<bool> m_isStopped = false;
    std::unique_ptr<QThread> m_thread;
};

} // namespace ravlin::test
