// SPDX-License-Identifier: GPL-3.0-or-later
// The tables of placeholders: which digit means which field for renaming, extraction and folders, which differ on
// purpose, and which label and caption belong to each.

#include "core/app/idiomas.h"
#include "core/naming/placeholders.h"

#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace ravlin;

namespace {

using Field = QString TagRecord::*;

const Placeholder *find(std::span<const Placeholder> table, char16_t digit)
{
    for (const Placeholder &entry : table) {
        if (entry.digit == digit)
            return &entry;
    }
    return nullptr;
}

/// The field of each digit from 1 on.
QList<Field> fieldsByDigit(std::span<const Placeholder> table, char16_t last)
{
    QList<Field> fields;
    for (char16_t digit = u'1'; digit <= last; ++digit) {
        const Placeholder *entry = find(table, digit);
        fields << (entry ? entry->field : nullptr);
    }
    return fields;
}

} // namespace

class TestPlaceholders : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void forRenaming()
    {
        const QList<Field> expected{&TagRecord::Artist, &TagRecord::Album, &TagRecord::Title, &TagRecord::Track,
            &TagRecord::Year, nullptr, &TagRecord::Genre, &TagRecord::Comment};
        QVERIFY(fieldsByDigit(renamePlaceholders(), u'8') == expected);
        QVERIFY(find(renamePlaceholders(), u'6'));
        QCOMPARE(renamePlaceholders().size(), 8U);
    }

    void forExtraction()
    {
        const QList<Field> expected{&TagRecord::Artist, &TagRecord::Album, &TagRecord::Title, &TagRecord::Track,
            &TagRecord::Year, &TagRecord::Genre, &TagRecord::Comment};
        QVERIFY(fieldsByDigit(extractionPlaceholders(), u'7') == expected);
        QCOMPARE(extractionPlaceholders().size(), 8U);
        const Placeholder *skipped = find(extractionPlaceholders(), u'0');
        QVERIFY(skipped);
        QVERIFY(!skipped->field);
    }

    void forFolders()
    {
        const QList<Field> expected{&TagRecord::Artist, &TagRecord::Album, &TagRecord::Year, &TagRecord::Genre};
        QVERIFY(fieldsByDigit(folderPlaceholders(), u'4') == expected);
        QCOMPARE(folderPlaceholders().size(), 4U);
    }

    void fillingGoesByRisingDigits()
    {
        const auto isRising = [](std::span<const Placeholder> table) {
            return std::ranges::is_sorted(table, {}, &Placeholder::digit);
        };
        QVERIFY(isRising(renamePlaceholders()));
        QVERIFY(isRising(folderPlaceholders()));
    }

    void unknownDigitsNameNoFieldInAnExtraction()
    {
        QVERIFY(extractionField(U'1') == &TagRecord::Artist);
        QVERIFY(extractionField(U'7') == &TagRecord::Comment);
        for (const char32_t digit : {U'0', U'8', U'9', U'x', U'%', U' ', char32_t(0), U'\U0001F600'})
            QVERIFY(!extractionField(digit));
    }

    void labels()
    {
        QStringList shown;
        for (const Placeholder &entry : extractionPlaceholders())
            shown << u"%1 %2"_s.arg(entry.label).arg(entry.token());
        const QStringList extraction{
            u"9 %1"_s, u"10 %2"_s, u"11 %4"_s, u"12 %5"_s, u"13 %0"_s, u"14 %6"_s, u"15 %7"_s, u"17 %3"_s};
        QCOMPARE(shown, extraction);
        shown.clear();
        for (const Placeholder &entry : renamePlaceholders())
            shown << u"%1 %2"_s.arg(entry.label).arg(entry.token());
        const QStringList renaming{
            u"0 %1"_s, u"1 %2"_s, u"2 %3"_s, u"3 %4"_s, u"4 %5"_s, u"5 %6"_s, u"6 %7"_s, u"7 %8"_s};
        QCOMPARE(shown, renaming);
    }

    void labelsShowPlaceholderAndWord()
    {
        Captions captions;
        captions.setLanguageName(u"spanish"_s);
        captions.fill();
        const auto shown = [&captions](std::span<const Placeholder> table, char16_t digit) {
            const Placeholder *entry = find(table, digit);
            return placeholderLabel(*entry, captions.text(entry->caption));
        };
        QCOMPARE(shown(renamePlaceholders(), u'1'), u"%1 - artista"_s);
        QCOMPARE(shown(renamePlaceholders(), u'2'), u"%2 - album"_s);
        QCOMPARE(shown(renamePlaceholders(), u'3'), u"%3 - título"_s);
        QCOMPARE(shown(renamePlaceholders(), u'4'), u"%4 - pista"_s);
        QCOMPARE(shown(renamePlaceholders(), u'5'), u"%5 - año"_s);
        QCOMPARE(shown(renamePlaceholders(), u'6'), u"%6 - fichero"_s);
        QCOMPARE(shown(renamePlaceholders(), u'7'), u"%7 - estilo"_s);
        QCOMPARE(shown(renamePlaceholders(), u'8'), u"%8 - comentarios"_s);
        QCOMPARE(shown(extractionPlaceholders(), u'0'), u"%0 - obviar"_s);
        QCOMPARE(shown(extractionPlaceholders(), u'6'), u"%6 - estilo"_s);
        QCOMPARE(shown(extractionPlaceholders(), u'7'), u"%7 - comentarios"_s);
        QCOMPARE(shown(folderPlaceholders(), u'3'), u"%3 - año"_s);
        QCOMPARE(shown(folderPlaceholders(), u'4'), u"%4 - estilo"_s);
    }
};

QTEST_GUILESS_MAIN(TestPlaceholders)
#include "tst_placeholders.moc"
