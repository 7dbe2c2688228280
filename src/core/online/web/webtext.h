// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/web/webget.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <tl/expected.hpp>

#include <functional>

namespace ravlin {

/// Text as servers send it: UTF-8 or else Windows-1252, which is Latin-1 with quotes and dashes in the place of control
/// characters.
QString decodedText(QByteArrayView bytes);

using WebAnswer = tl::expected<QByteArray, WebFailure>;

/// Fetches one answer after the other as a whole, within the limits of WebGet.
class WebText : public QObject
{
    Q_OBJECT

public:
    using Done = std::function<void(const WebAnswer &)>;

    explicit WebText(QObject *parent = nullptr);

    void setSettings(const FetchSettings &settings) { m_web.setSettings(settings); }
    const FetchSettings &settings() const { return m_web.settings(); }

    /// Calls done once with the answer's body or what went wrong, later than this returns; not at all after cancel()
    /// or another get(), which ends this one.
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
