// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/storage/journal.h"

#include <optional>

namespace ravlin::storage {

/// Tells a journal of changes to names and places: looks at what is to be changed and at what became of it. Does
/// nothing without a journal. One thread at a time.
class Recorder
{
public:
    /// Nothing without a journal, or if the change could not be recorded.
    using Ticket = std::optional<Journal::Ticket>;

    Recorder(platform::FileSystem &fileSystem, Journal *journal) : m_fileSystem(fileSystem), m_journal(journal) {}

    bool isOn() const { return m_journal != nullptr; }
    Journal *journal() const { return m_journal; }

    /// Right before something is moved, copied, deleted or put into the trash. aside: see ChangeRecord.
    Ticket begin(ChangeKind kind, const QString &path, const QString &newPath = {}, const QString &aside = {});
    /// Right before a file or folder is made from nothing.
    Ticket beginCreate(const QString &path, bool isFolder);
    /// Right after. newPath: where it is now, if it is anywhere.
    void done(Ticket ticket, const QString &newPath = {}, bool replaced = false,
        const std::optional<platform::TrashedItem> &trashed = {});
    void failed(Ticket ticket, const Error &error);

private:
    platform::FileSystem &m_fileSystem;
    Journal *m_journal;
};

/// A path as a journal keeps it: absolute, with the links to its folder resolved, but not itself if it is a link. As it
/// is if its folder can't be reached.
QString recordedPath(platform::FileSystem &fileSystem, const QString &path);

} // namespace ravlin::storage
