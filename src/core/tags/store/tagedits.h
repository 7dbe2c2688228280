// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/tags/record/tagrecord.h"

#include <QString>

#include <optional>
#include <utility>
#include <vector>

/// What a save changes while it leaves alone what nobody edited, and what a tag can hold.
namespace ravlin {

/// Fields of a tag and their new texts; all others stay as the file has them. An empty text removes a field.
class TagEdits
{
public:
    using Field = QString TagRecord::*;

    /// The fields in which a page is no longer as it was shown.
    static TagEdits between(const TagRecord &shown, const TagRecord &page);

    /// A later text takes the place of an earlier one.
    void set(Field field, QString text);
    /// The new text of a field; nullptr if it stays.
    const QString *text(Field field) const;
    bool isEmpty() const { return m_texts.empty(); }
    const std::vector<std::pair<Field, QString>> &texts() const { return m_texts; }

    TagRecord appliedTo(TagRecord record) const;
    /// The edits without those that no tag can hold.
    TagEdits storable() const;

private:
    std::vector<std::pair<Field, QString>> m_texts;
};

/// A save of one file before it is made.
struct PreparedSave
{
    TagRecord present; ///< what the file has
    TagRecord wanted;  ///< what it is to have; a save that leaves fields alone has taken them over
};

/// Whether a save of a whole record (TagStore::SaveTag) writes the text into the field. An empty one always counts as
/// written: it removes the field.
bool isWritable(TagEdits::Field field, const QString &text);

/// Whether a save of edits can store the text. "Blues" and "DanceHall" are genres here.
bool isStorable(TagEdits::Field field, const QString &text);
/// The first field whose new text can't be stored, unless the file has that text already.
std::optional<TagEdits::Field> fieldNotStorable(const TagEdits &edits, const TagRecord &present = {});

} // namespace ravlin
