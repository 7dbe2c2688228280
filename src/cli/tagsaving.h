// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/arguments.h"
#include "cli/console.h"
#include "cli/recordwriter.h"
#include "core/app/batch.h"
#include "core/app/programstate.h"
#include "core/tags/record/tagrecord.h"
#include "core/tags/store/tagstore.h"

#include <QSet>
#include <QString>
#include <QStringList>

#include <vector>

/// What the commands that save tags have in common.
namespace ravlin::cli {

inline constexpr Option ModeOption{
    u"--mode", u"1..5", u"which tags to write; without it as chosen in the program, at first 2"};
inline constexpr Option DryRunOption{u"--dry-run", {}, u"print what would be done and change nothing"};

/// A tag-save mode, or the exit status of a command that cannot have one.
using ModeOrStatus = tl::expected<int, int>;
/// The mode given, or else the one that the settings hold. Where it makes no sense or the settings cannot be read, the
/// console has been told.
ModeOrStatus modeFor(const QString &command, const Arguments &arguments, Console &console);

/// Why a save will leave a field's text out and remove the field, as a warning; empty when it will be written.
QString warningNotSaved(QString TagRecord::*field, const QString &text);
/// Warns of each field of a record that a save leaves out. path: the file.
void warnOfTextsNotSaved(const QString &path, const TagRecord &record, Console &console);

/// Clears away what interrupted writes have left in the folders that are about to be written to, each folder once.
class FolderCleaner
{
public:
    explicit FolderCleaner(platform::FileSystem &fileSystem) : m_fileSystem(fileSystem) {}

    /// The folder that holds the file itself, where symbolic links lead to it.
    void cleanFolderOf(const QString &path);

private:
    platform::FileSystem &m_fileSystem;
    QSet<QString> m_done;
};

/// A batch that saves tags of files in any folders: before each it clears its folder of what interrupted writes left
/// and asks for the free space of its drive.
class SavingRun
{
public:
    explicit SavingRun(int mode) { m_state.tagSaveMode = mode; }

    /// Before a file is saved.
    void prepareFor(const QString &path);
    /// Prepares for each file that a batch reports.
    ProgressReport preparing()
    {
        return [this](const Progress &now) { prepareFor(now.path); };
    }

    const ProgramState &state() const { return m_state; }
    TagStore &store() { return m_store; }

private:
    platform::FileSystem &m_fileSystem = platform::FileSystem::native();
    ProgramState m_state;
    TagStore m_store{m_state, m_fileSystem};
    FolderCleaner m_cleaner{m_fileSystem};
};

/// Tells of every file that failed, and how many were not taken any more.
void tellFailures(const QStringList &paths, const BatchOutcome &outcome, Console &console);

/// The columns of a preview: the file and its tag as it would be.
std::vector<QStringView> previewColumns();
/// A preview's values in those columns. isWritten: whether the file would be.
Record previewRecord(const QString &path, const TagRecord &record, bool isLongName, bool isWritten);

} // namespace ravlin::cli
