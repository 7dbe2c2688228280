#include "online/cddbfetch.h"

namespace ravlin {

CddbFetch::CddbFetch(QObject *parent) : QObject(parent)
{
    connect(&m_web, &WebGet::readable, this, &CddbFetch::takeBytes);
    connect(&m_web, &WebGet::finished, this, [this] { end(nullptr); });
    connect(&m_web, &WebGet::failed, this, [this](const WebFailure &failure) { end(&failure); });
}

void CddbFetch::get(const QUrl &url, Done done)
{
    cancel();
    m_done = std::move(done);
    m_web.get(url);
}

void CddbFetch::cancel()
{
    m_web.cancel();
    m_done = nullptr;
    m_body.clear();
}

void CddbFetch::takeBytes()
{
    m_body += m_web.read(m_web.available());
}

void CddbFetch::end(const WebFailure *failure)
{
    takeBytes();
    const Done done = std::move(m_done);
    const QByteArray body = m_body;
    cancel();
    if (!done)
        return;
    if (failure == nullptr)
        done(LookupResult<QByteArray>(body));
    else
        done(tl::unexpected(lookupFailureOf(*failure)));
}

} // namespace ravlin
