// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/app/notice.h"

#include "core/app/idiomas.h"

#include <array>
#include <map>

namespace ravlin {

namespace {

using history::FileRecord;
using history::FileState;
using history::Kind;
using storage::ChangeKind;

/// A text for one and a text for several, in which %1 is their number.
struct Plural
{
    Text one;
    Text many;
};

QString counted(const Captions &captions, Plural plural, qsizetype count)
{
    return count == 1 ? captions.text(plural.one) : captions.text(plural.many).arg(captions.locale().toString(count));
}

/// A field as the history names it, and the text that names it to people.
struct FieldName
{
    QStringView name;
    Text withArticle{};
};

constexpr std::array FieldNames{
    FieldName{u"title", Text::FieldTitle},
    FieldName{u"artist", Text::FieldArtist},
    FieldName{u"album", Text::FieldAlbum},
    FieldName{u"year", Text::FieldYear},
    FieldName{u"track", Text::FieldTrack},
    FieldName{u"genre", Text::FieldGenre},
    FieldName{u"comment", Text::FieldComment},
};

const FieldName *fieldNamed(const QString &name)
{
    for (const FieldName &field : FieldNames) {
        if (name == field.name)
            return &field;
    }
    return nullptr;
}

/// One kind of change in one kind of operation.
QString doneText(const Captions &captions, Kind operation, ChangeKind change, qsizetype count)
{
    switch (change) {
    case ChangeKind::Content:
        return counted(captions,
            operation == Kind::RemoveTags ? Plural{Text::NoticeTagRemovedOne, Text::NoticeTagRemovedMany}
                                          : Plural{Text::NoticeWrittenOne, Text::NoticeWrittenMany},
            count);
    case ChangeKind::Move:
        if (operation == Kind::RenameFolder && count == 1)
            return captions.text(Text::NoticeFolderRenamed);
        return counted(captions,
            operation == Kind::Rename || operation == Kind::RenameFolder
                ? Plural{Text::NoticeRenamedOne, Text::NoticeRenamedMany}
                : Plural{Text::NoticeMovedOne, Text::NoticeMovedMany},
            count);
    case ChangeKind::Copy:
        return counted(captions, {Text::NoticeCopiedOne, Text::NoticeCopiedMany}, count);
    case ChangeKind::Trash:
        return counted(captions, {Text::NoticeTrashedOne, Text::NoticeTrashedMany}, count);
    case ChangeKind::Delete:
        return counted(captions, {Text::NoticeDeletedOne, Text::NoticeDeletedMany}, count);
    case ChangeKind::Create:
        // A folder made on the way is not worth a word.
        return operation == Kind::Playlist ? captions.text(Text::NoticePlaylist) : QString();
    }
    return {};
}

ChangeKind mainChange(Kind operation)
{
    switch (operation) {
    case Kind::Single:
    case Kind::Multi:
    case Kind::Extract:
    case Kind::Lookup:
    case Kind::RemoveTags:
        return ChangeKind::Content;
    case Kind::Rename:
    case Kind::RenameFolder:
    case Kind::Move:
        return ChangeKind::Move;
    case Kind::Copy:
        return ChangeKind::Copy;
    case Kind::Trash:
        return ChangeKind::Trash;
    case Kind::Delete:
        return ChangeKind::Delete;
    case Kind::Playlist:
        return ChangeKind::Create;
    }
    return ChangeKind::Content;
}

void addDone(const Captions &captions, const history::Summary &summary, QStringList &parts)
{
    std::map<ChangeKind, qsizetype> counts;
    qsizetype listed = 0;
    for (const FileRecord &file : summary.files) {
        if (file.state == FileState::Done) {
            ++counts[file.change];
            ++listed;
        }
    }
    // Of very many files the summary holds a part.
    if (summary.doneCount > listed)
        counts[mainChange(summary.entry.kind)] += summary.doneCount - listed;
    for (const auto &[change, count] : counts) {
        if (const QString text = doneText(captions, summary.entry.kind, change, count); !text.isEmpty())
            parts << text;
    }
}

/// The fields whose values are gone, for each how many files lost it. Not after a tag was removed: it says so already.
void addRemoved(const Captions &captions, const history::Summary &summary, QStringList &parts)
{
    if (summary.entry.kind == Kind::RemoveTags)
        return;
    std::array<qsizetype, FieldNames.size()> counts{};
    for (const FileRecord &file : summary.files) {
        for (const storage::ValueChange &value : file.values) {
            const FieldName *field = fieldNamed(value.name);
            if (file.state == FileState::Done && field != nullptr && !value.before.isEmpty() && value.after.isEmpty())
                ++counts[static_cast<std::size_t>(field - FieldNames.data())];
        }
    }
    for (std::size_t i = 0; i < FieldNames.size(); ++i) {
        const QString field = captions.text(FieldNames[i].withArticle);
        if (counts[i] > 0 && summary.doneCount == 1)
            parts << captions.text(Text::NoticeFieldOnly).arg(field);
        else if (counts[i] == 1)
            parts << captions.text(Text::NoticeFieldOne).arg(field);
        else if (counts[i] > 1)
            parts << captions.text(Text::NoticeFieldMany).arg(field, captions.locale().toString(counts[i]));
    }
}

} // namespace

bool isWorthTelling(const history::Summary &summary)
{
    return summary.doneCount > 0 || summary.failedCount > 0 || summary.notTriedCount > 0;
}

QString noticeText(const Captions &captions, const history::Summary &summary, SummaryOf what)
{
    QStringList parts;
    if (what == SummaryOf::Change) {
        addDone(captions, summary, parts);
        addRemoved(captions, summary, parts);
    } else if (summary.doneCount > 0) {
        parts << counted(captions,
            what == SummaryOf::Undo ? Plural{Text::NoticeUndoneOne, Text::NoticeUndoneMany}
                                    : Plural{Text::NoticeRedoneOne, Text::NoticeRedoneMany},
            summary.doneCount);
    }
    if (summary.failedCount > 0)
        parts << counted(captions, {Text::NoticeFailedOne, Text::NoticeFailedMany}, summary.failedCount);
    if (summary.notTriedCount > 0)
        parts << counted(captions, {Text::NoticeNotTriedOne, Text::NoticeNotTriedMany}, summary.notTriedCount);
    if (!summary.changedByOthers.isEmpty())
        parts << counted(captions, {Text::NoticeOthersOne, Text::NoticeOthersMany}, summary.changedByOthers.size());
    if (summary.problem && summary.doneCount > 0)
        parts << captions.text(Text::NoticeForGood).arg(captions.errorText(summary.problem->code));
    return parts.join(QStringLiteral(" · "));
}

QString noticeText(const Captions &captions, const history::Recovery &recovery)
{
    QStringList parts;
    if (const qsizetype count = recovery.completed.size() + recovery.rolledBack.size(); count > 0)
        parts << counted(captions, {Text::NoticeRecoveredOne, Text::NoticeRecoveredMany}, count);
    if (const auto count = static_cast<qsizetype>(recovery.left.size()); count > 0)
        parts << counted(captions, {Text::NoticeInterruptedOne, Text::NoticeInterruptedMany}, count);
    return parts.join(QStringLiteral(" · "));
}

QString fileCountText(const Captions &captions, qsizetype count)
{
    return counted(captions, {Text::CountFileOne, Text::CountFileMany}, count);
}

} // namespace ravlin
