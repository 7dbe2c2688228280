// SPDX-License-Identifier: GPL-3.0-or-later
// The history in the user's words: entries are grouped by day, week and before; each kind, field and outcome has its
// text in three languages; a file is named as seen from the entry's folder, with what it was and is now.

#include "core/app/historytexts.h"
#include "core/app/idiomas.h"

#include <QSet>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;
using history::FileRecord;
using history::FileState;
using storage::ChangeKind;

class TestHistoryTexts : public QObject
{
    Q_OBJECT

private:
    static Captions speaking(const QString &language)
    {
        Captions captions;
        captions.setLanguageName(language);
        captions.fill();
        return captions;
    }
    static void addLanguages()
    {
        QTest::addColumn<QString>("language");
        for (const char *language : {"spanish", "english", "french"})
            QTest::newRow(language) << QString::fromLatin1(language);
    }

private Q_SLOTS:
    void daysAreGrouped_data()
    {
        QTest::addColumn<QDate>("day");
        QTest::addColumn<QDate>("today");
        QTest::addColumn<int>("firstDay");
        QTest::addColumn<int>("span");
        const QDate wednesday(2026, 11, 25);
        const auto row = [](const char *name, QDate day, QDate today, Qt::DayOfWeek first, DaySpan span) {
            QTest::newRow(name) << day << today << int(first) << int(span);
        };
        row("the same day", wednesday, wednesday, Qt::Monday, DaySpan::Today);
        row("a clock set back", wednesday.addDays(400), wednesday, Qt::Monday, DaySpan::Today);
        row("yesterday", wednesday.addDays(-1), wednesday, Qt::Monday, DaySpan::ThisWeek);
        row("the week's first day", wednesday.addDays(-2), wednesday, Qt::Monday, DaySpan::ThisWeek);
        row("the day before that", wednesday.addDays(-3), wednesday, Qt::Monday, DaySpan::Before);
        row("where weeks begin on Sunday", wednesday.addDays(-3), wednesday, Qt::Sunday, DaySpan::ThisWeek);
        row("the Saturday before", wednesday.addDays(-4), wednesday, Qt::Sunday, DaySpan::Before);
        row("on the first day of a week", wednesday.addDays(-3), wednesday.addDays(-2), Qt::Monday, DaySpan::Before);
        row("on its last day", wednesday.addDays(-2), wednesday.addDays(4), Qt::Monday, DaySpan::ThisWeek);
        row("last year's week", QDate(2026, 12, 31), QDate(2027, 1, 1), Qt::Monday, DaySpan::ThisWeek);
        row("a year ago", wednesday.addYears(-1), wednesday, Qt::Monday, DaySpan::Before);
    }
    void daysAreGrouped()
    {
        QFETCH(QDate, day);
        QFETCH(QDate, today);
        QFETCH(int, firstDay);
        QTEST(int(daySpan(day, today, Qt::DayOfWeek(firstDay))), "span");
    }

    void aTimeSaysNoMoreThanItsGroupLeavesOpen()
    {
        const QLocale english(QLocale::English, QLocale::UnitedKingdom);
        const QDateTime time(QDate(2026, 11, 25), QTime(14, 5, 33));
        QCOMPARE(timeText(time, DaySpan::Today, english), u"14:05"_s);
        QCOMPARE(timeText(time, DaySpan::ThisWeek, english), u"Wednesday 14:05"_s);
        QCOMPARE(timeText(time, DaySpan::Before, english), u"25/11/2026 14:05"_s);
        QCOMPARE(timeText(time, DaySpan::ThisWeek, QLocale(QLocale::French)), u"mercredi 14:05"_s);
    }

    void everyKindHasItsOwnText_data() { addLanguages(); }
    void everyKindHasItsOwnText()
    {
        QFETCH(QString, language);
        const Captions captions = speaking(language);
        QSet<QString> texts;
        for (int kind = 0; kind <= int(history::Kind::Playlist); ++kind)
            texts << kindText(captions, history::Kind(kind));
        QCOMPARE(texts.size(), int(history::Kind::Playlist) + 1);
    }

