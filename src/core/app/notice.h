// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/history/history.h"

#include <QString>

/// The words of the notice that follows an operation.
namespace ravlin {

class Captions;

/// What a summary is of.
enum class SummaryOf
{
    Change,
    Undo,
    Redo
};

/// Whether there is something to tell: files were changed, or could not be.
bool isWorthTelling(const history::Summary &summary);

/// "14 files written · the genre of 12 removed · 1 failed". Empty if there is nothing to tell.
QString noticeText(const Captions &captions, const history::Summary &summary, SummaryOf what = SummaryOf::Change);

/// What finishing interrupted changes at the start came to. Empty if there were none.
QString noticeText(const Captions &captions, const history::Recovery &recovery);

/// "1 file", "14 files".
QString fileCountText(const Captions &captions, qsizetype count);

} // namespace ravlin
