// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/tags/record/tagrecord.h"
#include "core/tags/store/tagedits.h"

#include <QString>
#include <QStringList>

#include <vector>

/// What a save of a record does not keep, to be shown before it is saved.
namespace ravlin {

class Captions;

/// A field that the file will not have after the save.
struct LostField
{
    QString TagRecord::*field = nullptr;
    QString text;           ///< the record's text, which no save writes; may be empty
    bool isRemoved = false; ///< the file has a value there, which goes
};

/// The fields that a save of the wanted record drops or removes. present: what the file has.
std::vector<LostField> lostFields(const TagRecord &present, const TagRecord &wanted);
/// The same of a save that leaves alone what was not edited: texts that can't be stored, and fields that they remove.
std::vector<LostField> lostByEdits(const TagRecord &present, const TagEdits &edits);

/// A sentence with the reason why that text of that field is not saved.
QString remarkNotSaved(TagEdits::Field field, const QString &text, const Captions &captions);
/// A sentence with the reason for each text that is not saved, then one that names the fields removed.
QStringList remarksAbout(const std::vector<LostField> &lost, const Captions &captions);

} // namespace ravlin
