// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/cddb/ufreedb.h"

#include <utility>

namespace ravlin {

uFREEDB::uFREEDB(QObject *parent) : QObject(parent) {}

void uFREEDB::setIgnoresProxy(bool ignores)
{
    FetchSettings settings = m_web.settings();
    settings.ignoresProxy = ignores;
    m_web.setSettings(settings);
}

void uFREEDB::setUsesProxyForThisComputer(bool uses)
{
    FetchSettings settings = m_web.settings();
    settings.usesProxyForThisComputer = uses;
    m_web.setSettings(settings);
}

void uFREEDB::setTimeLimit(int seconds)
{
    FetchSettings settings = m_web.settings();
    settings.timeLimit = seconds > 0 ? std::chrono::seconds(seconds) : FetchSettings::UsualTimeLimit;
    m_web.setSettings(settings);
}

void uFREEDB::setServer(const QString &server)
{
    m_server = server;
    m_level = cddb::NewestLevel;
}

void uFREEDB::setMail(const QString &mail)
{
    m_mail = mail;
}

void uFREEDB::setClientName(const QString &name)
{
    m_clientName = name;
}

void uFREEDB::setClientVersion(const QString &version)
{
    m_clientVersion = version;
}

void uFREEDB::setSearchText(const QString &text)
{
    m_searchText = text;
}

void uFREEDB::cancel()
{
    m_web.cancel();
    m_isBusy = false;
    ++m_operation;
}

void uFREEDB::begin()
{
    cancel();
    m_isBusy = true;
}

void uFREEDB::Query(const QString &offsetText, const QString &otherOffsetText)
{
    begin();
    m_matches.clear();
    m_contents.reset();
    const Result<DiscContents> disc = DiscContents::parse(offsetText);
    if (disc)
        query(*disc, otherOffsetText);
    else
        endSoon({LookupFailureKind::BadContents, disc.error().detail});
}

void uFREEDB::Search()
{
    const cddb::SearchWords words = cddb::SearchWords::of(m_searchText);
    if (words.isEmpty())
        return;
    begin();
    m_matches.clear();
    std::vector<cddb::SearchWords> attempts{words};
    if (words.album.isEmpty())
        attempts.push_back({{}, words.artist});
    search(attempts);
}

void uFREEDB::take(int match)
{
    if (match < 0 || match >= result())
        return;
    begin();
    read(m_matches[size_t(match)]);
}

void uFREEDB::ask(const Question &question, const Answered &answered)
{
    const LookupResult<QUrl> server = cddb::serverUrl(m_server);
    if (!server) {
        endSoon(server.error());
        return;
    }
    const cddb::Questions questions(*server, cddb::Hello::of(m_mail, m_clientName, m_clientVersion), m_level);
    m_web.get(question(questions),
        [answered](const WebAnswer &answer) { answered(LookupResult<QByteArray>(answer.map_error(lookupFailureOf))); });
}

void uFREEDB::query(const DiscContents &disc, const QString &otherOffsetText)
{
    m_contents = disc;
    const auto question = [&disc](const cddb::Questions &questions) { return questions.query(disc); };
    ask(question, [this, disc, otherOffsetText](const LookupResult<QByteArray> &answer) {
        LookupResult<Matches> matches = answer.and_then(cddb::readQueryAnswer);
        if (!matches) {
            if (goDownALevel(matches.error()))
                query(disc, otherOffsetText);
            else
                fail(matches.error());
            return;
        }
        const Result<DiscContents> otherDisc = DiscContents::parse(otherOffsetText);
        if (matches->empty() && otherDisc) {
            query(*otherDisc, {});
            return;
        }
        const bool isCertain = matches->size() == 1 && matches->front().isExact;
        offer(*std::move(matches), isCertain);
    });
}

void uFREEDB::search(const std::vector<cddb::SearchWords> &attempts)
{
    const auto question = [&attempts](const cddb::Questions &questions) { return questions.search(attempts.front()); };
    ask(question, [this, attempts](const LookupResult<QByteArray> &answer) {
        LookupResult<Matches> matches = answer.and_then(cddb::readSearchAnswer);
        if (!matches) {
            const LookupFailureKind kind = matches.error().kind;
            if (kind == LookupFailureKind::Refused || kind == LookupFailureKind::HttpStatus)
                askForAlbum(attempts);
            else
                fail(matches.error());
            return;
        }
        if (matches->empty() && attempts.size() > 1) {
            search({attempts.begin() + 1, attempts.end()});
            return;
        }
        const bool isOnlyOne = matches->size() == 1;
        offer(*std::move(matches), isOnlyOne);
    });
}

void uFREEDB::askForAlbum(const std::vector<cddb::SearchWords> &attempts)
{
    const auto question = [&attempts](const cddb::Questions &questions) { return questions.album(attempts.front()); };
    ask(question, [this, attempts](const LookupResult<QByteArray> &answer) {
        LookupResult<Matches> matches = answer.and_then(cddb::readSearchAnswer);
        if (matches) {
            const bool isOnlyOne = matches->size() == 1;
            offer(*std::move(matches), isOnlyOne);
        } else if (goDownALevel(matches.error())) {
            search(attempts);
        } else {
            fail(matches.error());
        }
    });
}

void uFREEDB::read(const cddb::Match &match)
{
    const auto question = [&match](const cddb::Questions &questions) { return questions.read(match); };
    ask(question, [this, match](const LookupResult<QByteArray> &answer) {
        LookupResult<DiscRecord> record = answer.and_then(cddb::readRecordAnswer);
        if (record) {
            m_record = *std::move(record);
            m_isBusy = false;
            Q_EMIT recordRead();
        } else if (goDownALevel(record.error())) {
            read(match);
        } else {
            fail(record.error());
        }
    });
}

bool uFREEDB::goDownALevel(const LookupFailure &failure)
{
    if (!cddb::mayUnderstandOlderLevel(failure) || m_level == cddb::OldestLevel)
        return false;
    m_level = m_level > cddb::LatinLevel ? cddb::LatinLevel : cddb::OldestLevel;
    return true;
}

void uFREEDB::offer(Matches matches, bool takesTheFirst)
{
    m_matches = std::move(matches);
    if (takesTheFirst) {
        read(m_matches.front());
        return;
    }
    m_isBusy = false;
    if (m_matches.empty())
        Q_EMIT notFound();
    else
        Q_EMIT choiceOffered();
}

void uFREEDB::endSoon(const LookupFailure &failure)
{
    const auto end = [this, failure, operation = m_operation] {
        if (operation == m_operation)
            fail(failure);
    };
    QMetaObject::invokeMethod(this, end, Qt::QueuedConnection);
}

void uFREEDB::fail(const LookupFailure &failure)
{
    if (failure.kind == LookupFailureKind::Refused)
        m_level = cddb::NewestLevel; // the level was not the reason
    m_isBusy = false;
    Q_EMIT failed(failure);
}

} // namespace ravlin
