// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/renaming/filerenaming.h"
#include "ui/naming/previewmodel.h"

#include <QStringList>

#include <vector>

/// The preview's rows with what is to be said about each, in the user's language.
namespace ravlin {

class Captions;
class TagStore;

std::vector<PreviewLine> extractionLines(const std::vector<PreviewRow> &rows, const Captions &captions);
std::vector<PreviewLine> renamingLines(const FileRenaming &renaming, const Captions &captions);

} // namespace ravlin
