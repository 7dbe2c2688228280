// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/naming/lostfields.h"

#include "core/app/idiomas.h"
#include "core/app/showntext.h"

#include <algorithm>
#include <array>

namespace ravlin {

namespace {

struct FieldName
{
    QString TagRecord::*field;
    Caption name;
};

/// In the order of the preview's columns, then the fields that it does not show.
constexpr std::array Fields{FieldName{&TagRecord::Track, Caption::Track}, FieldName{&TagRecord::Title, Caption::Title},
    FieldName{&TagRecord::Artist, Caption::Artist}, FieldName{&TagRecord::Album, Caption::Album},
    FieldName{&TagRecord::Year, Caption::Year}, FieldName{&TagRecord::Genre, Caption::Genre},
    FieldName{&TagRecord::Comment, Caption::Comment}};

Text reasonNotSaved(QString TagRecord::*field)
{
    if (field == &TagRecord::Year)
        return Text::RemarkYearNotSaved;
    return field == &TagRecord::Track ? Text::RemarkTrackNotSaved : Text::RemarkGenreNotSaved;
}

/// A caption as a word within a sentence.
QString nameOf(QString TagRecord::*field, const Captions &captions)
{
    const auto *const found = std::ranges::find(Fields, field, &FieldName::field);
    return captions.text(found->name).remove(u'&');
}

} // namespace

std::vector<LostField> lostFields(const TagRecord &present, const TagRecord &wanted)
{
    std::vector<LostField> lost;
    for (const auto &[field, name] : Fields) {
        const QString &text = wanted.*field;
        const bool isPresent = !(present.*field).isEmpty();
        if (!isWritable(field, text))
            lost.push_back({field, text, isPresent});
        else if (text.isEmpty() && isPresent)
            lost.push_back({field, {}, true});
    }
    return lost;
}

std::vector<LostField> lostByEdits(const TagRecord &present, const TagEdits &edits)
{
    std::vector<LostField> lost;
    for (const FieldName &each : Fields) {
        const QString *text = edits.text(each.field);
        if (text == nullptr || *text == present.*each.field)
            continue;
        if (text->isEmpty() || !isStorable(each.field, *text))
            lost.push_back({each.field, *text, text->isEmpty()});
    }
    return lost;
}

QString remarkNotSaved(TagEdits::Field field, const QString &text, const Captions &captions)
{
    return captions.text(reasonNotSaved(field)).arg(shownLine(text, MostNameLetters));
}

QStringList remarksAbout(const std::vector<LostField> &lost, const Captions &captions)
{
    QStringList remarks;
    QStringList removed;
    for (const LostField &one : lost) {
        if (!one.text.isEmpty())
            remarks << remarkNotSaved(one.field, one.text, captions);
        if (one.isRemoved)
            removed << nameOf(one.field, captions);
    }
    if (!removed.isEmpty())
        remarks << captions.text(Text::RemarkFieldsRemoved).arg(removed.join(QStringLiteral(", ")));
    return remarks;
}

} // namespace ravlin
