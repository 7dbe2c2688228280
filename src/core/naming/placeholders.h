// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/captiontable.h"
#include "core/tags/record/tagrecord.h"

#include <QChar>
#include <QString>

#include <array>
#include <span>

/// The placeholders of patterns: "%" and one digit. Each direction has its own table, and they differ: "%6" to "%8"
/// mean different things for renaming and for extraction, and folders number their fields anew.
namespace ravlin {

struct Placeholder
{
    char16_t digit = u'0';
    /// The field that is filled in or written. nullptr for what is not in the tag: the file's own name, or text that is
    /// skipped.
    QString TagRecord::*field = nullptr;
    Caption caption{}; ///< the field's word
    int label = 0;     ///< number of the clickable label `lt` that appends it

    /// The two characters: "%1".
    QString token() const { return QString(u'%') + QChar(digit); }
};

/// For new names of files, in the order of filling in. "%6", which has no field, is the file's present bare name.
std::span<const Placeholder> renamePlaceholders();
/// For parsing names, in the labels' order. "%0", which has no field, is skipped.
std::span<const Placeholder> extractionPlaceholders();
/// For new names of folders, in the order of filling in. The labels are those of the folder dialog.
std::span<const Placeholder> folderPlaceholders();

/// The text of a label: the placeholder, " - " and the field's word in the interface language.
QString placeholderLabel(const Placeholder &placeholder, const QString &word);

/// The field for a placeholder's digit when a name is parsed; nullptr for "%0" and any other character.
QString TagRecord::*extractionField(char32_t digit);

} // namespace ravlin
