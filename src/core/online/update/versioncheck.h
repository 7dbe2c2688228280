// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/update/connectionstate.h"
#include "core/online/update/versionfile.h"
#include "core/online/web/webtext.h"
#include "core/platform/filesystem.h"

#include <QObject>

#include <functional>

namespace ravlin {

/// Fetches the version file, stores it under its fixed name ("ravlin.ver", see platform::fixedFilePath) and reads it
/// from there. Works on the event loop of its thread.
class VersionCheck : public QObject
{
    Q_OBJECT

public:
    using Done = std::function<void(const UpdateResult<VersionFile> &)>;

    explicit VersionCheck(platform::FileSystem &fileSystem, QObject *parent = nullptr);

    /// Where the version file is stored.
    static QString localPath();

    /// Calls done once, after this has returned. Does not call it after cancel() or another check, which ends this one.
    void check(const QUrl &versionFile, Done done);
    void cancel() { m_web.cancel(); }
    bool isBusy() const { return m_web.isBusy(); }

Q_SIGNALS:
    void stateChanged(ravlin::ConnectionState state);

private:
    UpdateResult<VersionFile> keep(const QByteArray &body);

    platform::FileSystem &m_fileSystem;
    WebText m_web;
};

} // namespace ravlin
