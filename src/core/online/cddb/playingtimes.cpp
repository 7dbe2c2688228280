// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/cddb/playingtimes.h"

#include "core/tags/mpeg/mpegstream.h"

#include <new>
#include <system_error>

namespace ravlin {

namespace {

/// A file that can be read until a stop is requested.
class StoppableSource final : public platform::ByteSource
{
public:
    StoppableSource(platform::ByteSource &source, std::stop_token stop) : m_source(source), m_stop(std::move(stop)) {}

    qint64 size() const override { return m_source.size(); }
    Result<qint64> readAt(std::span<char> buffer, qint64 offset) override
    {
        if (m_stop.stop_requested())
            return tl::unexpected(Error{ErrorCode::Cancelled, {}, {}});
        return m_source.readAt(buffer, offset);
    }

private:
    platform::ByteSource &m_source;
    std::stop_token m_stop;
};

Result<PlayedAudio> playedAudioOf(
    platform::FileSystem &fileSystem, const QString &path, std::vector<char> &buffer, const std::stop_token &stop)
{
    const auto file = fileSystem.open(path, platform::OpenMode::Read);
    if (!file)
        return tl::unexpected(file.error());
    const Result<platform::FileInfo> info = (*file)->info();
    if (!info)
        return tl::unexpected(info.error());
    platform::FileSource source(**file, info->size);
    StoppableSource stoppable(source, stop);
    const Result<StreamInfo> stream = mpeg::analyseStream(stoppable, buffer);
    if (!stream)
        return tl::unexpected(stream.error());
    if (!stream->hasFrame())
        return tl::unexpected(Error{ErrorCode::NoStream, path, {}});
    return PlayedAudio::of(*stream);
}

} // namespace

PlayingTimes::PlayingTimes(platform::FileSystem &fileSystem, QObject *parent)
    : QObject(parent), m_fileSystem(fileSystem)
{
}

PlayingTimes::~PlayingTimes()
{
    cancel();
}

void PlayingTimes::cancel()
{
    m_stop.request_stop();
}

void PlayingTimes::leave()
{
    cancel();
    setParent(nullptr);
    m_isLeaving = true;
    if (m_running == 0)
        deleteLater();
}

void PlayingTimes::measure(const QStringList &paths)
{
    cancel();
    m_stop = std::stop_source();
    ++m_running;
    try {
        // Each run ends the one before first, off the caller's thread.
        m_thread = std::jthread([this, paths, stop = m_stop.get_token(), before = std::move(m_thread)]() mutable {
            before = {};
            measureAll(paths, stop);
        });
    } catch (const std::system_error &) { // no threads left
        measureAll(paths, m_stop.get_token());
    }
}

/// Runs on the measuring thread. The receiving thread drops signals of a cancelled run.
void PlayingTimes::measureAll(const QStringList &paths, const std::stop_token &stop)
{
    std::vector<char> buffer;
    for (int i = 0; i < paths.size() && !stop.stop_requested(); ++i) {
        Result<PlayedAudio> played;
        try {
            played = playedAudioOf(m_fileSystem, paths[i], buffer, stop);
        } catch (const std::bad_alloc &) {
            played = tl::unexpected(Error{ErrorCode::Io, paths[i], QStringLiteral("no memory")});
        }
        const auto tell = [this, i, played, stop] {
            if (stop.stop_requested())
                return;
            if (played)
                Q_EMIT measured(i, *played);
            else
                Q_EMIT notMeasured(i, played.error());
        };
        QMetaObject::invokeMethod(this, tell, Qt::QueuedConnection);
    }
    QMetaObject::invokeMethod(
        this, [this, stop] { end(stop); }, Qt::QueuedConnection);
}

void PlayingTimes::end(const std::stop_token &stop)
{
    --m_running;
    if (m_isLeaving && m_running == 0)
        deleteLater();
    else if (!stop.stop_requested())
        Q_EMIT finished();
}

} // namespace ravlin
