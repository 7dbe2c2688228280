// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/naming/newname.h"

#include "core/naming/placeholders.h"
#include "core/naming/sessionchoices.h"
#include "core/naming/texttransforms.h"
#include "core/platform/path.h"

#include <QDir>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace ravlin {

namespace {

bool isDigit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

/// The two values as a name has them, or the old name where one is missing.
QString joined(const QString &first, const QString &second, const QString &oldBareName)
{
    if (first.isEmpty() || second.isEmpty())
        return oldBareName;
    return CleanFileName(first) + u" - "_s + CleanFileName(second);
}

QString filledPattern(const QString &pattern, const TagRecord &record, const QString &oldBareName)
{
    QString name = QDir::toNativeSeparators(pattern);
    for (const Placeholder &placeholder : renamePlaceholders()) {
        const QString &raw = placeholder.field ? record.*(placeholder.field) : oldBareName;
        if (raw.isEmpty())
            continue;
        const bool isTrack = placeholder.field == &TagRecord::Track;
        name = SubstitutePlaceholder(name, placeholder.token(), CleanFileName(isTrack ? trackInName(raw) : raw));
    }
    return name;
}

} // namespace

NamingRule NamingRule::chosen(const SessionChoices &choices)
{
    return {choices.renameMode, choices.renamePattern, choices.conversions[RenameCasePair],
        choices.conversions[RenameReplacePair]};
}

QString trackInName(const QString &track)
{
    const QString number = track.section(u'/', 0, 0).trimmed();
    if (number.isEmpty() || !std::ranges::all_of(number, isDigit))
        return track;
    const auto significant = std::ranges::find_if(number, [](QChar digit) { return digit != u'0'; });
    return number.last(std::distance(significant, number.end())).rightJustified(2, u'0');
}

QString BuildNewName(const QString &oldBareName, const TagRecord &record, const NamingRule &rule)
{
    QString name = oldBareName;
    if (rule.mode == NamingRule::ArtistTitle)
        name = joined(record.Artist, record.Title, oldBareName);
    else if (rule.mode == NamingRule::TrackTitle)
        name = joined(trackInName(record.Track), record.Title, oldBareName);
    else if (rule.mode == NamingRule::Pattern)
        name = filledPattern(rule.pattern, record, oldBareName);
    name = applyConversion(ConversionKind::Case, rule.letterCase, name);
    return applyConversion(ConversionKind::Replace, rule.replacement, name);
}

} // namespace ravlin
