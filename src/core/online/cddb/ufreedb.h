// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/cddb/cddbprotocol.h"
#include "core/online/web/webtext.h"

#include <QObject>
#include <QString>

#include <optional>
#include <vector>

namespace ravlin {

/// Looks up discs in a CD database by a table of contents or by a text.
///
/// Query(), Search() and take() return at once and work on the event loop of the object's thread. Each ends with
/// exactly one of the signals, after the call has returned; another call or cancel() ends it without one. The last
/// record stays until a new one is read.
class uFREEDB : public QObject
{
    Q_OBJECT

public:
    explicit uFREEDB(QObject *parent = nullptr);

    /// Options about the system's proxy, both off at first: ignore it, and use it even for servers on this computer.
    void setIgnoresProxy(bool ignores);
    void setUsesProxyForThisComputer(bool uses);
    /// Seconds to wait for an answer; 0, the default, means 30.
    void setTimeLimit(int seconds);
    void setServer(const QString &server); ///< "host", "host:port" or a URL
    void setMail(const QString &mail);     ///< the user's address, which servers ask for
    void setClientName(const QString &name);
    void setClientVersion(const QString &version);

    /// Looks for the disc with this offset text and, if there is none, for the other one. A single exact match is read
    /// at once.
    void Query(const QString &offsetText, const QString &otherOffsetText = {});
    void setSearchText(const QString &text);
    /// Looks for discs by the search text: "artist / album", "artist - album", or an artist or album alone. A single
    /// match is read at once. Without a text it does nothing and emits no signal.
    void Search();
    /// Reads a match, by its index from 0. Does nothing for an index out of range.
    void take(int match);
    void cancel();
    bool isBusy() const { return m_isBusy; }

    /// Matches of the last Query() or Search().
    const std::vector<cddb::Match> &matches() const { return m_matches; }
    /// The number of matches.
    int result() const { return int(m_matches.size()); }

    /// The last disc that was read. A track's index counts from 0 and must be less than trackCount().
    const DiscRecord &record() const { return m_record; }
    int trackCount() const { return int(m_record.tracks.size()); }
    const DiscTrack &track(int index) const { return m_record.tracks.at(size_t(index)); }
    /// The table of contents of the last Query(): of the two that it tried, the last one. If it found something, that
    /// of the disc.
    const std::optional<DiscContents> &contents() const { return m_contents; }

Q_SIGNALS:
    /// No disc was found: result() is 0.
    void notFound();
    /// There are several matches, or an inexact one: take() one of them.
    void choiceOffered();
    /// record() is the disc.
    void recordRead();
    void failed(const ravlin::LookupFailure &failure);

private:
    using Matches = std::vector<cddb::Match>;
    using Question = std::function<QUrl(const cddb::Questions &)>;
    using Answered = std::function<void(const LookupResult<QByteArray> &)>;

    void begin();
    void ask(const Question &question, const Answered &answered);
    void query(const DiscContents &disc, const QString &otherOffsetText);
    void search(const std::vector<cddb::SearchWords> &attempts);
    void askForAlbum(const std::vector<cddb::SearchWords> &attempts);
    void read(const cddb::Match &match);
    bool goDownALevel(const LookupFailure &failure);
    void offer(Matches matches, bool takesTheFirst);
    void endSoon(const LookupFailure &failure);
    void fail(const LookupFailure &failure);

    WebText m_web;
    QString m_server;
    QString m_mail;
    QString m_clientName;
    QString m_clientVersion;
    QString m_searchText;
    int m_level = cddb::NewestLevel; ///< that the server understands, as far as known
    bool m_isBusy = false;
    quint64 m_operation = 0; ///< number of the current one
    std::vector<cddb::Match> m_matches;
    DiscRecord m_record;
    std::optional<DiscContents> m_contents;
};

} // namespace ravlin
