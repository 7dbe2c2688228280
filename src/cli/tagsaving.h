// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/arguments.h"
#include "cli/console.h"
#include "cli/recordwriter.h"
#include "core/app/batch.h"
#include "core/app/programstate.h"
#include "core/tags/record/tagrecord.h"
#include "core/tags/store/tagedits.h"
#include "core/tags/store/tagstore.h"

#include <QSet>
#include <QString>
#include <QStringList>

#include <vector>

/// Shared by the commands that save tags.
namespace ravlin::cli {

inline constexpr Option ModeOption{
    u"--mode", u"1..5", u"which tags to write; without it as chosen in the program, at first 2"};
inline constexpr Option OnlyEditedOption{
    u"--only-edited", {}, u"write only the fields that are given, and leave all others as they are"};
inline constexpr Option AllFieldsOption{
    u"--all-fields", {}, u"write every field; without either option as chosen in the program"};
inline constexpr Option ForceOption{
    u"--force", {}, u"write into files named .mp3 although their content is of another format"};
inline constexpr Option DryRunOption{u"--dry-run", {}, u"print what would be done and change nothing"};

/// How a command saves.
struct SavingRules
{
    int mode = DefaultTagSaveMode;
    bool onlyEdited = false;
};

/// These, or the exit status if there are none.
using RulesOrStatus = tl::expected<SavingRules, int>;
/// Returns the rules given, else the stored ones. Reports wrong options and settings that cannot be read.
RulesOrStatus rulesFor(const QString &command, const Arguments &arguments, Console &console);

/// Why a save of edits can't store the text; empty if it can.
QString reasonNotToStore(TagEdits::Field field, const QString &text);

/// A warning if a save will drop this text and remove the field; empty if it will be written.
QString warningNotSaved(QString TagRecord::*field, const QString &text);
/// Warns of each field that a save of all fields will drop.
void warnOfTextsNotSaved(const QString &path, const TagRecord &record, Console &console);

/// Warns of what the mode loses of the file, or does not show (see SaveOutlook). Who gives the mode in the arguments
/// knows which tag is written.
void warnOfOutlook(
    const QString &path, const TagRecord &record, int mode, const Arguments &arguments, Console &console);

/// Removes what interrupted writes left in folders about to be written to, once per folder.
class FolderCleaner
{
public:
    explicit FolderCleaner(platform::FileSystem &fileSystem) : m_fileSystem(fileSystem) {}

    /// Cleans the folder of the file itself, following symbolic links.
    void cleanFolderOf(const QString &path);

private:
    platform::FileSystem &m_fileSystem;
    QSet<QString> m_named; ///< folders as the paths name them
    QSet<QString> m_done;
};

/// Saves tags of files in any folders. Before each file it cleans the file's folder and reads the free space of its
/// drive.
class SavingRun
{
public:
    /// arguments: of a command with ForceOption.
    SavingRun(const SavingRules &rules, const Arguments &arguments, storage::Journal *journal = nullptr)
        : m_store(m_state, m_fileSystem, journal)
    {
        m_state.tagSaveMode = rules.mode;
        m_state.options.onlyEditedFields = rules.onlyEdited;
        m_state.writesAnyContent = arguments.has(ForceOption.name);
    }

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
    TagStore m_store;
    FolderCleaner m_cleaner{m_fileSystem};
};

/// Reports every file that failed, and how many were not tried.
void tellFailures(const QStringList &paths, const BatchOutcome &outcome, Console &console);

/// Columns of a preview: the file and its future tag.
std::vector<QStringView> previewColumns();
/// Values for those columns. isWritten: whether the file would be written.
Record previewRecord(const QString &path, const TagRecord &record, bool isLongName, bool isWritten);

} // namespace ravlin::cli
