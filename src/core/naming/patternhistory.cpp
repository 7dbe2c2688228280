// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/naming/patternhistory.h"

#include "core/app/settings.h"

namespace ravlin {

QString PatternHistory::key(qsizetype index) const
{
    return m_name.toString() + u' ' + QString::number(index + 1);
}

PatternHistory PatternHistory::restored(QStringView name, const Settings &settings)
{
    PatternHistory history(name);
    // Backwards, so that using them one by one restores the order. A file edited by hand may have gaps and duplicates.
    for (qsizetype index = Capacity - 1; index >= 0; --index)
        history.use(settings.read(history.key(index)));
    return history;
}

void PatternHistory::store(Settings &settings) const
{
    for (qsizetype index = 0; index < Capacity; ++index) {
        const QString text = m_patterns.value(index);
        // Don't write a key that never had a value: the file would fill with empty lines.
        if (settings.read(key(index)) != text)
            settings.write(key(index), text);
    }
}

void PatternHistory::setPatterns(const QStringList &patterns)
{
    m_patterns = patterns;
    m_patterns.removeAll(QString());
    m_patterns.removeDuplicates();
    if (m_patterns.size() > Capacity)
        m_patterns.resize(Capacity);
}

void PatternHistory::use(const QString &pattern)
{
    if (pattern.isEmpty())
        return;
    m_patterns.removeAll(pattern);
    m_patterns.prepend(pattern);
    if (m_patterns.size() > Capacity)
        m_patterns.resize(Capacity);
}

} // namespace ravlin
