// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/tagsaving.h"

#include "core/app/idiomas.h"
#include "core/app/settings.h"
#include "core/platform/nodes.h"
#include "core/platform/path.h"
#include "core/storage/safewrite.h"
#include "core/tags/store/saveoutlook.h"

#include <array>
#include <tuple>
#include <utility>

using namespace Qt::StringLiterals;

namespace ravlin::cli {

namespace {

/// Fields that can't store every text.
constexpr std::array<std::pair<QString TagRecord::*, QStringView>, 3> RestrictedFields{
    {{&TagRecord::Year, u"year"}, {&TagRecord::Track, u"track"}, {&TagRecord::Genre, u"genre"}}};

QString reasonNotToWrite(QString TagRecord::*field, const QString &text)
{
    if (isWritable(field, text))
        return {};
    if (field == &TagRecord::Year)
        return u"a year has four digits"_s;
    if (field == &TagRecord::Track)
        return u"a track has one or two digits"_s;
    return u"it is none of the genres that can be written"_s;
}

} // namespace

RulesOrStatus rulesFor(const QString &command, const Arguments &arguments, Console &console)
{
    const std::optional<QString> text = arguments.value(ModeOption.name);
    const int mode = text ? tagSaveModeFromText(*text).value_or(0) : 0; // 0: not chosen
    if (text && mode == 0)
        return tl::unexpected<int>(console.refuse(command, u"--mode is a digit from 1 to 5, not '%1'"_s.arg(*text)));
    const bool onlyEdited = arguments.has(OnlyEditedOption.name);
    const bool allFields = arguments.has(AllFieldsOption.name);
    if (onlyEdited && allFields)
        return tl::unexpected<int>(console.refuse(command, u"--only-edited and --all-fields exclude each other"_s));
    if (mode != 0 && (onlyEdited || allFields))
        return SavingRules{mode, onlyEdited};
    const Settings settings;
    // Don't save in a way that the user may have decided against. Leaving fields alone can't be one.
    if (settings.problem() && mode == 0) {
        console.fail(settings.path(), *settings.problem());
        return tl::unexpected<int>(console.status());
    }
    const bool isChosen = settings.problem() || FurtherOptions::restored(settings).onlyEditedFields;
    return SavingRules{
        mode != 0 ? mode : tagSaveModeFromText(settings.read(settingskey::Tags)).value_or(DefaultTagSaveMode),
        onlyEdited || (!allFields && isChosen)};
}

QString reasonNotToStore(TagEdits::Field field, const QString &text)
{
    return isStorable(field, text) ? QString() : reasonNotToWrite(field, text);
}

QString warningNotSaved(QString TagRecord::*field, const QString &text)
{
    const QString reason = reasonNotToWrite(field, text);
    if (reason.isEmpty())
        return {};
    for (const auto &[restricted, name] : RestrictedFields) {
        if (restricted == field)
            return u"%1 '%2' is not saved: %3"_s.arg(name, text, reason);
    }
    return {};
}

void warnOfTextsNotSaved(const QString &path, const TagRecord &record, Console &console)
{
    for (const auto &[field, name] : RestrictedFields) {
        if (const QString warning = warningNotSaved(field, record.*field); !warning.isEmpty())
            console.warn(path + u": "_s + warning);
    }
}

void warnOfOutlook(const QString &path, const TagRecord &record, int mode, const Arguments &arguments, Console &console)
{
    SaveOutlook outlook = outlookOf(record, mode);
    if (arguments.has(ModeOption.name))
        outlook.isNotShown = false;
    if (const QString text = outlookText(Captions(), outlook); !text.isEmpty())
        console.warn(path + u": "_s + text);
}

void FolderCleaner::cleanFolderOf(const QString &path)
{
    // A file that is no link is in the folder that its path names. Resolving each path takes longer than looking.
    const QString named = platform::folderPrefix(path);
    const auto node = platform::nodeAt(path);
    const bool isLink = !node || node->kind == platform::NodeKind::Link;
    if (!isLink && m_named.contains(named))
        return;
    const Result<QString> canonical = m_fileSystem.canonicalPath(path);
    if (!canonical)
        return; // the operation on the file reports it
    const QString folder = platform::folderOf(*canonical);
    if (!isLink)
        m_named.insert(named);
    if (m_done.contains(folder))
        return;
    m_done.insert(folder);
    // A failure stays silent: nobody asked for the cleaning, and what is left is harmless and never listed.
    std::ignore = storage::cleanLeftovers(m_fileSystem, folder);
}

void SavingRun::prepareFor(const QString &path)
{
    constexpr qint64 Megabyte = 1024 * 1024;
    m_cleaner.cleanFolderOf(path);
    // A drive of unknown free space counts as full.
    m_state.freeMegabytes = m_fileSystem.freeBytes(path).value_or(0) / Megabyte;
}

void tellFailures(const QStringList &paths, const BatchOutcome &outcome, Console &console)
{
    for (qsizetype row = 0; row < outcome.takenCount(); ++row) {
        if (const Error *error = outcome.error(row))
            console.fail(paths[row], *error);
    }
    if (const qsizetype left = outcome.rowCount() - outcome.takenCount(); left > 0)
        console.fail(
            paths[outcome.takenCount()], u"left as it is, and so are the files behind it (%1 in all)"_s.arg(left));
}

std::vector<QStringView> previewColumns()
{
    return {u"file", u"track", u"title", u"artist", u"album", u"year", u"comment", u"genre", u"id3v1", u"id3v2",
        u"longName", u"written"};
}

Record previewRecord(const QString &path, const TagRecord &record, bool isLongName, bool isWritten)
{
    return {path, record.Track, record.Title, record.Artist, record.Album, record.Year, record.Comment, record.Genre,
        record.HasV1, record.HasV2, isLongName, isWritten};
}

} // namespace ravlin::cli
