// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/webserver.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

/// A CD database over HTTP for tests, on its own port of this computer, served by the event loop of the thread that
/// made it. Has a few discs, speaks protocol levels 1, 5 and 6, records its requests, and misbehaves on request. Shares
/// no code with the program.
namespace ravlin::test {

/// A disc of the database.
struct ServedDisc
{
    QByteArray category;
    std::vector<qint64> marks; ///< starts of the tracks and the end of the last one, in frames
    QString artist;
    QString album;
    QByteArray year;
    QString genre;
    QString remark;
    QStringList titles;

    QByteArray discId() const;
    /// The marks as the program's offset text.
    QString offsetText() const;
};

/// What the server does wrong.
enum class Fault
{
    None,
    Silence,          ///< never answers
    HangsUp,          ///< closes at once
    Garbage,          ///< random bytes instead of HTTP
    WebPage,          ///< an HTML page
    Zeros,            ///< an answer of zeros
    HalfSent,         ///< closes in the middle of the announced length
    CutList,          ///< ends before the line with the full stop, with a correct length
    Stalls,           ///< sends half and then nothing
    TooLong,          ///< announces more than 1 MB
    Endless,          ///< sends without end and announces no length
    RedirectLoop,     ///< redirects to itself forever
    RedirectToFile,   ///< redirects to a file of this computer
    RedirectInsecure, ///< redirects from https to http
    RedirectOnce,     ///< redirects to itself once: not a fault
    HttpRefused,      ///< HTTP 503
    HttpLogin,        ///< HTTP 401
    Compressed,       ///< gzip, though not requested
    Code401,
    Code402,
    Code403,
    Code409,
    Code500,
    Code530,
};

/// Returns the fault of that name ("Silence"), for programs.
std::optional<Fault> faultFromName(const QByteArray &name);

class CddbServer
{
    Q_DISABLE_COPY_MOVE(CddbServer)

public:
    using Security = WebServer::Security;

    explicit CddbServer(Security security = Security::Plain);
    ~CddbServer();

    static const std::vector<ServedDisc> &discs();
    /// The encrypted server's certificate (PEM, for 127.0.0.1 and localhost).
    static QByteArray certificate();

    quint16 port() const;
    QString hostAndPort() const; ///< "127.0.0.1:1234"
    QString url() const;         ///< with scheme and path

    /// Refuses requests of a higher level with 501. At first 6.
    void setNewestLevel(int level);
    /// Which commands it knows besides query and read. At first both.
    void setKnowsSearch(bool knows);
    void setKnowsAlbum(bool knows);
    /// Answers in Latin-1 at level 6, too.
    void setAlwaysLatin1(bool always);
    /// For questions whose command begins with these words ("cddb read"); for all if empty.
    void setFault(Fault fault, const QByteArray &command = {});

    /// The addresses requested so far, as sent.
    QByteArrayList requests() const;
    /// The commands so far, decoded: "cddb query 92093e0a 10 ...", "search".
    QByteArrayList commands() const;
    int openConnections() const;
    /// Called with each request's address.
    void setListener(std::function<void(const QByteArray &target)> listener);

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace ravlin::test
