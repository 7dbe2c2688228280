// SPDX-License-Identifier: GPL-3.0-or-later
// The window that shows what extraction and renaming would do: its columns, the mark of long names, the marks and
// remarks for files that can't be processed or stay as they are, and that the run does what it shows.

#include "core/files/renaming/renamefromtags.h"
#include "core/naming/extraction.h"
#include "ui/naming/namingfixture.h"
#include "ui/naming/preview.h"

#include <QTest>
#include <QTreeView>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

class TestPreview : public NamingFixture
{
    Q_OBJECT

private:
    std::unique_ptr<preview> m_window;

    void show(PreviewMode mode, const QString &pattern)
    {
        m_state.previewMode = mode;
        m_window = std::make_unique<preview>(context());
        NamingRule rule;
        rule.mode = NamingRule::Pattern;
        rule.pattern = pattern;
        QVERIFY(m_window->load({m_owner.selectedPaths(), pattern, rule}));
        m_window->show();
    }
    QTreeView *list() const { return control<QTreeView>(m_window.get(), u"ListView1"_s); }
    QVariant cell(int row, int column, int role = Qt::DisplayRole) const
    {
        return list()->model()->index(row, column).data(role);
    }
    QStringList texts(int row) const
    {
        QStringList texts;
        for (int column = 0; column < 8; ++column)
            texts << cell(row, column).toString();
        return texts;
    }
    bool isBoldAndRed(int row) const
    {
        int marked = 0;
        for (int column = 0; column < 8; ++column) {
            const bool bold = cell(row, column, Qt::FontRole).value<QFont>().bold();
            const QBrush brush = cell(row, column, Qt::ForegroundRole).value<QBrush>();
            if (bold && brush.color() == QColor(255, 0, 0))
                ++marked;
            else if (bold || cell(row, column, Qt::ForegroundRole).isValid())
                qFatal("half a mark in column %d", column);
        }
        if (marked != 0 && marked != 8)
            qFatal("%d columns marked", marked);
        return marked == 8;
    }
    QString toolTip(int row) const { return cell(row, 0, Qt::ToolTipRole).toString(); }
    bool hasIcon(int row) const { return !cell(row, 0, Qt::DecorationRole).value<QIcon>().isNull(); }
    static QString letters(int count) { return QString(count, u'x'); }

private Q_SLOTS:
    void init()
    {
        m_window.reset();
        startAfresh();
    }

