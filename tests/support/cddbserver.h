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

/// A CD database over HTTP for tests, on a port of its own of this computer, in the thread that made it: its events are
/// dealt with by that thread's event loop. It has a few discs, speaks the protocol's levels 1, 5 and 6, keeps what it
/// was asked, and misbehaves on request. It shares no code with the program.
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

/// What goes wrong.
enum class Fault
{
    None,
    Silence,          ///< never answers
    HangsUp,          ///< closes at once
    Garbage,          ///< random bytes instead of HTTP
    WebPage,          ///< an HTML page
    Zeros,            ///< an answer of zeros
    HalfSent,         ///< closes in the middle of the announced length
    CutList,          ///< ends before the line with the full stop, in good order
    Stalls,           ///< sends half and then nothing
    TooLong,          ///< announces more than 1 MB
    Endless,          ///< sends without end and announces no length
    RedirectLoop,     ///< sends to itself for ever
    RedirectToFile,   ///< sends to a file of this computer
    RedirectInsecure, ///< sends from https to http
    RedirectOnce,     ///< sends to itself once: no fault
    HttpRefused,      ///< HTTP 503
    HttpLogin,        ///< HTTP 401
    Compressed,       ///< gzip, though not asked for
    Code401,
    Code402,
    Code403,
    Code409,
    Code500,
    Code530,
};

/// The fault of that name ("Silence"), for programs.
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

    /// A request of a higher level is refused with 501. 6 at first.
    void setNewestLevel(int level);
    /// Below: what it knows besides query and read. Both at first.
    void setKnowsSearch(bool knows);
    void setKnowsAlbum(bool knows);
    /// Answers in Latin-1 at level 6, too.
    void setAlwaysLatin1(bool always);
    /// For questions whose command begins with these words ("cddb read"); without words for all.
    void setFault(Fault fault, const QByteArray &command = {});

    /// The requests' addresses so far, as they were sent.
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
