// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/cddb/cddbprotocol.h"
#include "core/online/web/webtext.h"

#include <QObject>
#include <QString>

#include <optional>
#include <vector>

namespace ravlin {

/// Looks up discs in a CD database: by a table of contents or by a text.
///
/// Query() and Search() return at once and work on the event loop of the thread that the object lives in. Each ends
/// with exactly one of the signals, later than the call returns; another one, take() or cancel() ends it without. What
/// was read stays until a new record was read.
class uFREEDB : public QObject
{
    Q_OBJECT

public:
    explicit uFREEDB(QObject *parent = nullptr);

    /// The two on-off options about the system's proxy, both off at first: whether it is left out altogether, and
    /// whether it is asked for servers on this computer, too.
    void setIgnoresProxy(bool ignores);
    void setUsesProxyForThisComputer(bool uses);
    /// The time for one answer in seconds; 0, as at first, for the usual 30.
    void setTimeLimit(int seconds);
    void setServer(const QString &server); ///< "host", "host:port" or a URL
    void setMail(const QString &mail);     ///< the user's address: servers want to be told who asks
    void setClientName(const QString &name);
    void setClientVersion(const QString &version);

    /// Looks for the disc with this offset text and, if there is none, for that with the other one. One exact match is
    /// read at once.
    void Query(const QString &offsetText, const QString &otherOffsetText = {});
    void setSearchText(const QString &text);
    /// Looks for discs by the search text: "artist / album", "artist - album", or an artist or album alone. A single
    /// match is read at once. Without a text nothing happens, and no signal comes.
    void Search();
    /// Reads one of the matches, the index counting from 0. Nothing happens for an index beyond them.
    void take(int match);
    void cancel();
    bool isBusy() const { return m_isBusy; }

    /// What the last Query() or Search() found.
    const std::vector<cddb::Match> &matches() const { return m_matches; }
    /// The number of matches: 0 when no disc was found.
    int result() const { return int(m_matches.size()); }

    /// The disc read last. Its tracks are as many as titles; a track's index counts from 0 and must be below their
    /// number.
    const DiscRecord &record() const { return m_record; }
    int trackCount() const { return int(m_record.tracks.size()); }
    const DiscTrack &track(int index) const { return m_record.tracks.at(size_t(index)); }
    /// The table of contents that the last Query() asked for last: where it found something, that of the disc.
    const std::optional<DiscContents> &contents() const { return m_contents; }

Q_SIGNALS:
    /// No disc: result() is 0.
    void notFound();
    /// There are several matches, or one that is not exact: take() one of them.
    void choiceOffered();
    /// record() is the disc that was looked for.
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
    int m_level = cddb::NewestLevel; ///< at which the server understands us, as far as we know
    bool m_isBusy = false;
    quint64 m_operation = 0; ///< number of the one under way
    std::vector<cddb::Match> m_matches;
    DiscRecord m_record;
    std::optional<DiscContents> m_contents;
};

} // namespace ravlin
