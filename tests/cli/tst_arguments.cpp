// SPDX-License-Identifier: GPL-3.0-or-later
/// Contract: options and operands are told apart as the help says, whatever operands and values look like; a wrong
/// command line is refused with a reason.
#include "cli/arguments.h"

#include <QTest>

#include <array>

using namespace Qt::StringLiterals;

namespace ravlin::cli {

namespace {

constexpr std::array Known{Option{u"--title", u"TEXT", u""}, Option{u"--json", {}, u""}, HelpOption, VersionOption};

tl::expected<Arguments, UsageError> parse(const QStringList &words)
{
    return Arguments::parse(words, Known);
}

} // namespace

class TestArguments : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void optionsStandAnywhere()
    {
        const auto found = parse({u"a"_s, u"--json"_s, u"b"_s, u"--title"_s, u"T"_s, u"c"_s});
        QVERIFY(found);
        QCOMPARE(found->operands(), QStringList({u"a"_s, u"b"_s, u"c"_s}));
        QVERIFY(found->has(u"--json"));
        QCOMPARE(found->value(u"--title"), std::optional(u"T"_s));
        QVERIFY(!found->has(u"--help"));
    }

    void valueMayBeginWithHyphens_data()
    {
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<QString>("value");
        QTest::newRow("next word") << QStringList{u"--title"_s, u"-1-"_s} << u"-1-"_s;
        QTest::newRow("behind =") << QStringList{u"--title=-x"_s} << u"-x"_s;
        QTest::newRow("like an option") << QStringList{u"--title"_s, u"--json"_s} << u"--json"_s;
        QTest::newRow("end mark") << QStringList{u"--title"_s, u"--"_s} << u"--"_s;
        QTest::newRow("holds =") << QStringList{u"--title=a=b"_s} << u"a=b"_s;
        QTest::newRow("empty word") << QStringList{u"--title"_s, QString()} << QString();
        QTest::newRow("empty behind =") << QStringList{u"--title="_s} << QString();
        QTest::newRow("last counts") << QStringList{u"--title=a"_s, u"--title"_s, u"b"_s} << u"b"_s;
    }
    void valueMayBeginWithHyphens()
    {
        QFETCH(QStringList, words);
        QFETCH(QString, value);
        const auto found = parse(words);
        QVERIFY(found);
        QVERIFY(found->has(u"--title"));
        QCOMPARE(*found->value(u"--title"), value);
        QVERIFY(!found->has(u"--json"));
        QVERIFY(found->operands().isEmpty());
    }

    void endMarkEndsOptions()
    {
        const auto found = parse({u"--json"_s, u"--"_s, u"--title"_s, u"--"_s, u"-x.mp3"_s});
        QVERIFY(found);
        QCOMPARE(found->operands(), QStringList({u"--title"_s, u"--"_s, u"-x.mp3"_s}));
        QVERIFY(!found->has(u"--title"));
    }

    void emptyWordAndLoneHyphenAreOperands()
    {
        const auto found = parse({QString(), u"-"_s});
        QVERIFY(found);
        QCOMPARE(found->operands(), QStringList({QString(), u"-"_s}));
    }

    void helpEndsTheReading_data()
    {
        QTest::addColumn<QString>("word");
        QTest::newRow("long") << u"--help"_s;
        QTest::newRow("short") << u"-h"_s;
    }
    void helpEndsTheReading()
    {
        QFETCH(QString, word);
        const auto found = parse({word, u"--nonsense"_s});
        QVERIFY(found);
        QVERIFY(found->has(u"--help"));
    }

    void nonsenseIsRefused_data()
    {
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<QString>("reasonHolds");
        QTest::newRow("unknown") << QStringList{u"--nonsense"_s} << u"--nonsense"_s;
        QTest::newRow("unknown with value") << QStringList{u"--nonsense=3"_s} << u"--nonsense;"_s;
        QTest::newRow("unknown short") << QStringList{u"-x"_s} << u"behind --"_s;
        QTest::newRow("abbreviated") << QStringList{u"--titl=x"_s} << u"--titl"_s;
        QTest::newRow("value missing") << QStringList{u"a"_s, u"--title"_s} << u"needs a value"_s;
        QTest::newRow("value not wanted") << QStringList{u"--json=yes"_s} << u"takes no value"_s;
    }
    void nonsenseIsRefused()
    {
        QFETCH(QStringList, words);
        QFETCH(QString, reasonHolds);
        const auto found = parse(words);
        QVERIFY(!found);
        QVERIFY2(found.error().text.contains(reasonHolds), qPrintable(found.error().text));
    }
};

} // namespace ravlin::cli

QTEST_APPLESS_MAIN(ravlin::cli::TestArguments)
#include "tst_arguments.moc"
