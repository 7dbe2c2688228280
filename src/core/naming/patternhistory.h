// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

namespace ravlin {

class Settings;

/// The patterns that were used in one place, for its drop-down list: most recent first, none twice, not more than
/// Capacity. Empty patterns are not kept.
///
/// Lives in the settings under keys of its own, one a pattern: the list's name and its place in the list, from 1.
class PatternHistory
{
public:
    static constexpr qsizetype Capacity = 20;

    /// Names of the lists, which begin their keys.
    static constexpr QStringView Extraction = u"extract pattern"; ///< of `tpatron`
    static constexpr QStringView Renaming = u"rename pattern";    ///< of `tavanzado`
    static constexpr QStringView Folder = u"dir rename pattern";  ///< of `avanzado`

    /// An empty list. name: one of the above.
    explicit PatternHistory(QStringView name) : m_name(name) {}
    /// The list as the settings have it.
    static PatternHistory restored(QStringView name, const Settings &settings);
    /// Takes effect for the file with Settings::save().
    void store(Settings &settings) const;

    const QStringList &patterns() const { return m_patterns; }
    /// Another list in its place, most recent first; as always without empty patterns and with none twice.
    void setPatterns(const QStringList &patterns);
    /// The pattern was used: it comes first.
    void use(const QString &pattern);

private:
    QString key(qsizetype index) const;

    QStringView m_name;
    QStringList m_patterns;
};

} // namespace ravlin
