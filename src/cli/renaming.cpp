// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/renaming.h"

#include "core/naming/filename.h"
#include "core/platform/path.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace ravlin::cli {

namespace {

struct ClashWord
{
    QStringView word;
    ClashAnswer answer = ClashAnswer::Skip;
};

constexpr std::array ClashWords{ClashWord{u"skip", ClashAnswer::Skip}, ClashWord{u"number", ClashAnswer::KeepBoth},
    ClashWord{u"stop", ClashAnswer::Stop}};

QString wordFor(RenameState state)
{
    switch (state) {
    case RenameState::Rename:
        return u"rename"_s;
    case RenameState::Untouched:
        return u"untouched"_s;
    case RenameState::Clash:
    case RenameState::Skipped:
        return u"skipped"_s;
    case RenameState::Stopped:
        return u"stopped"_s;
    case RenameState::NotTaken:
        return u"notTaken"_s;
    case RenameState::Refused:
        return u"refused"_s;
    case RenameState::Failed:
        return u"failed"_s;
    }
    return {};
}

QString textOf(platform::NameProblem problem)
{
    switch (problem) {
    case platform::NameProblem::Empty:
        return u"the new name is empty"_s;
    case platform::NameProblem::Dots:
        return u"the new name has nothing but full stops"_s;
    case platform::NameProblem::Forbidden:
        return u"the new name has a character that Windows does not allow"_s;
    case platform::NameProblem::Reserved:
        return u"the new name is that of a device"_s;
    case platform::NameProblem::TooLong:
        return u"the new name is too long"_s;
    case platform::NameProblem::LeadsOutside:
        return u"a value of the tag leads into another folder"_s;
    }
    return {};
}

} // namespace

tl::expected<ClashAnswer, UsageError> clashAnswer(const Arguments &arguments)
{
    const QString word = arguments.value(ClashOption.name).value_or(u"skip"_s);
    const auto found = std::ranges::find(ClashWords, QStringView(word), &ClashWord::word);
    if (found == ClashWords.end())
        return tl::unexpected(UsageError{u"--clash is skip or number or stop, not '%1'"_s.arg(word)});
    return found->answer;
}

QString reasonOf(const RenameRow &row)
{
    if (row.error)
        return describe(*row.error);
    if (row.problem)
        return textOf(*row.problem);
    if (row.state == RenameState::NotTaken)
        return u"a row before it stopped the run"_s;
    const QString taken = row.isGivenToAnother ? u"two files would get this name"_s : u"the new name is taken"_s;
    if (row.isNumbered)
        return taken + u", so it has a number"_s;
    if (row.isCollision)
        return taken;
    return row.renames() && row.isAdjusted ? u"the new name was adjusted"_s : QString();
}

std::vector<QStringView> renameColumns()
{
    return {u"file", u"newFile", u"outcome", u"reason", u"collision", u"longName", u"track", u"title", u"artist",
        u"album", u"year", u"id3v1", u"id3v2"};
}

Record renameRecord(const RenameRow &row, const TagRecord &tag)
{
    return {row.from, row.path, wordFor(row.state), reasonOf(row), row.isCollision,
        isLongName(platform::nameOf(row.path)), tag.Track, tag.Title, tag.Artist, tag.Album, tag.Year, tag.HasV1,
        tag.HasV2};
}

Extra renameExtra(const RenameRow &row)
{
    if (row.path == row.wanted)
        return {};
    return {{u"wantedFile", row.wanted}};
}

void tellOutcome(const RenamingOutcome &outcome, Console &console)
{
    for (const RenameRow &row : outcome.rows) {
        const QString reason = reasonOf(row);
        if (reason.isEmpty())
            continue;
        if (row.renames())
            console.warn(row.from + u": "_s + reason + u": "_s + row.path);
        else if (row.state != RenameState::Untouched)
            console.fail(row.from, reason + u": "_s + row.wanted);
    }
}

} // namespace ravlin::cli
