// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/update/versioncheck.h"

#include "core/platform/desktop.h"
#include "core/platform/fileio.h"
#include "core/platform/path.h"
#include "core/storage/leftovers.h"

#include <algorithm>
#include <utility>

namespace ravlin {

namespace {

Result<void> writeWhole(platform::FileSystem &fileSystem, const QString &path, const QByteArray &content)
{
    auto temporary = storage::TemporaryFile::create(fileSystem, platform::folderOf(path));
    if (!temporary)
        return tl::unexpected(temporary.error());
    return platform::writeAll(temporary->file(), content, 0)
        .and_then([&] { return temporary->file().sync(); })
        .and_then([&] { return temporary->moveTo(platform::nameOf(path)); });
}

Result<QByteArray> readWhole(platform::FileSystem &fileSystem, const QString &path)
{
    const auto file = platform::placeAt(fileSystem, path).and_then([](const platform::Place &place) {
        return place.folder->openFile(place.name, platform::OpenMode::Read);
    });
    if (!file)
        return tl::unexpected(file.error());
    return (*file)->info().and_then([&](const platform::FileInfo &info) {
        return platform::readExactly(**file, 0, std::min<qint64>(info.size, VersionFile::MaximumSize + 1));
    });
}

} // namespace

VersionCheck::VersionCheck(platform::FileSystem &fileSystem, QObject *parent)
    : QObject(parent), m_fileSystem(fileSystem)
{
    FetchSettings settings;
    settings.sizeLimit = VersionFile::MaximumSize;
    m_web.setSettings(settings);
    connect(&m_web, &WebText::stepped, this, [this](WebStep step) {
        for (const ConnectionState state : statesOf(step))
            Q_EMIT stateChanged(state);
    });
}

QString VersionCheck::localPath()
{
    return platform::fixedFilePath(QStringLiteral("ravlin.ver"));
}

void VersionCheck::check(const QUrl &versionFile, Done done)
{
    m_web.get(versionFile, [this, done = std::move(done)](const WebAnswer &body) {
        if (!body) {
            Q_EMIT stateChanged(ConnectionState::Failed);
            done(tl::unexpected(UpdateFailure::ofWeb(body.error())));
            return;
        }
        Q_EMIT stateChanged(ConnectionState::Disconnecting);
        Q_EMIT stateChanged(ConnectionState::Disconnected);
        done(keep(*body));
    });
}

UpdateResult<VersionFile> VersionCheck::keep(const QByteArray &body)
{
    const QString path = localPath();
    const Result<QByteArray> kept =
        writeWhole(m_fileSystem, path, body).and_then([&] { return readWhole(m_fileSystem, path); });
    if (!kept)
        return tl::unexpected(UpdateFailure::ofFile(kept.error()));
    return VersionFile::parse(*kept);
}

} // namespace ravlin
