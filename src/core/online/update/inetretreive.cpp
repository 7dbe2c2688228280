// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/update/inetretreive.h"

#include "core/online/update/updateaddress.h"
#include "core/platform/desktop.h"
#include "core/platform/fileio.h"
#include "core/storage/safewrite.h"

#include <QByteArrayList>

#include <algorithm>
#include <cctype>
#include <tuple>
#include <utility>

namespace ravlin {

namespace {

constexpr qint64 MaximumChecksumSize = 64 * 1024;
constexpr qsizetype ChecksumDigits = 64;
/// Sync after this many bytes, so that little is left to sync at the end.
constexpr qint64 SyncedAtOnce = 8 * 1024 * 1024;

FetchSettings fileSettings()
{
    FetchSettings settings;
    settings.timeLimit = std::chrono::hours(6);
    settings.idleLimit = FetchSettings::UsualTimeLimit;
    settings.sizeLimit = InetRetreive::MaximumSize;
    return settings;
}

FetchSettings checksumSettings()
{
    FetchSettings settings;
    settings.sizeLimit = MaximumChecksumSize;
    return settings;
}

UpdateFailure incomplete()
{
    return UpdateFailure::ofWeb({WebFailureKind::Incomplete, {}});
}

UpdateFailure ofChecksum(UpdateFailureKind kind, const QString &path)
{
    return {kind, platform::nameOf(path)};
}

/// Whether the checksum does not exist, rather than being unavailable now.
bool tellsThatThereIsNone(const WebFailure &failure)
{
    constexpr int NotFound = 404;
    constexpr int Gone = 410;
    return failure.kind == WebFailureKind::HttpStatus && (failure.status == NotFound || failure.status == Gone);
}

std::optional<QByteArray> fromDigits(QByteArrayView digits)
{
    const auto isDigit = [](char byte) { return std::isxdigit(static_cast<unsigned char>(byte)) != 0; };
    if (digits.size() != ChecksumDigits || !std::all_of(digits.begin(), digits.end(), isDigit))
        return {};
    return QByteArray::fromHex(digits.toByteArray());
}

} // namespace

std::optional<QByteArray> checksumIn(QByteArrayView text, const QString &fileName)
{
    const QByteArray whole = text.toByteArray();
    if (const auto alone = fromDigits(whole.trimmed()))
        return alone;
    const QByteArray name = fileName.toUtf8();
    for (const QByteArray &line : whole.split('\n')) {
        const QByteArray trimmed = line.trimmed();
        const QByteArray rest = trimmed.mid(ChecksumDigits);
        if (rest == "  " + name || rest == " *" + name)
            return fromDigits(QByteArrayView(trimmed).first(ChecksumDigits));
    }
    return {};
}

InetRetreive::InetRetreive(platform::FileSystem &fileSystem, QObject *parent)
    : QObject(parent), m_fileSystem(fileSystem)
{
    m_web.setSettings(fileSettings());
    m_checksum.setSettings(checksumSettings());
    connect(&m_web, &WebGet::stepped, this, &InetRetreive::follow);
    connect(&m_web, &WebGet::readable, this, &InetRetreive::takeChunks);
    connect(&m_web, &WebGet::finished, this, &InetRetreive::finishContent);
    connect(&m_web, &WebGet::failed, this, [this](const WebFailure &failure) { fail(UpdateFailure::ofWeb(failure)); });
}

InetRetreive::~InetRetreive()
{
    cancel();
}

void InetRetreive::start(const Job &job, Done done)
{
    cancel();
    m_job = job;
    m_done = std::move(done);
    m_progress = DownloadProgress();
    m_written = 0;
    m_synced = 0;
    m_hash.reset();
    // Left by a program that was killed.
    std::ignore = storage::cleanLeftovers(m_fileSystem, platform::folderOf(job.path));
    m_web.get(job.url);
}

void InetRetreive::cancel()
{
    m_web.cancel();
    m_checksum.cancel();
    m_file.reset();
    m_done = nullptr;
}

void InetRetreive::follow(WebStep step)
{
    if (step == WebStep::Answering) {
        m_progress = DownloadProgress(m_web.announcedSize());
        m_isEndCertain = m_web.isEndMarked();
        if (const Result<void> opened = openFile(); !opened) {
            failOfFile(opened.error());
            return;
        }
        Q_EMIT sizeTold();
    }
    for (const ConnectionState state : statesOf(step))
        Q_EMIT stateChanged(state);
}

Result<void> InetRetreive::openFile()
{
    const QString folder = platform::folderOf(m_job.path);
    const auto room = m_fileSystem.freeBytes(folder);
    if (room && m_progress.total() > *room)
        return tl::unexpected(Error{ErrorCode::NoSpace, folder, {}});
    auto made = storage::TemporaryFile::create(m_fileSystem, folder);
    if (!made)
        return tl::unexpected(made.error());
    m_file.emplace(std::move(*made));
    return {};
}

/// Takes whole chunks; the rest waits until its chunk is full.
void InetRetreive::takeChunks()
{
    const qint64 count = m_web.available() / DownloadProgress::ChunkSize;
    if (count == 0 || !m_file)
        return;
    if (const Result<void> written = append(m_web.read(count * DownloadProgress::ChunkSize)); !written) {
        failOfFile(written.error());
        return;
    }
    m_progress.addChunks(count);
    Q_EMIT progressed();
}

Result<void> InetRetreive::append(const QByteArray &bytes)
{
    auto written = platform::writeAll(m_file->file(), bytes, m_written);
    if (!written)
        return written;
    m_hash.addData(bytes);
    m_written += bytes.size();
    if (m_written - m_synced < SyncedAtOnce)
        return {};
    m_synced = m_written;
    return m_file->file().sync();
}

void InetRetreive::finishContent()
{
    takeChunks();
    if (!isBusy())
        return;
    if (const QByteArray rest = m_web.read(DownloadProgress::ChunkSize); !rest.isEmpty()) {
        if (const Result<void> written = append(rest); !written) {
            failOfFile(written.error());
            return;
        }
        m_progress.addChunks(1);
        Q_EMIT progressed();
    }
    Q_EMIT stateChanged(ConnectionState::Disconnecting);
    Q_EMIT stateChanged(ConnectionState::Disconnected);
    askForChecksum();
}

void InetRetreive::askForChecksum()
{
    m_checksum.get(checksumUrl(m_job.url), [this](const WebAnswer &text) { takeChecksum(text); });
}

void InetRetreive::takeChecksum(const WebAnswer &text)
{
    if (!text && !tellsThatThereIsNone(text.error())) {
        fail(UpdateFailure::ofWeb(text.error()));
        return;
    }
    if (!text) {
        if (m_isEndCertain)
            complete(false);
        else
            fail(incomplete()); // it may not be complete
        return;
    }
    const std::optional<QByteArray> checksum = checksumIn(*text, platform::nameOf(m_job.path));
    if (!checksum)
        fail(ofChecksum(UpdateFailureKind::BadChecksum, m_job.path));
    else if (*checksum != m_hash.result())
        fail(ofChecksum(UpdateFailureKind::WrongChecksum, m_job.path));
    else
        complete(true);
}

Result<void> InetRetreive::giveName()
{
    if (const Result<void> synced = m_file->file().sync(); !synced)
        return synced;
    const QString name = platform::nameOf(m_job.path);
    const Result<platform::Node> present = m_file->folder()->node(name);
    const bool isFile = present && present->kind == platform::NodeKind::File;
    if (present && m_job.replaces && !isFile && present->kind != platform::NodeKind::Link)
        return tl::unexpected(Error{ErrorCode::NotAFile, m_job.path, {}});
    // The file system of a memory stick may not have permissions.
    const bool takesPlace = isFile && m_job.replaces;
    std::ignore =
        m_file->file().setPermissions(takesPlace ? present->info.permissions : platform::newFilePermissions());
    const std::shared_ptr<platform::HeldFolder> folder = m_file->folder();
    auto moved = m_job.replaces ? m_file->moveTo(name) : m_file->moveToNew(name);
    // Syncing the folder is a courtesy: if a power cut takes the name, the download is made again.
    if (moved)
        std::ignore = folder->sync();
    return moved;
}

void InetRetreive::complete(bool isChecked)
{
    if (const Result<void> named = giveName(); !named)
        failOfFile(named.error());
    else
        end(Downloaded{m_job.path, isChecked});
}

void InetRetreive::failOfFile(Error error)
{
    if (error.path.isEmpty() || storage::isLeftoverName(platform::nameOf(error.path)))
        error.path = m_job.path;
    end(tl::unexpected(UpdateFailure::ofFile(error)));
}

void InetRetreive::fail(const UpdateFailure &failure)
{
    end(tl::unexpected(failure));
}

void InetRetreive::end(const UpdateResult<Downloaded> &outcome)
{
    const Done done = std::move(m_done);
    cancel();
    if (!outcome && outcome.error().kind == UpdateFailureKind::Web)
        Q_EMIT stateChanged(ConnectionState::Failed);
    if (done)
        done(outcome);
}

} // namespace ravlin
