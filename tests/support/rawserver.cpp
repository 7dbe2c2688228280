// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/rawserver.h"

#include <QTcpServer>
#include <QTcpSocket>

using namespace Qt::StringLiterals;

namespace ravlin::test {

namespace {

constexpr int Patience = 60'000; ///< milliseconds
constexpr int Tick = 10;

} // namespace

RawServer::RawServer() : m_thread(QThread::create([this] { serve(); }))
{
    m_thread->start();
    while (m_port == 0)
        QThread::msleep(1);
}

RawServer::~RawServer()
{
    m_isStopped = true;
    m_thread->wait();
}

void RawServer::setAnswer(const QByteArray &path, const QByteArray &bytes)
{
    const std::lock_guard lock(m_mutex);
    m_answers[path] = bytes;
}

void RawServer::setDrip(qsizetype bytes, int milliseconds)
{
    const std::lock_guard lock(m_mutex);
    m_drip = bytes;
    m_pause = milliseconds;
}

QString RawServer::origin() const
{
    return u"http://127.0.0.1:%1"_s.arg(m_port.load());
}

QByteArrayList RawServer::requests() const
{
    const std::lock_guard lock(m_mutex);
    return m_requests;
}

QByteArray RawServer::answerTo(const QByteArray &requestLine)
{
    const std::lock_guard lock(m_mutex);
    m_requests << requestLine;
    const QByteArray path = requestLine.split(' ').value(1);
    return m_answers.contains(path) ? m_answers[path] : m_answers[{}];
}

void RawServer::serve()
{
    QTcpServer listener;
    if (!listener.listen(QHostAddress::LocalHost))
        qFatal("no port to listen on: %s", qPrintable(listener.errorString()));
    m_port = listener.serverPort();
    while (!m_isStopped) {
        if (!listener.waitForNewConnection(Tick))
            continue;
        const std::unique_ptr<QTcpSocket> socket(listener.nextPendingConnection());
        QByteArray head;
        while (!head.contains("\r\n\r\n") && !m_isStopped && socket->state() == QTcpSocket::ConnectedState) {
            socket->waitForReadyRead(Tick);
            head += socket->readAll();
        }
        if (!head.contains("\r\n\r\n"))
            continue;
        const QByteArray answer = answerTo(head.left(head.indexOf('\r')));
        const qsizetype step = m_drip > 0 ? m_drip : answer.size();
        for (qsizetype sent = 0; sent < answer.size() && !m_isStopped; sent += step) {
            socket->write(answer.mid(sent, step));
            while (socket->bytesToWrite() > 0 && !m_isStopped && socket->waitForBytesWritten(Patience)) {
            }
            if (socket->state() != QTcpSocket::ConnectedState)
                break;
            if (m_drip > 0)
                QThread::msleep(quint32(m_pause));
        }
        socket->disconnectFromHost();
    }
}

} // namespace ravlin::test
