// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/cddb/disccontents.h"

#include <QByteArray>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QTest>
#include <QtGlobal>

/// Shared by the tests that use the network.
namespace ravlin::test {

/// Milliseconds to wait at most: machines may be slow and busy.
inline constexpr int PatientWait = 60'000;

/// Handles events until the condition holds, and checks it every 10 ms: QTRY_VERIFY checks every 50 ms. Returns whether
/// the condition holds; gives up after PatientWait.
template <typename Condition>
bool waitUntil(Condition condition)
{
    return QTest::qWaitFor(condition, PatientWait);
}

/// Removes what could send a test's questions elsewhere.
inline void leaveProxiesOut()
{
    for (const char *name : {"http_proxy", "https_proxy", "all_proxy", "no_proxy", "HTTP_PROXY", "HTTPS_PROXY",
             "ALL_PROXY", "NO_PROXY", "XDG_CURRENT_DESKTOP", "DESKTOP_SESSION", "KDE_FULL_SESSION"})
        qunsetenv(name);
}

/// An MP3 file (MPEG-2.5 layer III, 8 kbit/s, 8,000 Hz, mono) that plays for that many CD frames and states what its
/// encoder added.
inline QByteArray cdTrack(qint64 frames)
{
    constexpr int Rate = 8000;
    constexpr int Samples = 576;
    constexpr int Size = 72;
    const QByteArray header("\xff\xe3\x18\xc4");
    const qint64 samples = frames * Rate / FramesPerSecond;
    const qint64 count = (samples + Samples - 1) / Samples;
    const qint64 padding = count * Samples - samples;
    QByteArray info = header + QByteArray(9, '\0') + "Info" + QByteArray(4, '\0') + "LAME3.100" + QByteArray(13, '\0') +
                      char(padding >> 8) + char(padding & 0xFF);
    info.append(Size - info.size(), '\0');
    return info + (header + QByteArray(Size - header.size(), '\0')).repeated(count);
}

/// Trusts a certificate while it lives.
class TrustedCertificate
{
    Q_DISABLE_COPY_MOVE(TrustedCertificate)

public:
    explicit TrustedCertificate(const QByteArray &pem) : m_before(QSslConfiguration::defaultConfiguration())
    {
        QSslConfiguration trusting = m_before;
        trusting.addCaCertificate(QSslCertificate(pem));
        QSslConfiguration::setDefaultConfiguration(trusting);
    }
    ~TrustedCertificate() { QSslConfiguration::setDefaultConfiguration(m_before); }

private:
    QSslConfiguration m_before;
};

} // namespace ravlin::test
