// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/app/historytexts.h"

#include "core/app/idiomas.h"
#include "core/platform/path.h"

#include <algorithm>
#include <array>

namespace ravlin {

namespace {

struct FieldCaption
{
    QStringView name;
    Caption caption{};
};

constexpr std::array FieldCaptions{FieldCaption{u"title", Caption::Title}, FieldCaption{u"artist", Caption::Artist},
    FieldCaption{u"album", Caption::Album}, FieldCaption{u"year", Caption::Year},
    FieldCaption{u"track", Caption::Track}, FieldCaption{u"genre", Caption::Genre},
    FieldCaption{u"comment", Caption::Comment}};

Text kindCaption(history::Kind kind)
{
    switch (kind) {
    case history::Kind::Single:
        return Text::KindSingle;
    case history::Kind::Multi:
        return Text::KindMulti;
    case history::Kind::Extract:
        return Text::KindExtract;
    case history::Kind::Lookup:
        return Text::KindLookup;
    case history::Kind::RemoveTags:
        return Text::KindRemoveTags;
    case history::Kind::Rename:
        return Text::KindRename;
    case history::Kind::RenameFolder:
        return Text::KindRenameFolder;
    case history::Kind::Copy:
        return Text::KindCopy;
    case history::Kind::Move:
        return Text::KindMove;
    case history::Kind::Trash:
        return Text::KindTrash;
    case history::Kind::Delete:
        return Text::KindDelete;
    case history::Kind::Playlist:
        break;
    }
    return Text::KindPlaylist;
}

Text changeCaption(storage::ChangeKind change)
{
    switch (change) {
    case storage::ChangeKind::Content:
        return Text::ChangeContent;
    case storage::ChangeKind::Move:
        return Text::KindMove;
    case storage::ChangeKind::Copy:
        return Text::KindCopy;
    case storage::ChangeKind::Trash:
        return Text::KindTrash;
    case storage::ChangeKind::Delete:
        return Text::KindDelete;
    case storage::ChangeKind::Create:
        break;
    }
    return Text::ChangeCreated;
}

} // namespace

DaySpan daySpan(QDate day, QDate today, Qt::DayOfWeek firstDayOfWeek)
{
    if (day >= today)
        return DaySpan::Today;
    const int daysOfWeek = (today.dayOfWeek() - firstDayOfWeek + 7) % 7; // that have passed
    return day >= today.addDays(-daysOfWeek) ? DaySpan::ThisWeek : DaySpan::Before;
}

Text daySpanText(DaySpan span)
{
    switch (span) {
    case DaySpan::Today:
        return Text::DayToday;
    case DaySpan::ThisWeek:
        return Text::DayThisWeek;
    case DaySpan::Before:
        break;
    }
    return Text::DayBefore;
}

QString timeText(const QDateTime &time, DaySpan span, const QLocale &locale)
{
    const QString clock = locale.toString(time.time(), QLocale::ShortFormat);
    switch (span) {
    case DaySpan::Today:
        return clock;
    case DaySpan::ThisWeek:
        return locale.dayName(time.date().dayOfWeek()) + u' ' + clock;
    case DaySpan::Before:
        break;
    }
    return locale.toString(time.date(), QLocale::ShortFormat) + u' ' + clock;
}

QString kindText(const Captions &captions, history::Kind kind)
{
    return captions.text(kindCaption(kind));
}

QString fieldText(const Captions &captions, const QString &name)
{
    const auto *const field = std::ranges::find(FieldCaptions, name, &FieldCaption::name);
    return field == FieldCaptions.end() ? name : captions.text(field->caption);
}

QString outcomeText(const Captions &captions, const history::FileRecord &record)
{
    switch (record.state) {
    case history::FileState::Pending:
        return captions.text(Text::ChangePending);
    case history::FileState::Failed:
        return captions.text(Text::ChangeFailed)
            .arg(captions.errorText(record.error ? record.error->code : ErrorCode::Io));
    case history::FileState::Undone:
        return captions.text(Text::ChangeUndone);
    case history::FileState::Done:
        break;
    }
    return captions.text(changeCaption(record.change));
}

QString filesText(const Captions &captions, const history::Entry &entry)
{
    const QString files = QString::number(entry.fileCount);
    if (entry.undoneCount == 0)
        return files;
    if (entry.undoneCount >= entry.fileCount)
        return files + captions.mark(u';') + u' ' + captions.text(Text::ChangeUndone);
    return files + captions.mark(u';') + u' ' + captions.text(Text::HistoryFilesUndone).arg(entry.undoneCount);
}

QString pathWithin(const QString &path, const QString &folder)
{
    if (folder.isEmpty())
        return path;
    const QString above = platform::withEndSeparator(folder);
    return path.size() > above.size() && path.startsWith(above) ? path.sliced(above.size()) : path;
}

ChangeLine fileLine(const history::FileRecord &record, const QString &folder)
{
    const QString before = pathWithin(record.path, folder);
    const QString after = pathWithin(record.newPath, folder);
    if (record.path.isEmpty())
        return {after, {}, {}};
    return record.newPath.isEmpty() ? ChangeLine{before, {}, {}} : ChangeLine{before, before, after};
}

ChangeLine valueLine(const Captions &captions, const storage::ValueChange &value)
{
    return {fieldText(captions, value.name), value.before, value.after};
}

} // namespace ravlin
