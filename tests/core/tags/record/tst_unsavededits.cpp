// SPDX-License-Identifier: GPL-3.0-or-later
// Contract of unsaved texts as the settings keep them: they come back as they were, whatever is in them, on one line of
// Latin letters; a text that somebody else wrote, or that was cut, gives nothing.

#include "core/tags/record/unsavededits.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;

class TestUnsavedEdits : public QObject
{
    Q_OBJECT

private:
    static UnsavedEdits example()
    {
        UnsavedEdits edits;
        edits.path = u"/m/a b "_s + QChar(0xDCFF) + u".mp3"_s; // a byte that is not UTF-8
        edits.record = {.Title = u"ÄÖ ≠\n%1 [x]=;"_s,
            .Artist = QString(70'000, u'a'),
            .Album = u"al"_s,
            .Year = u"1999"_s,
            .Comment = u"co"_s,
            .Track = u"7"_s,
            .Genre = u"Blues"_s};
        return edits;
    }

private Q_SLOTS:
    void theyComeBack()
    {
        const QString text = example().toText();
        QVERIFY(std::ranges::all_of(text, [](QChar letter) { return letter > u' ' && letter < QChar(0x7F); }));
        QCOMPARE(UnsavedEdits::fromText(text), example());
    }

    void anythingElseGivesNothing()
    {
        const QString text = example().toText();
        for (const QString &bad : {QString(), u"x"_s, u"AAAA"_s, text.left(text.size() / 2), text + u"AAAA"_s,
                 u"Ag"_s + text.mid(2), UnsavedEdits().toText(), u"AX///////////w=="_s})
            QVERIFY2(!UnsavedEdits::fromText(bad), qPrintable(bad.left(40)));
    }
};

QTEST_APPLESS_MAIN(TestUnsavedEdits)
#include "tst_unsavededits.moc"
