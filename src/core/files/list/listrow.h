// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/tags/store/listreader.h"

#include <QString>
#include <QStringView>

#include <initializer_list>
#include <memory>

namespace ravlin {

/// A few constant texts in one piece of memory that copies share. In a list of 100,000 rows of six texts each, separate
/// strings would spend more on headers and allocations than on characters.
///
/// A text takes one byte a character if Latin-1 can hold it, else two. Whatever a QString holds comes back unchanged,
/// lone surrogates and zeros included. Several threads may use copies.
class PackedTexts
{
public:
    PackedTexts() = default;
    PackedTexts(std::initializer_list<QStringView> texts);

    /// The text at that position, from 0; empty if there is none.
    QString at(int position) const;
    /// Compares without making a QString.
    bool equals(int position, QStringView text) const;
    /// Whether both share memory. Equal texts need not.
    bool isCopyOf(const PackedTexts &other) const { return m_memory && m_memory == other.m_memory; }

private:
    struct Stretch
    {
        const char *bytes = nullptr;
        qsizetype size = 0; ///< in characters
        bool isWide = false;
    };
    Stretch stretch(int position) const;

    std::shared_ptr<const char[]> m_memory; ///< the number of texts, an entry for each, their characters
};

/// What the list knows of a file: its name in its folder and what it shows of its tags. Immutable, packed, and shared
/// between the row and the tag cache.
class ListedFile
{
public:
    ListedFile() = default;
    explicit ListedFile(QStringView name, const ListFields &tag = {});

    QString name() const { return m_texts.at(Name); }
    bool isNamed(QStringView name) const { return m_texts.equals(Name, name); }
    /// Whether one is a copy of the other. Equal files need not be.
    bool isCopyOf(const ListedFile &other) const { return m_texts.isCopyOf(other.m_texts); }

    QString title() const { return m_texts.at(Title); }
    QString artist() const { return m_texts.at(Artist); }
    QString album() const { return m_texts.at(Album); }
    QString year() const { return m_texts.at(Year); }
    QString track() const { return m_texts.at(Track); }
    bool hasV1() const { return m_hasV1; }
    bool hasV2() const { return m_hasV2; }
    /// Whether the tag is too large, so that fields may be missing.
    bool isCut() const { return m_isCut; }
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
    bool m_isCut = false;
};

/// One row of the file list.
struct ListRow
{
    QString prefix; ///< the path from the listed folder to the file's, with the separator at its end; may be empty
    ListedFile file;

    /// Identifies the row in its list.
    QString text() const { return prefix + file.name(); }
    bool hasText(QStringView text) const { return text.startsWith(prefix) && file.isNamed(text.sliced(prefix.size())); }
    /// What the track column shows: a number below 10 gets a leading zero.
    QString trackColumn() const;
    /// Takes the other's tags and keeps its own name.
    void takeTags(const ListedFile &other);
};

} // namespace ravlin
