// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/error.h"
#include "core/tags/record/tagrecord.h"

#include <QString>
#include <QStringList>
#include <QStringView>

#include <functional>

/// What the pages that edit tags do, without their controls.
namespace ravlin {

class TagStore;

/// The entries of a genre list: an empty one for "no genre", then all names, so that genre k is at index k + 1.
QStringList genreListEntries();
/// The place of a genre in that list, by its exact name; 0 for an empty text and for one that is no entry.
int genreListIndex(const QString &genre);

/// What becomes of a key typed into a box for digits.
enum class KeyVerdict
{
    Pass,
    Swallow,
    Beep ///< swallowed as well
};
/// Digits 0 to 9 pass and so do keys that type nothing visible (Backspace, Tab, Ctrl+V ...), Enter is swallowed, any
/// other character beeps. typed: the text that the key produces.
KeyVerdict digitKeyVerdict(QStringView typed);

/// Writes one and the same page into file after file.
///
/// A conversion works on the page, not on a copy: what it makes of the texts for one file is what the next file starts
/// from, and what the boxes show at the end.
class PageSave
{
public:
    using Conversion = std::function<QString(const QString &)>;

    /// page: the boxes' texts; its HasV1 and HasV2 are of no account. convert: applied to artist, album, title and
    /// comment of the page before each file; none when empty.
    PageSave(TagStore &store, TagRecord page, Conversion convert = {});

    /// One file: reads its tag, converts the page, saves it. A file whose tag cannot be read is an error and leaves the
    /// page as it was; a genre number beyond the table is none. Otherwise the errors of TagStore::SaveTag.
    Result<void> save(const QString &path);

    const TagRecord &page() const { return m_page; }

private:
    void convertPage();

    TagStore &m_store;
    TagRecord m_page;
    Conversion m_convert;
};

} // namespace ravlin
