// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/session.h"

#include "core/app/programstate.h"
#include "core/app/settings.h"
#include "core/platform/path.h"
#include "core/storage/recorder.h"

#include <tuple>

using namespace Qt::StringLiterals;

namespace ravlin::cli {

Session::Session(const Arguments &arguments, Console &console) : m_arguments(arguments), m_console(console)
{
    // What can't be finished now is tried again next time: perhaps its drive is not there.
    std::ignore = m_history.recover();
    m_console.setFailureWatch([this](const QString &path, const Error &error) {
        if (m_isOpen)
            m_history.addFailure(storage::recordedPath(platform::FileSystem::native(), path), error);
    });
}

Session::~Session()
{
    m_console.setFailureWatch({});
    std::ignore = finish();
}

void Session::begin(history::Kind kind)
{
    const Settings settings;
    const FurtherOptions options = FurtherOptions::restored(settings);
    m_history.setLimits(options.historyDays, options.historyMegabytes);
    m_history.setRecording(!m_arguments.has(NoHistoryOption.name));
    const QString first = storage::recordedPath(platform::FileSystem::native(), m_arguments.paths().value(0));
    const bool isFolder = kind == history::Kind::Playlist;
    m_history.beginEntry(kind, isFolder ? first : platform::folderOf(first));
    m_isOpen = true;
}

Extra Session::finish()
{
    if (m_isOpen) {
        m_isOpen = false;
        m_summary = m_history.endEntry();
        if (m_summary.problem && m_summary.doneCount > 0 && !m_arguments.has(JsonOption.name))
            m_console.warn(u"this can't be taken back: "_s + describe(*m_summary.problem));
    }
    const bool isRecorded = m_summary.entry.id != 0;
    Extra extra{{u"history", isRecorded ? Value(m_summary.entry.id) : Value()}};
    if (!isRecorded && m_summary.problem)
        extra.emplace_back(u"historyProblem", describe(*m_summary.problem));
    else if (!isRecorded && m_arguments.has(NoHistoryOption.name))
        extra.emplace_back(u"historyProblem", u"not wanted"_s);
    return extra;
}

int Session::end()
{
    const Extra extra = finish();
    if (!m_arguments.has(OutcomeJsonOption.name))
        return m_console.status();
    RecordWriter writer(m_console.out(), Format::Json, {u"path", u"newPath", u"action", u"error"});
    for (const history::FileRecord &file : m_summary.files) {
        const bool isMade = file.path.isEmpty();
        writer.write(
            {isMade ? file.newPath : file.path, file.newPath.isEmpty() || isMade ? Value() : Value(file.newPath),
                file.error ? u"failed"_s : u"changed"_s, file.error ? Value(describe(*file.error)) : Value()},
            extra);
    }
    writer.finish();
    return m_console.status();
}

} // namespace ravlin::cli
