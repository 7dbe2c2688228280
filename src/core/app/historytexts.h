// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/texttable.h"
#include "core/history/history.h"

#include <QDate>
#include <QDateTime>
#include <QLocale>
#include <QString>

/// The history in the user's words. The texts may hold foreign ones: make them fit to be shown (showntext.h).
namespace ravlin {

class Captions;

/// How long ago an entry was made, as the window of the history groups them.
enum class DaySpan
{
    Today,
    ThisWeek, ///< not today
    Before,
};

inline constexpr int DaySpanCount = 3;

/// A time of the clock that is still to come counts as today.
DaySpan daySpan(QDate day, QDate today, Qt::DayOfWeek firstDayOfWeek);
Text daySpanText(DaySpan span);

/// When an entry was made, as short as its group allows: the time, the day of the week with it, or the whole date.
QString timeText(const QDateTime &time, DaySpan span, const QLocale &locale);

QString kindText(const Captions &captions, history::Kind kind);
/// A field of a tag. A name without a caption stays as it is.
QString fieldText(const Captions &captions, const QString &name);
/// What became of the file: what was done to it, that this was undone, or why it failed.
QString outcomeText(const Captions &captions, const history::FileRecord &record);
/// How many files an entry has and how many of them are undone.
QString filesText(const Captions &captions, const history::Entry &entry);

/// The path as seen from the folder, if it is in there.
QString pathWithin(const QString &path, const QString &folder);

/// A line about a file: what a field, or the path, was and is now.
struct ChangeLine
{
    QString name;
    QString before; ///< empty: there was nothing
    QString after;

    bool operator==(const ChangeLine &) const = default;
};

/// The file's own line, which bears its path before or, of a new one, after. before and after are set if it changed.
ChangeLine fileLine(const history::FileRecord &record, const QString &folder);
/// The line of one of the file's values.
ChangeLine valueLine(const Captions &captions, const storage::ValueChange &value);

} // namespace ravlin
