// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/naming/extraction.h"

#include "core/naming/filename.h"
#include "core/naming/placeholders.h"
#include "core/platform/textsafety.h"
#include "core/tags/store/tagstore.h"

namespace ravlin {

namespace {

/// What one placeholder of a pattern requires.
struct Step
{
    QStringView literal;                 ///< between the previous placeholder and this one
    QString TagRecord::*field = nullptr; ///< nullptr: the value is skipped
    QStringView separator;               ///< ends the value
    bool takesRest = false;              ///< there is no separator: the value runs to the end
};

/// UTF-16 units of the code point at the start of the text; 0 for an empty text.
qsizetype firstSize(QStringView text)
{
    if (text.size() > 1 && text[0].isHighSurrogate() && text[1].isLowSurrogate())
        return 2;
    return text.isEmpty() ? 0 : 1;
}

char32_t firstCharacter(QStringView text)
{
    if (text.isEmpty())
        return 0;
    return firstSize(text) == 2 ? QChar::surrogateToUcs4(text[0], text[1]) : char32_t(text[0].unicode());
}

/// The step for the placeholder at index percent. Leaves in pattern what is behind it.
Step takeStep(QStringView &pattern, qsizetype percent)
{
    Step step;
    step.literal = pattern.first(percent);
    const QStringView behind = pattern.sliced(percent + 1);
    step.field = extractionField(firstCharacter(behind));
    pattern = behind.sliced(firstSize(behind));
    step.takesRest = pattern.isEmpty();
    const qsizetype next = pattern.indexOf(u'%');
    step.separator = pattern.first(next >= 0 ? next : firstSize(pattern));
    return step;
}

} // namespace

bool MatchNameToPattern(const QString &name, const QString &pattern, TagRecord &record)
{
    TagEdits edits;
    const bool isMatched = MatchNameToPattern(name, pattern, edits);
    record = edits.appliedTo(std::move(record));
    return isMatched;
}

bool MatchNameToPattern(const QString &name, const QString &pattern, TagEdits &edits)
{
    QStringView patternLeft = pattern;
    QStringView nameLeft = name;
    for (qsizetype percent = patternLeft.indexOf(u'%'); percent >= 0; percent = patternLeft.indexOf(u'%')) {
        const Step step = takeStep(patternLeft, percent);
        // A null text does not start with an empty one, according to Qt.
        if (!step.literal.isEmpty() && !nameLeft.startsWith(step.literal))
            return false;
        nameLeft = nameLeft.sliced(step.literal.size());
        qsizetype end = nameLeft.size();
        if (!step.takesRest)
            end = step.separator.isEmpty() ? 0 : nameLeft.indexOf(step.separator);
        if (end < 0)
            return false;
        if (step.field)
            edits.set(step.field, platform::withoutControls(nameLeft.first(end).toString()));
        nameLeft = nameLeft.sliced(end);
    }
    return true;
}

Result<Extraction> prepareExtraction(const QString &path, const QString &pattern, const TagStore &store)
{
    Result<TagRecord> record = store.readForSaving(path);
    if (!record)
        return tl::unexpected(record.error());
    Extraction extraction;
    extraction.present = *record;
    extraction.isMatched = MatchNameToPattern(nameAsText(bareName(path)), pattern, extraction.edits);
    extraction.record = (store.savesOnlyEdited() ? extraction.edits.storable() : extraction.edits).appliedTo(*record);
    return extraction;
}

namespace {

/// The record that was saved; nothing if the name does not fit.
Result<std::optional<TagRecord>> extract(const QString &path, const QString &pattern, TagStore &store)
{
    TagEdits edits;
    if (!MatchNameToPattern(nameAsText(bareName(path)), pattern, edits))
        return store.readForSaving(path).map([](const TagRecord &) { return std::optional<TagRecord>(); });
    return store.save(path, [&](const TagRecord &) { return edits; }).map([](TagRecord &&record) {
        return std::optional(std::move(record));
    });
}

} // namespace

ExtractionOutcome runExtraction(const QStringList &paths, const QString &pattern, TagStore &store,
    const ProgramState &state, const ProgressReport &progress, const RecordSaved &saved)
{
    constexpr BatchPolicy PassingOverFailures{OnFailure::GoOn, OnCancelled::StopTaking};
    std::vector<bool> isWritten;
    const auto take = [&](const QString &path) -> Result<void> {
        const Result<std::optional<TagRecord>> record = extract(path, pattern, store);
        isWritten.push_back(record ? record->has_value() : record.error().code == ErrorCode::NotStorable);
        if (!record)
            return tl::unexpected(record.error());
        if (saved && *record)
            saved(path, **record);
        return {};
    };
    BatchOutcome rows = runBatch(paths, state, progress, take, PassingOverFailures);
    return {std::move(rows), std::move(isWritten)};
}

} // namespace ravlin
