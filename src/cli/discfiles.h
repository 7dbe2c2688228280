// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/console.h"
#include "core/online/cddb/disccontents.h"

#include <QStringList>

#include <optional>

namespace ravlin::cli {

/// Files that stand for the tracks of a disc, in their order.
struct DiscFiles
{
    QString offsets;               ///< offset text
    QString offsetsWithUsualDelay; ///< the other one to try; empty where there is none
    DiscContents contents;         ///< of the first
};

/// Analyses the files. Nothing, and told, when one of them cannot be analysed or they make no disc.
std::optional<DiscFiles> analyseDisc(const QStringList &paths, Console &console);

} // namespace ravlin::cli
