// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/update/connectionstate.h"
#include "core/online/update/versionfile.h"
#include "core/online/web/webtext.h"
#include "core/platform/filesystem.h"

#include <QObject>

#include <functional>

namespace ravlin {

/// Fetches the version file, keeps it under its fixed name ("ravlin.ver", see platform::fixedFilePath) and reads it
/// from there. On the event loop of the thread that it lives in.
class VersionCheck : public QObject
{
    Q_OBJECT

public:
    using Done = std::function<void(const UpdateResult<VersionFile> &)>;

    explicit VersionCheck(platform::FileSystem &fileSystem, QObject *parent = nullptr);

    /// Where the version file is kept.
    static QString localPath();

    /// Calls done once, later than this returns; not at all after cancel() or another check, which ends this one.
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
