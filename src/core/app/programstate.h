// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/options.h"

#include <QString>
#include <QStringView>

#include <optional>

namespace ravlin {

/// Which computation the preview window shows.
enum class PreviewMode
{
    None,
    Extrae,
    Rename
};

/// The tag-save mode, a number from 1 to 5.
inline constexpr int FirstTagSaveMode = 1;
inline constexpr int LastTagSaveMode = 5;
inline constexpr int DefaultTagSaveMode = 2;

/// What every part of the program shares during one run. Made once and passed by reference; used by the interface
/// thread alone.
struct ProgramState
{
    QString currentFolder;         ///< the folder whose files are listed, ends in the path separator
    QString currentFolderAsChosen; ///< the same path as it was chosen, without a separator added
    qint64 freeMegabytes = 0;      ///< free space on the current folder's drive, in whole units of 1024 * 1024 bytes
    int tagSaveMode = DefaultTagSaveMode;
    bool cancelled = false; ///< a save was refused for want of space; batches take no further file
    PreviewMode previewMode = PreviewMode::None;
    FurtherOptions options; ///< how tags are written, what the file list shows and does
};

/// The mode that a stored text stands for: exactly one of "1" to "5", nothing else.
constexpr std::optional<int> tagSaveModeFromText(QStringView text)
{
    if (text.size() != 1)
        return std::nullopt;
    const int mode = text.front().unicode() - u'0';
    if (mode < FirstTagSaveMode || mode > LastTagSaveMode)
        return std::nullopt;
    return mode;
}

} // namespace ravlin
