// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/arguments.h"
#include "cli/console.h"
#include "cli/recordwriter.h"
#include "core/history/history.h"
#include "core/platform/filesystem.h"

namespace ravlin::cli {

inline constexpr Option NoHistoryOption{
    u"--no-history", {}, u"don't record the change, so that it can't be taken back"};
inline constexpr Option OutcomeJsonOption{
    u"--json", {}, u"print one array of JSON objects: the files that were changed, and the entry of the history"};

/// What a command works with: where its results go, and the history that it makes an entry of.
class Session
{
    Q_DISABLE_COPY_MOVE(Session)

public:
    Session(const Arguments &arguments, Console &console);
    ~Session();

    Console &console() { return m_console; }
    history::History &history() { return m_history; }

    /// Opens the entry of a command that changes files. What fails from now on belongs to it.
    void begin(history::Kind kind);
    /// For what changes files: nullptr unless the entry is open.
    storage::Journal *journal() { return m_isOpen ? &m_history : nullptr; }
    /// Closes the entry and warns if it can't be taken back, unless the output says so. Returns what its records say.
    Extra finish();
    /// Closes the entry, prints its files if that is wanted, and returns the exit status.
    int end();

private:
    const Arguments &m_arguments;
    Console &m_console;
    history::History m_history{platform::FileSystem::native()};
    bool m_isOpen = false;
    history::Summary m_summary;
};

} // namespace ravlin::cli
