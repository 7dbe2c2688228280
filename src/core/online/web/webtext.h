// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/web/webget.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <tl/expected.hpp>

#include <functional>

namespace ravlin {

/// Decodes text from a server: UTF-8, or else Windows-1252 (Latin-1 with quotes and dashes instead of the C1 controls).
QString decodedText(QByteArrayView bytes);

using WebAnswer = tl::expected<QByteArray, WebFailure>;

/// Fetches whole answers, one at a time, within the limits of WebGet.
class WebText : public QObject
{
    Q_OBJECT

public:
    using Done = std::function<void(const WebAnswer &)>;

    explicit WebText(QObject *parent = nullptr);

    void setSettings(const FetchSettings &settings) { m_web.setSettings(settings); }
    const FetchSettings &settings() const { return m_web.settings(); }

    /// Calls done once, after this has returned, with the body or the failure. Does not call it after cancel() or
    /// another get(), which ends this one.
    void get(const QUrl &url, Done done);
    /// Ends the fetch, if there is one.
    void cancel();
    bool isBusy() const { return m_web.isBusy(); }

Q_SIGNALS:
    void stepped(WebStep step);

private:
    void takeBytes();
    void end(const WebFailure *failure);

    WebGet m_web;
    QByteArray m_body;
    Done m_done;
};

} // namespace ravlin
