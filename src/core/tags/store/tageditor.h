// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/error.h"
#include "core/platform/filesystem.h"
#include "core/tags/record/tagrecord.h"
#include "core/tags/store/tagedits.h"

#include <QString>
#include <QStringList>
#include <QStringView>

#include <functional>

/// The rules of the pages that edit tags, without their controls.
namespace ravlin {

class TagStore;

/// The entries of a genre list: an empty one for "no genre", then all names. Genre k is at index k + 1.
QStringList genreListEntries();
/// The index of a genre in that list, by its exact name; 0 for an empty text and for one that is not in the list.
int genreListIndex(const QString &genre);

/// What happens to a key typed into a box for digits.
enum class KeyVerdict
{
    Pass,
    Swallow,
    Beep ///< swallowed as well
};
/// What happens to the text that a key produces. Digits 0 to 9 pass, and so do keys that type nothing visible
/// (Backspace, Tab, Ctrl+V ...). Enter is swallowed, any other character beeps.
KeyVerdict digitKeyVerdict(QStringView typed);

/// A page for one file when it is saved.
struct EditedPage
{
    TagRecord texts;               ///< the boxes' texts; HasV1 and HasV2 are ignored
    TagRecord shown = {};          ///< these when the page was filled
    QString path = {};             ///< the file that it was filled from
    platform::FileInfo state = {}; ///< of that file at that time
};

/// Writes the same page into file after file.
///
/// A conversion changes the page itself, not a copy: its result for one file is the input for the next, and what the
/// boxes show at the end. While TagStore::savesOnlyEdited(), only boxes whose text is not the one shown are written,
/// and a conversion works on each file's own texts: the page stays.
class PageSave
{
public:
    using Conversion = std::function<QString(const QString &)>;

    /// convert: applied to artist, album, title and comment before each file; may be empty.
    PageSave(TagStore &store, EditedPage page, Conversion convert = {});
    PageSave(TagStore &store, TagRecord page, Conversion convert = {})
        : PageSave(store, EditedPage{.texts = std::move(page)}, std::move(convert))
    {
    }

    /// What a save would change in a file that has that. May convert the page.
    TagEdits edits(const TagRecord &present);
    /// Reads the file's tag and saves it with the edits. A file whose tag cannot be read, or that may not be written,
    /// is an error and leaves the page unchanged; a genre number above 125 is not an error. Other errors are those of
    /// TagStore::save.
    Result<void> save(const QString &path);

    const TagRecord &page() const { return m_page.texts; }

private:
    TagStore &m_store;
    EditedPage m_page;
    Conversion m_convert;
};

} // namespace ravlin