    void fieldsBearTheirCaptions()
    {
        const Captions spanish = speaking(u"spanish"_s);
        const QStringList names{
            u"title"_s, u"artist"_s, u"album"_s, u"year"_s, u"track"_s, u"genre"_s, u"comment"_s, u"mood"_s};
        QStringList texts;
        for (const QString &name : names)
            texts << fieldText(spanish, name);
        QCOMPARE(texts.join(u' '), u"título artista album año pista estilo comentarios mood"_s);
    }

    void anOutcomeSaysWhatBecameOfTheFile()
    {
        const Captions english = speaking(u"english"_s);
        FileRecord file;
        const auto outcome = [&](FileState state) {
            file.state = state;
            return outcomeText(english, file);
        };
        QCOMPARE(outcome(FileState::Done), u"changed"_s);
        QCOMPARE(outcome(FileState::Undone), u"undone"_s);
        QCOMPARE(outcome(FileState::Pending), u"interrupted"_s);
        file.error = Error{ErrorCode::NoSpace, u"/a"_s, u"ENOSPC"_s};
        QCOMPARE(outcome(FileState::Failed), u"failed: the disk is full"_s);
        QSet<QString> texts;
        for (int change = 0; change <= int(ChangeKind::Create); ++change) {
            file.change = ChangeKind(change);
            texts << outcome(FileState::Done);
        }
        QCOMPARE(texts.size(), int(ChangeKind::Create) + 1);
    }

    void anEntryTellsHowManyFilesAreUndone()
    {
        const Captions english = speaking(u"english"_s);
        history::Entry entry;
        entry.fileCount = 14;
        QCOMPARE(filesText(english, entry), u"14"_s);
        entry.undoneCount = 3;
        QCOMPARE(filesText(english, entry), u"14; undone: 3"_s);
        entry.undoneCount = 14;
        QCOMPARE(filesText(english, entry), u"14; undone"_s);
        QCOMPARE(filesText(speaking(u"french"_s), entry), u"14\u00a0; annulé"_s);
    }

    void aPathIsShownFromItsFolder()
    {
        const QString slash(platform::withEndSeparator(u"x"_s).back());
        const QString folder = slash + u"music"_s;
        QCOMPARE(pathWithin(folder + slash + u"a"_s + slash + u"b.mp3"_s, folder), u"a"_s + slash + u"b.mp3"_s);
        QCOMPARE(pathWithin(folder + slash + u"b.mp3"_s, folder + slash), u"b.mp3"_s);
        for (const QString &other : {folder, folder + slash, folder + u"al"_s + slash + u"b.mp3"_s, u"b.mp3"_s})
            QCOMPARE(pathWithin(other, folder), other);
        QCOMPARE(pathWithin(folder, QString()), folder);
    }

    void theLinesOfAFile()
    {
        const QString folder = platform::withEndSeparator(u"music"_s);
        FileRecord file;
        file.path = folder + u"a.mp3"_s;
        QCOMPARE(fileLine(file, folder), (ChangeLine{u"a.mp3"_s, {}, {}}));
        file.newPath = folder + u"b.mp3"_s;
        QCOMPARE(fileLine(file, folder), (ChangeLine{u"a.mp3"_s, u"a.mp3"_s, u"b.mp3"_s}));
        file.path.clear(); // a new file
        QCOMPARE(fileLine(file, folder), (ChangeLine{u"b.mp3"_s, {}, {}}));
        QCOMPARE(
            valueLine(speaking(u"english"_s), {u"artist"_s, u"Ana"_s, {}}), (ChangeLine{u"artist"_s, u"Ana"_s, {}}));
    }
};

QTEST_APPLESS_MAIN(TestHistoryTexts)
#include "tst_historytexts.moc"
