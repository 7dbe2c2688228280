// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: a name that some system cannot store, or that would hide the file, is adjusted or refused with the reason.

#include "core/platform/namecheck.h"
#include "core/platform/path.h"

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
    void namesOfMusic();
    void neverHalfACharacter();
    void bytesThatJoin();
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
    row("all controls", file, u"a\u0001\u0080\u009F\u2028\u2029.mp3"_s, u"a.mp3"_s);
    row("bidi controls", file, u"\u061C\u200E\u200Fa\u202A\u202B\u202C\u202D\u202Eb\u2066\u2067\u2068\u2069.mp3"_s,
        u"ab.mp3"_s);
    row("byte order mark and zero-width space", file, u"\uFEFFa\u200B.mp3"_s, u"a.mp3"_s);
    row("joiners stay", file, u"می\u200Cخواهم \u200D\uFE0F\uFE0E.mp3"_s, u"می\u200Cخواهم \u200D\uFE0F\uFE0E.mp3"_s);
    row("beyond them", file, u"\u00A0\u2027\u202F\u2065\u206A.mp3"_s, u"\u00A0\u2027\u202F\u2065\u206A.mp3"_s);
    row("bidi controls only", file, u"\u202E.mp3"_s, {}, NameProblem::Empty);
    row("a device, disguised", file, u"C\u200BON.mp3"_s, {}, NameProblem::Reserved);
    row("dots, disguised", folder, u".\u200E."_s, {}, NameProblem::Dots);
    row("hidden, disguised", file, u"\uFEFF.a.mp3"_s, u"_a.mp3"_s);
    row("folder: blanks at the end, disguised", folder, u"Live .\u200F"_s, u"Live"_s);
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
    QCOMPARE(numberedName(u"\u202E3pm\u0085.mp3"_s, 2, NameKind::File), u"3pm (2).mp3"_s);
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

// Bytes of a name that are no text, and become a hidden character once what stands between them is gone.
void TestNameCheck::bytesThatJoin()
{
    if (Separator != u'/')
        QSKIP("names are no bytes here");
    const auto name = [](const QByteArray &bytes) { return decodePath(bytes + ".mp3"); };
    const auto checked = [](const QString &given) { return encodePath(checkName(given, NameKind::File).name); };
    QCOMPARE(checked(name("a\xE2\x80\x01\xAE"
                          "b")),
        QByteArray("ab.mp3"));
    QCOMPARE(checked(name("a\xE2\xE2\x80\xAE\x80\xAE"
                          "b")),
        QByteArray("ab.mp3"));
    QCOMPARE(checked(name("a\xE2\x80") + decodePath(QByteArray("\xAE"))), QByteArray("a\xE2\x80.mp3\xAE"));
    // Each byte decoded by itself, as nothing that reads a folder does.
    QString apart = u"a"_s;
    for (const char byte : {'\xE2', '\x80', '\xAE'})
        apart += decodePath(&byte, 1);
    QCOMPARE(checked(apart), QByteArray("a"));
    QCOMPARE(checked(name("caf\xE9\x01")), QByteArray("caf\xE9.mp3"));
}

void TestNameCheck::namesOfMusic()
{
    for (const QString &name : {u"a.mp3"_s, u"A.MP3"_s, u"a.b.Mp3"_s, u".mp3"_s, u"music/a.mP3"_s})
        QVERIFY2(isMp3Name(name), qPrintable(name));
    for (const QString &name : {u""_s, u"mp3"_s, u"a.mp3 "_s, u"a.mp3.txt"_s, u"a.mp"_s, u"a.mp33"_s, u"a.mp3/"_s})
        QVERIFY2(!isMp3Name(name), qPrintable(name));
}

QTEST_GUILESS_MAIN(TestNameCheck)
#include "tst_namecheck.moc"