    void theHeadersAreThoseOfTheLanguage_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QStringList>("headers");
        QTest::newRow("english") << u"english"_s
                                 << QStringList{u"file"_s, u"track"_s, u"title"_s, u"artist"_s, u"album"_s, u"year"_s,
                                        u"id3v1"_s, u"id3v2"_s, u"remarks"_s};
        QTest::newRow("spanish") << u"spanish"_s
                                 << QStringList{u"fichero"_s, u"pista"_s, u"título"_s, u"artista"_s, u"album"_s,
                                        u"año"_s, u"id3v1"_s, u"id3v2"_s, u"observaciones"_s};
        QTest::newRow("french") << u"french"_s
                                << QStringList{u"fichier"_s, u"piste"_s, u"titre"_s, u"artiste"_s, u"album"_s,
                                       u"années"_s, u"id3v1"_s, u"id3v2"_s, u"remarques"_s};
    }
    void theHeadersAreThoseOfTheLanguage()
    {
        QFETCH(QString, language);
        speak(language);
        show(PreviewMode::Extrae, u"%3"_s);
        QStringList headers;
        for (int column = 0; column < list()->model()->columnCount(); ++column)
            headers << list()->model()->headerData(column, Qt::Horizontal).toString();
        QTEST(headers, "headers");
        QCOMPARE(m_window->windowTitle(), u"preview"_s);
    }

    void anExtractionShowsTheNameAndTheTagAsItWouldBe()
    {
        const QString path =
            addFile(u"07 - Björk - Isobel.mp3"_s, {.title = u"old"_s, .album = u"Post"_s, .year = u"1995"_s});
        const QByteArray before = readFile(path);
        show(PreviewMode::Extrae, u"%4 - %1 - %3"_s);
        QCOMPARE(texts(0), QStringList({u"07 - Björk - Isobel.mp3"_s, u"07"_s, u"Isobel"_s, u"Björk"_s, u"Post"_s,
                               u"1995"_s, u"no"_s, u"yes"_s}));
        QCOMPARE(readFile(path), before);
    }

    void aRenamingShowsTheNewNameAndTheFilesOwnTag()
    {
        addFile(u"old.mp3"_s, {.title = u"Isobel"_s, .artist = u"Björk"_s, .track = u"7"_s});
        show(PreviewMode::Rename, u"%1 - %3"_s);
        QCOMPARE(texts(0), QStringList({u"Björk - Isobel.mp3"_s, u"7"_s, u"Isobel"_s, u"Björk"_s, QString(), QString(),
                               u"no"_s, u"yes"_s}));
        QCOMPARE(filesInMusic(), QStringList{u"old.mp3"_s});
    }

    void theRowsAreTheSelectedFilesInListOrder()
    {
        for (const QString &name : {u"c.mp3"_s, u"a.mp3"_s, u"b.mp3"_s})
            addFile(name);
        m_owner.selected.remove(1);
        show(PreviewMode::Extrae, u"%3"_s);
        QCOMPARE(list()->model()->rowCount(), 2);
        QCOMPARE(cell(0, 0).toString(), u"c.mp3"_s);
        QCOMPARE(cell(1, 0).toString(), u"b.mp3"_s);
    }

    void withNoSelectedRowsTheListStaysEmpty()
    {
        addFile(u"a.mp3"_s);
        m_owner.selected.clear();
        show(PreviewMode::Rename, u"%3"_s);
        QCOMPARE(list()->model()->rowCount(), 0);
    }

    void anyOtherModeLeavesTheListEmpty()
    {
        addFile(u"a.mp3"_s);
        show(PreviewMode::None, u"%3"_s);
        QCOMPARE(list()->model()->rowCount(), 0);
    }

    void aFileWithoutAnyTagShowsNoInBothColumns()
    {
        addFile(u"a.mp3"_s);
        speak(u"spanish"_s);
        show(PreviewMode::Rename, u"x"_s);
        QCOMPARE(cell(0, 6).toString(), u"no"_s);
        QCOMPARE(cell(0, 7).toString(), u"no"_s);
    }

    void aNewNameOf64CharactersIsPlainAndOneOf65BoldAndRed_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addColumn<bool>("isLong");
        QTest::newRow("64") << letters(60) << false;
        QTest::newRow("65") << letters(61) << true;
        QTest::newRow("64 Japanese") << QString(60, QChar(0x4EBA)) << false;
        QTest::newRow("65 Japanese") << QString(61, QChar(0x4EBA)) << true;
    }
    void aNewNameOf64CharactersIsPlainAndOneOf65BoldAndRed()
    {
        QFETCH(QString, title);
        QFETCH(bool, isLong);
        addFile(u"a.mp3"_s, {.title = title});
        show(PreviewMode::Rename, u"%3"_s);
        QCOMPARE(isBoldAndRed(0), isLong);
        QCOMPARE(toolTip(0).contains(u"64"_s), isLong);
    }

    void anExtractionMarksAShownNameOfMoreThan64Characters()
    {
        addFile(letters(60) + u".mp3"_s);
        addFile(letters(61) + u".mp3"_s);
        show(PreviewMode::Extrae, u"%3"_s);
        QVERIFY(!isBoldAndRed(0));
        QVERIFY(isBoldAndRed(1));
    }

    void aFileThatDoesNotFitIsMarkedWithWords()
    {
        addFile(u"A - B.mp3"_s);
        addFile(u"odd.mp3"_s);
        show(PreviewMode::Extrae, u"%1 - %3"_s);
        QVERIFY(!hasIcon(0));
        QCOMPARE(toolTip(0), u"A - B.mp3"_s);
        QVERIFY(hasIcon(1));
        QVERIFY(toolTip(1).contains(u"does not fit"_s));
        QVERIFY(cell(1, 0, Qt::AccessibleTextRole).toString().startsWith(u"odd.mp3; "_s));
        QVERIFY(!isBoldAndRed(1));
    }

    void aFileThatKeepsItsNameIsMarkedWithWords()
    {
        addFile(u"Song.mp3"_s, {.title = u"Song"_s});
        show(PreviewMode::Rename, u"%3"_s);
        QVERIFY(hasIcon(0));
        QVERIFY(toolTip(0).contains(u"stays as it is"_s));
    }

    void takenNamesAreMarkedWithWords()
    {
        writeFile(musicFolder(), u"Song.mp3"_s, audio());
        addFile(u"1.mp3"_s, {.title = u"Song"_s});
        addFile(u"2.mp3"_s, {.title = u"Twice"_s});
        addFile(u"3.mp3"_s, {.title = u"Twice"_s});
        show(PreviewMode::Rename, u"%3"_s);
        QCOMPARE(cell(0, 0).toString(), u"Song.mp3"_s);
        QVERIFY(toolTip(0).contains(u"exists already"_s));
        QVERIFY(!hasIcon(1));
        QVERIFY(toolTip(2).contains(u"two files would get this name"_s));
        QVERIFY(!toolTip(2).contains(u"exists already"_s));
        QCOMPARE(control<QLabel>(m_window.get(), u"summary"_s)->text(), u"marked: 2 of 3"_s);
    }

    void whatASaveWouldDropIsMarkedWithTheReason()
    {
        addFile(u"99 - 100.mp3"_s, {.title = u"x"_s, .year = u"1999"_s});
        addFile(u"Zydeco - 1.mp3"_s);
        addFile(u"1999 - 1.mp3"_s);
        show(PreviewMode::Extrae, u"%5 - %4"_s);
        QCOMPARE(cell(0, 5).toString(), u"99"_s); // the columns stay as they are
        QCOMPARE(cell(0, 1).toString(), u"100"_s);
        const QString expected = u"the track “100” is not saved: a track has one or two digits; "
                                 "the year “99” is not saved: a year has four digits; "
                                 "the file loses these fields: year"_s;
        QCOMPARE(cell(0, 8).toString(), expected);
        QCOMPARE(cell(0, 0, Qt::AccessibleTextRole).toString(), u"99 - 100.mp3; "_s + expected);
        QVERIFY(hasIcon(0));
        QVERIFY(hasIcon(1));
        QVERIFY(!hasIcon(2));
        QCOMPARE(cell(2, 8).toString(), QString());
        QCOMPARE(control<QLabel>(m_window.get(), u"summary"_s)->text(), u"marked: 2 of 3"_s);
    }

    void eachKindOfMarkHasADrawingAndWordsAndIsCounted()
    {
        addFile(u"1.mp3"_s, {.title = u".hidden"_s}); // adapted
        addFile(u"2.mp3"_s, {.title = u"x"_s, .artist = u"Band"_s});
        addFile(u"3.mp3"_s, {.title = u"?"_s});       // no name
        addFile(u"Same.mp3"_s, {.title = u"Same"_s}); // keeps its name
        addFile(u"5.mp3"_s, {.title = u"Plain"_s});
        addFile(u"6.mp3"_s, {.title = letters(61)});
        show(PreviewMode::Rename, u"%3"_s);
        const auto drawing = [this](int row) {
            const QIcon icon = cell(row, 0, Qt::DecorationRole).value<QIcon>();
            return icon.isNull() ? QImage() : icon.pixmap(16).toImage();
        };
        QVERIFY(cell(0, 8).toString().contains(u"adapted"_s));
        QVERIFY(!drawing(0).isNull() && !drawing(2).isNull() && !drawing(3).isNull());
        QVERIFY(drawing(0) != drawing(2) && drawing(0) != drawing(3) && drawing(2) != drawing(3));
        QVERIFY(drawing(4).isNull());
        QVERIFY(drawing(5).isNull() && isBoldAndRed(5));
        QCOMPARE(control<QLabel>(m_window.get(), u"summary"_s)->text(), u"marked: 4 of 6"_s);
        const QImage adapted = drawing(0);
        show(PreviewMode::Rename, u"%1/%3"_s); // "%1" is literal where there is no artist
        QVERIFY(cell(1, 8).toString().contains(u"makes a new folder"_s));
        QVERIFY(!drawing(1).isNull() && drawing(1) != adapted);
        QCOMPARE(drawing(0), adapted); // adapted and in a new folder
        QCOMPARE(control<QLabel>(m_window.get(), u"summary"_s)->text(), u"marked: 6 of 6"_s);
    }

    void aNameThatCantBeGivenIsMarkedWithWords()
    {
        addFile(u"1.mp3"_s, {.title = u"?"_s});
        show(PreviewMode::Rename, u"%3"_s);
        QVERIFY(hasIcon(0));
        QVERIFY(toolTip(0).contains(u"empty"_s));
    }

    void aFileThatCannotBeReadIsMarkedWithWords()
    {
        QFile::remove(addFile(u"gone.mp3"_s));
        for (const PreviewMode mode : {PreviewMode::Extrae, PreviewMode::Rename}) {
            show(mode, u"%3"_s);
            QCOMPARE(cell(0, 0).toString(), u"gone.mp3"_s);
            QVERIFY(toolTip(0).contains(u"does not exist"_s));
        }
    }

    void theFootTellsWhatIsToBeSaidAboutTheCurrentRow()
    {
        addFile(u"Song.mp3"_s, {.title = u"Song"_s});
        addFile(u"1.mp3"_s, {.title = u"Other"_s});
        show(PreviewMode::Rename, u"%3"_s);
        const auto *remark = control<QLabel>(m_window.get(), u"remark"_s);
        QCOMPARE(remark->text(), u"the name stays as it is"_s);
        QTest::keyClick(list(), Qt::Key_Down);
        QCOMPARE(remark->text(), QString());
    }

    void severalRemarksInFrenchHaveTheirSpaceBeforeTheSemicolon()
    {
        speak(u"french"_s);
        addFile(u"99 - 100.mp3"_s);
        show(PreviewMode::Extrae, u"%5 - %4"_s);
        const QString remarks = cell(0, 8).toString();
        QCOMPARE(remarks.count(u';'), 1);
        QVERIFY2(remarks.contains(u"\u00a0; "_s), qPrintable(remarks));
    }

    void theRowsAreAsHighAsTheTextNeeds()
    {
        addFile(u"Ågj人.mp3"_s);
        show(PreviewMode::Extrae, u"%3"_s);
        QVERIFY(list()->visualRect(list()->model()->index(0, 0)).height() >= list()->fontMetrics().height());
    }

    void whatTheRenamingShowsIsWhatComesToPass()
    {
        for (int i = 1; i <= 20; ++i)
            addFile(u"%1.mp3"_s.arg(i), {.title = QString::number(21 - i), .artist = u"人間 é"_s});
        show(PreviewMode::Rename, u"%3"_s);
        QStringList shown;
        QStringList titles;
        for (int row = 0; row < 20; ++row) {
            shown << cell(row, 0).toString();
            titles << cell(row, 2).toString();
        }
        NamingRule rule;
        rule.mode = NamingRule::Pattern;
        rule.pattern = u"%3"_s;
        QVERIFY(m_owner.runWithProgress(20, [&](const ProgressReport &progress) {
            const FileRenaming renaming =
                planFileRenaming(m_owner.selectedPaths(), rule, m_store, platform::FileSystem::native(), progress);
            runRenaming(platform::FileSystem::native(), renaming.plan, {progress});
        }));
        for (int row = 0; row < 20; ++row)
            QCOMPARE(read(at(shown.at(row))).Title, titles.at(row));
        QCOMPARE(filesInMusic().size(), 20);
    }

    void whileOtherWorkIsUnderWayNothingIsShown()
    {
        addFile(u"a.mp3"_s);
        m_owner.isBusy = true;
        m_state.previewMode = PreviewMode::Extrae;
        QWidget parent;
        preview::open(context(), {m_owner.selectedPaths(), u"%3"_s, {}}, &parent);
        QVERIFY(!parent.findChild<preview *>());
    }

    void itClosesByEscapeAndByItsButton()
    {
        addFile(u"a.mp3"_s);
        show(PreviewMode::Extrae, u"%3"_s);
        QTest::keyClick(m_window.get(), Qt::Key_Escape);
        QVERIFY(!m_window->isVisible());
        show(PreviewMode::Extrae, u"%3"_s);
        control<QPushButton>(m_window.get(), u"close"_s)->click();
        QVERIFY(!m_window->isVisible());
    }
};

QTEST_MAIN(TestPreview)
#include "tst_preview.moc"
