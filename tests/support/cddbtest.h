#pragma once

#include <QSslCertificate>
#include <QSslConfiguration>
#include <QtGlobal>

#include <chrono>

/// What tests that talk to a CD database have in common.
namespace ravlin::test {

/// Milliseconds to wait for what takes moments: machines may be slow and busy.
inline constexpr int PatientWait = 60'000;

/// Nothing in the environment may send a test's questions elsewhere.
inline void leaveProxiesOut()
{
    for (const char *name : {"http_proxy", "https_proxy", "all_proxy", "no_proxy", "HTTP_PROXY", "HTTPS_PROXY",
             "ALL_PROXY", "NO_PROXY", "XDG_CURRENT_DESKTOP", "DESKTOP_SESSION", "KDE_FULL_SESSION"})
        qunsetenv(name);
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
