// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/list/listsort.h"

#include "core/platform/parallel.h"
#include "core/platform/textorder.h"

#include <QDateTime>

#include <algorithm>
#include <iterator>
#include <limits>
#include <numeric>

namespace ravlin {

namespace {

/// A TextOrder belongs to one thread, so each stretch of values gets its own.
constexpr std::size_t StretchSize = 4096;

double numberOf(const QString &text, const QLocale &locale)
{
    bool isNumber = false;
    double number = locale.toDouble(text.trimmed(), &isNumber);
    // Some locales group only long numbers (Spanish: from five digits); people group shorter ones, too.
    if (!isNumber)
        number = locale.toDouble(text.trimmed().remove(locale.groupSeparator()), &isNumber);
    return isNumber ? number : -std::numeric_limits<double>::infinity();
}

/// Milliseconds since 1970.
qint64 dateOf(const QString &text, const QLocale &locale)
{
    const QString value = text.trimmed();
    for (const QLocale::FormatType format : {QLocale::ShortFormat, QLocale::LongFormat}) {
        QDateTime time = locale.toDateTime(value, format);
        if (!time.isValid())
            time = locale.toDate(value, format).startOfDay();
        if (time.isValid())
            return time.toMSecsSinceEpoch();
    }
    const QDateTime time = QDateTime::fromString(value, Qt::ISODate);
    return time.isValid() ? time.toMSecsSinceEpoch() : std::numeric_limits<qint64>::min();
}

template <typename Key>
std::vector<std::size_t> positionsByKey(const std::vector<Key> &keys, Qt::SortOrder order)
{
    std::vector<std::size_t> positions(keys.size());
    std::iota(positions.begin(), positions.end(), std::size_t{0});
    const auto isLess = [&](std::size_t a, std::size_t b) { return keys[a] < keys[b]; };
    const auto isGreater = [&](std::size_t a, std::size_t b) { return keys[b] < keys[a]; };
    if (order == Qt::AscendingOrder)
        std::stable_sort(positions.begin(), positions.end(), isLess);
    else
        std::stable_sort(positions.begin(), positions.end(), isGreater);
    return positions;
}

template <typename Key, typename MakeKey>
std::vector<Key> keysOf(std::size_t count, const std::function<QString(std::size_t)> &text, MakeKey makeKey)
{
    std::vector<Key> keys(count);
    platform::parallelFor(
        count, [&](std::size_t i) { keys[i] = makeKey(text(i)); }, StretchSize);
    return keys;
}

/// Sort keys compare as bytes: the rules of the language are applied only once for each value.
std::vector<platform::TextKey> textKeys(
    std::size_t count, const std::function<QString(std::size_t)> &text, const QLocale &locale)
{
    std::vector<platform::TextKey> keys(count);
    const std::size_t stretches = (count + StretchSize - 1) / StretchSize;
    const auto makeStretch = [&](std::size_t stretch) {
        const platform::TextOrder textOrder(locale);
        const std::size_t end = std::min(count, (stretch + 1) * StretchSize);
        for (std::size_t i = stretch * StretchSize; i < end; ++i)
            keys[i] = textOrder.keyOf(text(i));
    };
    platform::parallelFor(stretches, makeStretch, 1);
    return keys;
}

} // namespace

SortKind sortKindFromTag(QStringView headerTag)
{
    if (headerTag.compare(u"numeric", Qt::CaseInsensitive) == 0)
        return SortKind::Numeric;
    if (headerTag.compare(u"date", Qt::CaseInsensitive) == 0)
        return SortKind::Date;
    return SortKind::Text;
}

ListOrder SortListView(const ListOrder &current, int clickedColumn, QStringView headerTag)
{
    ListOrder next;
    next.column = clickedColumn;
    const bool turnsRound = clickedColumn == current.column && current.order == Qt::AscendingOrder;
    next.order = turnsRound ? Qt::DescendingOrder : Qt::AscendingOrder;
    next.automatic = sortKindFromTag(headerTag) == SortKind::Text;
    return next;
}

std::vector<std::size_t> sortedPositions(std::size_t count, const std::function<QString(std::size_t)> &text,
    SortKind kind, Qt::SortOrder order, const QLocale &locale)
{
    switch (kind) {
    case SortKind::Numeric:
        return positionsByKey(
            keysOf<double>(count, text, [&](const QString &value) { return numberOf(value, locale); }), order);
    case SortKind::Date:
        return positionsByKey(
            keysOf<qint64>(count, text, [&](const QString &value) { return dateOf(value, locale); }), order);
    case SortKind::Text:
        break;
    }
    return positionsByKey(textKeys(count, text, locale), order);
}

std::vector<std::size_t> sortedPositionsWith(const std::vector<std::size_t> &others,
    const std::vector<std::size_t> &sorted, const std::function<QString(std::size_t)> &text, Qt::SortOrder order,
    const QLocale &locale)
{
    struct Value
    {
        platform::TextKey key;
        std::size_t position = 0;
    };
    const platform::TextOrder textOrder(locale);
    const auto valueAt = [&](std::size_t position) { return Value{textOrder.keyOf(text(position)), position}; };
    const auto isBefore = [order](const Value &a, const Value &b) {
        const bool isLess = a.key < b.key;
        const bool isEqual = !isLess && !(b.key < a.key);
        return isEqual ? a.position < b.position : isLess == (order == Qt::AscendingOrder);
    };
    std::vector<Value> added;
    added.reserve(others.size());
    std::transform(others.begin(), others.end(), std::back_inserter(added), valueAt);
    std::sort(added.begin(), added.end(), isBefore);

    std::vector<std::size_t> all;
    all.reserve(sorted.size() + added.size());
    auto rest = sorted.begin();
    for (const Value &value : added) {
        const auto place = std::partition_point(
            rest, sorted.end(), [&](std::size_t position) { return isBefore(valueAt(position), value); });
        all.insert(all.end(), rest, place);
        all.push_back(value.position);
        rest = place;
    }
    all.insert(all.end(), rest, sorted.end());
    return all;
}

} // namespace ravlin
