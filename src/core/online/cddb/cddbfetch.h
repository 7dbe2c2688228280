// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/cddb/lookupfailure.h"
#include "core/online/web/webtext.h"

#include <QByteArray>
#include <QUrl>

#include <functional>

namespace ravlin {

/// WebText for a CD database: tells failures as those of a lookup.
class CddbFetch : public QObject
{
    Q_OBJECT

public:
    using Done = std::function<void(const LookupResult<QByteArray> &)>;

    explicit CddbFetch(QObject *parent = nullptr) : QObject(parent) {}

    void setSettings(const FetchSettings &settings) { m_text.setSettings(settings); }
    const FetchSettings &settings() const { return m_text.settings(); }

    /// As WebText's.
    void get(const QUrl &url, Done done);
    void cancel() { m_text.cancel(); }
    bool isBusy() const { return m_text.isBusy(); }

private:
    WebText m_text;
};

} // namespace ravlin
