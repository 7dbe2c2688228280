// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/naming/previewlines.h"

#include "core/app/idiomas.h"
#include "core/naming/filename.h"
#include "core/platform/path.h"
#include "ui/naming/problemtext.h"

namespace ravlin {

namespace {

void remarkLongName(PreviewLine &line, const Captions &captions)
{
    if (line.row.isLongName)
        line.remarks << captions.text(Text::RemarkLongName);
}

void remarkClash(PreviewLine &line, const RenameRow &row, const Captions &captions)
{
    line.mark = PreviewMark::Trouble;
    line.remarks << captions.text(Text::ErrorAlreadyExists);
    if (row.renames())
        line.remarks << captions.text(Text::RemarkNumbered);
}

PreviewLine renamingLine(const PreviewRow &preview, const RenameRow &row, const Captions &captions)
{
    PreviewLine line{preview, PreviewMark::None, {}};
    line.row.name = newNameOf(preview, row);
    line.row.isLongName = isLongName(platform::nameOf(line.row.name));
    if (preview.problem) {
        line.mark = PreviewMark::Trouble;
        line.remarks << captions.errorText(preview.problem->code);
    } else if (row.problem) {
        line.mark = PreviewMark::Trouble;
        line.remarks << problemText(captions, *row.problem);
    } else if (row.error) {
        line.mark = PreviewMark::Trouble;
        line.remarks << captions.errorText(row.error->code);
    } else if (row.isCollision) {
        remarkClash(line, row, captions);
    } else if (row.state == RenameState::Untouched) {
        line.mark = PreviewMark::Untouched;
        line.remarks << captions.text(Text::RemarkKeepsName);
    }
    if (row.isAdjusted)
        line.remarks << captions.text(Text::RemarkAdjusted);
    if (row.renames() && row.makesFolder)
        line.remarks << captions.text(Text::RemarkMakesFolder);
    remarkLongName(line, captions);
    return line;
}

} // namespace

std::vector<PreviewLine> extractionLines(const std::vector<PreviewRow> &rows, const Captions &captions)
{
    std::vector<PreviewLine> lines;
    lines.reserve(rows.size());
    for (const PreviewRow &row : rows) {
        PreviewLine line{row, PreviewMark::None, {}};
        if (row.problem) {
            line.mark = PreviewMark::Trouble;
            line.remarks << captions.errorText(row.problem->code);
        } else if (row.isUntouched) {
            line.mark = PreviewMark::Untouched;
            line.remarks << captions.text(Text::RemarkNoMatch);
        }
        remarkLongName(line, captions);
        lines.push_back(std::move(line));
    }
    return lines;
}

std::vector<PreviewLine> renamingLines(const FileRenaming &renaming, const Captions &captions)
{
    std::vector<PreviewLine> lines;
    lines.reserve(renaming.rows.size());
    for (std::size_t i = 0; i < renaming.rows.size(); ++i)
        lines.push_back(renamingLine(renaming.rows[i], renaming.plan.rows()[i], captions));
    return lines;
}

} // namespace ravlin
