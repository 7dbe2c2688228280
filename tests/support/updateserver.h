// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/webserver.h"

#include <QByteArrayList>
#include <QHash>

#include <optional>

/// A web server for tests that serves files of a new version, and misbehaves on request.
namespace ravlin::test {

enum class Serving
{
    Length,      ///< with the length: not a fault
    Chunked,     ///< in chunks: not a fault
    Unmarked,    ///< without a length; the end of the connection is the end
    Gated,       ///< with the length, but only as many bytes as allow() permits
    CutOff,      ///< closes in the middle of the announced length
    CutChunked,  ///< closes in the middle of the chunks
    CutHead,     ///< closes in the middle of the headers
    Overlong,    ///< sends more than it announced
    HangsUp,     ///< closes at once
    Silence,     ///< never answers
    Stalls,      ///< sends half and then nothing
    Enormous,    ///< announces 3 GB
    Endless,     ///< sends chunks without end
    Redirect,    ///< to Served::goal
    Status,      ///< answers with Served::status and the content as a page
    Garbage,     ///< sends the content instead of HTTP
    BrokenCoding ///< in chunks whose sizes are not numbers
};

struct Served
{
    QByteArray content = {};
    Serving way = Serving::Length;
    QByteArray goal = {};
    QByteArray status = {};
};

class UpdateServer : public WebServer
{
public:
    explicit UpdateServer(Security security = Security::Plain) : WebServer(security) {}

    /// Serves content under a path ("/ravlin/app/ravlin.ver"); all others are not found.
    void serve(const QByteArray &path, const Served &served) { m_served[path] = served; }
    void serveVersionFile(const QByteArray &content, Serving way = Serving::Length);
    /// Serves the checksum of a served file beside it.
    void serveChecksum(const QByteArray &path);
    /// Permits gated content up to that many bytes.
    void allow(qint64 bytes);

    /// The paths requested so far.
    const QByteArrayList &requests() const { return m_requests; }

protected:
    void answer(QSslSocket &socket, const QByteArray &head) override;

private:
    struct Gate
    {
        QPointer<QSslSocket> socket;
        QByteArray rest;
        qint64 sent = 0;
    };

    static std::optional<QByteArray> wholeAnswer(const Served &served);
    void sendAllowed(Gate &gate) const;

    QHash<QByteArray, Served> m_served;
    QByteArrayList m_requests;
    QList<Gate> m_gates;
    qint64 m_allowed = 0;
};

} // namespace ravlin::test
