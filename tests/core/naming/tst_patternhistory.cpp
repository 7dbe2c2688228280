// SPDX-License-Identifier: GPL-3.0-or-later
// The list of used patterns: most recent first, without duplicates, bounded, and the same after a restart.

#include "core/app/settings.h"
#include "core/naming/patternhistory.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;

class TestPatternHistory : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_folder;

    QString iniPath() const { return m_folder->filePath(u"ravlin.ini"_s); }

    /// What a restart makes of a list.
    QStringList restarted(const PatternHistory &history, QStringView name) const
    {
        Settings settings(iniPath());
        history.store(settings);
        if (!settings.save())
            return {u"not saved"_s};
        const Settings again(iniPath());
        return PatternHistory::restored(name, again).patterns();
    }

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void theMostRecentComesFirst()
    {
        PatternHistory history(PatternHistory::Extraction);
        QVERIFY(history.patterns().isEmpty());
        history.use(u"%1 - %3"_s);
        history.use(u"%4 - %3"_s);
        QCOMPARE(history.patterns(), (QStringList{u"%4 - %3"_s, u"%1 - %3"_s}));
    }

    void noneStandsThereTwice()
    {
        PatternHistory history(PatternHistory::Extraction);
        history.use(u"a"_s);
        history.use(u"b"_s);
        history.use(u"a"_s);
        QCOMPARE(history.patterns(), (QStringList{u"a"_s, u"b"_s}));
        history.use(u"A"_s); // another pattern: literals are case-sensitive
        QCOMPARE(history.patterns(), (QStringList{u"A"_s, u"a"_s, u"b"_s}));
    }

    void anEmptyPatternIsNotKept()
    {
        PatternHistory history(PatternHistory::Extraction);
        history.use(QString());
        QVERIFY(history.patterns().isEmpty());
        history.use(u" "_s); // a space is a pattern
        QCOMPARE(history.patterns(), QStringList{u" "_s});
    }

    void theOldestGoesWhenTheListIsFull()
    {
        PatternHistory history(PatternHistory::Extraction);
        for (int number = 1; number <= 25; ++number)
            history.use(QString::number(number));
        QCOMPARE(history.patterns().size(), PatternHistory::Capacity);
        QCOMPARE(history.patterns().first(), u"25"_s);
        QCOMPARE(history.patterns().last(), u"6"_s);
        QCOMPARE(restarted(history, PatternHistory::Extraction), history.patterns());
    }

    void aRestartBringsThemBackAsTheyWere()
    {
        PatternHistory history(PatternHistory::Renaming);
        for (const QString &pattern : {u" blanks at both ends "_s, u"\"quoted\" ; # = [x] \\ %20"_s,
                 u"ñ 坂本 \U0001F600"_s, u"@escaped(x)"_s, u"tab\there"_s, u"%4 %1 - %3 [%2]"_s})
            history.use(pattern);
        QCOMPARE(history.patterns().size(), 6);
        QCOMPARE(restarted(history, PatternHistory::Renaming), history.patterns());
    }

    void eachPlaceHasItsOwnList()
    {
        PatternHistory extraction(PatternHistory::Extraction);
        extraction.use(u"e"_s);
        PatternHistory renaming(PatternHistory::Renaming);
        renaming.use(u"r"_s);
        PatternHistory folder(PatternHistory::Folder);
        folder.use(u"f"_s);
        QCOMPARE(restarted(extraction, PatternHistory::Extraction), QStringList{u"e"_s});
        QCOMPARE(restarted(renaming, PatternHistory::Renaming), QStringList{u"r"_s});
        QCOMPARE(restarted(folder, PatternHistory::Folder), QStringList{u"f"_s});
        QCOMPARE(
            PatternHistory::restored(PatternHistory::Extraction, Settings(iniPath())).patterns(), QStringList{u"e"_s});
    }

    void onlyTheKeysThatAreUsedAreWritten()
    {
        PatternHistory history(PatternHistory::Extraction);
        history.use(u"b"_s);
        history.use(u"a"_s);
        Settings settings(iniPath());
        history.store(settings);
        QVERIFY(settings.save());
        QFile file(iniPath());
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray content = file.readAll();
        QVERIFY(content.contains("extract pattern 1=a\n"));
        QVERIFY(content.contains("extract pattern 2=b\n"));
        QCOMPARE(content.count("extract pattern"), 2);
    }

    void aListThatGotShorterDoesNotKeepItsEnd()
    {
        Settings settings(iniPath());
        settings.write(u"extract pattern 1", u"a"_s);
        settings.write(u"extract pattern 2", u"a"_s); // by hand: twice, and with gaps
        settings.write(u"extract pattern 5", u"b"_s);
        settings.write(u"extract pattern 21", u"beyond the end"_s);
        const PatternHistory history = PatternHistory::restored(PatternHistory::Extraction, settings);
        QCOMPARE(history.patterns(), (QStringList{u"a"_s, u"b"_s}));
        history.store(settings);
        QCOMPARE(settings.read(u"extract pattern 2"), u"b"_s);
        QCOMPARE(settings.read(u"extract pattern 5"), QString());
    }
};

QTEST_GUILESS_MAIN(TestPatternHistory)
#include "tst_patternhistory.moc"
