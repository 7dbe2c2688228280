// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/list/packedtexts.h"
#include "core/tags/store/listreader.h"

#include <QString>
#include <QStringView>

namespace ravlin {

/// What the list knows of a file: its name in its folder and what it shows of its tags. Packed, and shared between the
/// row and the tag cache. Does not change; each text is unpacked when it is asked for.
class ListedFile
{
public:
    ListedFile() = default;
    explicit ListedFile(QStringView name, const ListFields &tag = {});

    QString name() const { return m_texts.at(Name); }
    bool isNamed(QStringView name) const { return m_texts.equals(Name, name); }
    /// Whether the two are copies of each other; others may say the same all the same.
    bool isCopyOf(const ListedFile &other) const { return m_texts.isCopyOf(other.m_texts); }

    QString title() const { return m_texts.at(Title); }
    QString artist() const { return m_texts.at(Artist); }
    QString album() const { return m_texts.at(Album); }
    QString year() const { return m_texts.at(Year); }
    QString track() const { return m_texts.at(Track); }
    bool hasV1() const { return m_hasV1; }
    bool hasV2() const { return m_hasV2; }
    /// All of these at once.
    ListFields tag() const;

private:
    enum Text
    {
        Name,
        Title,
        Artist,
        Album,
        Year,
        Track
    };

    PackedTexts m_texts;
    bool m_hasV1 = false;
    bool m_hasV2 = false;
};

/// One row of the file list.
struct ListRow
{
    QString prefix; ///< what stands before the name in the row's text: the path from the listed folder
    ListedFile file;

    /// The relative prefix and the file's name.
    QString text() const { return prefix + file.name(); }
    bool hasText(QStringView text) const { return text.startsWith(prefix) && file.isNamed(text.sliced(prefix.size())); }
    /// The track column: a number below 10 with a zero in front.
    QString trackColumn() const;
    /// Shows the other's tags from now on and keeps its name.
    void takeTags(const ListedFile &other);
};

} // namespace ravlin
