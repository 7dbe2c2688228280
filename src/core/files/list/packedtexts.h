// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringView>

#include <initializer_list>
#include <memory>

namespace ravlin {

/// A few texts that never change, in one piece of memory that copies share. A list of 100,000 rows of six texts each
/// would otherwise spend more on the texts' own heads and allocations than on what they say.
///
/// Each text takes a byte a character where Latin-1 holds it, else two; whatever a QString holds, lone surrogates and
/// zeros included, comes back as it was. Copies may be used by several threads.
class PackedTexts
{
public:
    PackedTexts() = default;
    PackedTexts(std::initializer_list<QStringView> texts);

    /// The text at that position, from 0; empty where none was packed.
    QString at(int position) const;
    /// Whether that text is this one. Makes no QString.
    bool equals(int position, QStringView text) const;
    /// Whether the two are copies of each other; others may say the same all the same.
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

} // namespace ravlin
