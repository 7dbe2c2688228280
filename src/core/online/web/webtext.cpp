// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/web/webtext.h"

#include <QStringDecoder>

#include <array>
#include <utility>

namespace ravlin {

namespace {

/// Code page 1252 at 0x80 to 0x9F. Where it has nothing, the Latin-1 control character stays.
constexpr std::array<char16_t, 32> Windows1252{0x20AC, 0x81, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6,
    0x2030, 0x0160, 0x2039, 0x0152, 0x8D, 0x017D, 0x8F, 0x90, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D, 0x017E, 0x0178};

QString fromWindows1252(QByteArrayView bytes)
{
    QString text = QString::fromLatin1(bytes);
    for (QChar &character : text) {
        const char16_t code = character.unicode();
        if (code >= 0x80 && code < 0xA0)
            character = Windows1252[code - 0x80U];
    }
    return text;
}

} // namespace

QString decodedText(QByteArrayView bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder(bytes);
    return decoder.hasError() ? fromWindows1252(bytes) : text;
}

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
