// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/web/webtext.h"

#include <utility>

namespace ravlin {

WebText::WebText(QObject *parent) : QObject(parent)
{
    connect(&m_web, &WebGet::stepped, this, &WebText::stepped);
    connect(&m_web, &WebGet::readable, this, &WebText::takeBytes);
    connect(&m_web, &WebGet::finished, this, [this] { end(nullptr); });
    connect(&m_web, &WebGet::failed, this, [this](const WebFailure &failure) { end(&failure); });
}

void WebText::get(const QUrl &url, Done done)
{
    cancel();
    m_done = std::move(done);
    m_web.get(url);
}

void WebText::cancel()
{
    m_web.cancel();
    m_done = nullptr;
    m_body.clear();
}

void WebText::takeBytes()
{
    m_body += m_web.read(m_web.available());
}

void WebText::end(const WebFailure *failure)
{
    takeBytes();
    const Done done = std::move(m_done);
    const QByteArray body = m_body;
    cancel();
    if (!done)
        return;
    if (failure == nullptr)
        done(body);
    else
        done(tl::unexpected(*failure));
}

} // namespace ravlin
