// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: a name that some system cannot store, or that would hide the file, is adjusted or refused with the reason.

#include "core/platform/namecheck.h"

#include <QtTest>

#include <string>

using namespace ravlin::platform;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(std::optional<NameProblem>)
Q_DECLARE_METATYPE(NameKind)

class TestNameCheck : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void checks_data();
    void checks();
    void lengthIsThatOfTheSystem();
    void numbersComeBeforeTheExtension();
    void numberedNamesFit();
    void neverHalfACharacter();
};

void TestNameCheck::checks_data()
{
    QTest::addColumn<NameKind>("kind");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("adjusted"); // empty: refused
    QTest::addColumn<std::optional<NameProblem>>("problem");
    const auto row = [](const char *what, NameKind kind, const QString &name, const QString &adjusted,
                         std::optional<NameProblem> problem = {}) {
        QTest::newRow(what) << kind << name << adjusted << problem;
    };
    const auto file = NameKind::File;
    const auto folder = NameKind::Folder;
    row("plain", file, u"Ana - Título.mp3"_s, u"Ana - Título.mp3"_s);
    row("dots before the extension are kept", file, u"ACDC - T.N.T..mp3"_s, u"ACDC - T.N.T..mp3"_s);
    row("a blank before the extension is kept", file, u"Song .mp3"_s, u"Song .mp3"_s);
    row("Japanese", file, u"夜の図書館.mp3"_s, u"夜の図書館.mp3"_s);
    row("control characters are taken out", file, u"a\tb\n\x7f.mp3"_s, u"ab.mp3"_s);
    row("a full stop at the start would hide it", file, u"...And Justice.mp3"_s, u"_..And Justice.mp3"_s);
    row("empty", file, u".mp3"_s, {}, NameProblem::Empty);
    row("blanks only", file, u"  .mp3"_s, {}, NameProblem::Empty);
    row("control characters only", file, u"\n.mp3"_s, {}, NameProblem::Empty);
    row("nothing at all", file, u""_s, {}, NameProblem::Empty);
    row("dot", file, u"..mp3"_s, {}, NameProblem::Dots);
    row("dot dot", file, u"...mp3"_s, {}, NameProblem::Dots);
    row("CON", file, u"CON.mp3"_s, {}, NameProblem::Reserved);
    row("nul in lower case", file, u"nul.mp3"_s, {}, NameProblem::Reserved);
    row("device before a full stop", file, u"Com1.live.mp3"_s, {}, NameProblem::Reserved);
    row("device and blank", file, u"LPT9 .mp3"_s, {}, NameProblem::Reserved);
    row("superscript digit", file, u"COM\u00B2.mp3"_s, {}, NameProblem::Reserved);
    row("COM0 is none", file, u"COM0.mp3"_s, u"COM0.mp3"_s);
    row("Con Air is none", file, u"Con Air.mp3"_s, u"Con Air.mp3"_s);
    row("COM10 is none", file, u"COM10.mp3"_s, u"COM10.mp3"_s);

    row("folder", folder, u"Band - Live"_s, u"Band - Live"_s);
    row("folder: blanks and dots at the end are taken off", folder, u"Live. . "_s, u"Live"_s);
    row("folder: blanks before are kept", folder, u" Live"_s, u" Live"_s);
    row("folder: empty", folder, u""_s, {}, NameProblem::Empty);
    row("folder: blank", folder, u" "_s, {}, NameProblem::Empty);
    row("folder: dot", folder, u"."_s, {}, NameProblem::Dots);
    row("folder: dot dot", folder, u".."_s, {}, NameProblem::Dots);
    row("folder: dots and blanks", folder, u".. ."_s, {}, NameProblem::Dots);
    row("folder: device", folder, u"aux"_s, {}, NameProblem::Reserved);
    row("folder: hidden", folder, u".38 Special"_s, u"_38 Special"_s);
}

void TestNameCheck::checks()
{
    QFETCH(NameKind, kind);
    QFETCH(QString, name);
    QFETCH(QString, adjusted);
    QFETCH(std::optional<NameProblem>, problem);
    const CheckedName checked = checkName(name, kind);
    QVERIFY(checked.problem == problem);
    QCOMPARE(checked.name, problem ? name : adjusted);
    QCOMPARE(checked.isAdjusted, !problem && adjusted != name);
}

void TestNameCheck::lengthIsThatOfTheSystem()
{
    const auto problemOf = [](const QString &name) { return checkName(name, NameKind::File).problem; };
    QVERIFY(!problemOf(QString(251, u'a') + u".mp3"_s));
    QVERIFY(problemOf(QString(252, u'a') + u".mp3"_s) == NameProblem::TooLong);
    // Bytes or UTF-16 units, whichever the system counts.
    const bool countsBytes = nameLength(u"夜"_s) == 3;
    QVERIFY(countsBytes || nameLength(u"夜"_s) == 1);
    if (countsBytes) {
        QVERIFY(!problemOf(QString(83, u'夜') + u".mp3"_s));
        QVERIFY(problemOf(QString(84, u'夜') + u".mp3"_s) == NameProblem::TooLong);
    }
}

void TestNameCheck::numbersComeBeforeTheExtension()
{
    QCOMPARE(numberedName(u"Song.mp3"_s, 2, NameKind::File), u"Song (2).mp3"_s);
    QCOMPARE(numberedName(u"T.N.T..mp3"_s, 10, NameKind::File), u"T.N.T. (10).mp3"_s);
    QCOMPARE(numberedName(u"Vol. 1"_s, 3, NameKind::Folder), u"Vol. 1 (3)"_s);
}

void TestNameCheck::numberedNamesFit()
{
    const QString name = numberedName(QString(251, u'a') + u".mp3"_s, 12, NameKind::File);
    QCOMPARE(nameLength(name), qsizetype(MaxNameLength));
    QVERIFY(name.endsWith(u"a (12).mp3"_s));
    // An overlong extension leaves no room for the name; shortening ends all the same.
    QVERIFY(numberedName(u"a."_s + QString(300, u'b'), 2, NameKind::File).startsWith(u" (2)."_s));
}

void TestNameCheck::neverHalfACharacter()
{
    const QString notes = u"\U0001F3B5\U0001F3B5"_s;
    for (int length = 0; length <= 8; ++length) {
        const QString kept = shortened(notes, length);
        QVERIFY(kept.isValidUtf16());
        QVERIFY(nameLength(kept) <= length);
    }
    QCOMPARE(shortened(notes, nameLength(notes)), notes);
}

QTEST_GUILESS_MAIN(TestNameCheck)
#include "tst_namecheck.moc"
