// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

namespace ravlin {

class Settings;

/// The patterns used in one place, for its drop-down list: most recent first, without duplicates, at most Capacity.
/// Empty patterns are not kept.
///
/// The settings keep one key for each pattern: the list's name and the place in the list, from 1.
class PatternHistory
{
public:
    static constexpr qsizetype Capacity = 20;

    /// Names of the lists, which start their keys.
    static constexpr QStringView Extraction = u"extract pattern"; ///< of `tpatron`
    static constexpr QStringView Renaming = u"rename pattern";    ///< of `tavanzado`
    static constexpr QStringView Folder = u"dir rename pattern";  ///< of `avanzado`

    /// An empty list. name: one of the above.
    explicit PatternHistory(QStringView name) : m_name(name) {}
    /// The list from the settings.
    static PatternHistory restored(QStringView name, const Settings &settings);
    /// Settings::save() writes it to the file.
    void store(Settings &settings) const;

    const QStringList &patterns() const { return m_patterns; }
    /// Replaces the list, most recent first. Empty patterns and duplicates are left out, as always.
    void setPatterns(const QStringList &patterns);
    /// Moves a pattern that is being used to the front.
    void use(const QString &pattern);

private:
    QString key(qsizetype index) const;

    QStringView m_name;
    QStringList m_patterns;
};

} // namespace ravlin
