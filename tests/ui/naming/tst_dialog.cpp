// SPDX-License-Identifier: GPL-3.0-or-later
// The dialog that renames the current folder: its rules, which exclude each other, its labels, the name that it shows
// while the user edits the rule, what it requests, and its settings.

#include "ui/naming/dialog.h"
#include "ui/naming/namingfixture.h"

#include <QCheckBox>
#include <QDir>
#include <QGroupBox>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

class TestDialog : public NamingFixture
{
    Q_OBJECT

private:
    std::unique_ptr<Dialog> m_dialog;
    QString m_firstFile;

    void open()
    {
        m_dialog = std::make_unique<Dialog>(context(), musicFolder() + QDir::separator(), m_firstFile);
        m_dialog->show();
    }
    void openFor(const Fields &fields)
    {
        m_firstFile = addFile(u"first.mp3"_s, fields);
        open();
    }
    QCheckBox *check(int number) const { return control<QCheckBox>(m_dialog.get(), u"Check%1"_s.arg(number)); }
    QComboBox *pattern() const { return control<QComboBox>(m_dialog.get(), u"avanzado"_s); }
    void press(const QString &button) const { control<QPushButton>(m_dialog.get(), button)->click(); }
    QString shownName() const { return control<QLabel>(m_dialog.get(), u"newName"_s)->text(); }
    /// The path that OKButton requests; "none" if it requests nothing.
    QString askedFor() const
    {
        QList<RenameRow> rows;
        connect(m_dialog.get(), &Dialog::renameRequested, this, [&rows](const RenameRow &row) { rows << row; });
        press(u"OKButton"_s);
        if (rows.isEmpty())
            return u"none"_s;
        if (rows.front().from != musicFolder())
            qFatal("asked for another folder");
        return rows.front().problem ? u"refused"_s : rows.front().wanted;
    }
    QString beside(const QString &name) const { return QDir::toNativeSeparators(m_folder->path() + u'/' + name); }
    QString stored(QStringView key) const { return Settings(m_settings->path()).read(key); }

private Q_SLOTS:
    void init()
    {
        m_dialog.reset();
        m_firstFile.clear();
        startAfresh();
    }

    void withAnEmptyStoreNeitherBoxIsOn()
    {
        open();
        QVERIFY(!check(1)->isChecked());
        QVERIFY(!check(2)->isChecked());
        QCOMPARE(pattern()->currentText(), QString());
    }

    void checkingOneBoxClearsTheOther()
    {
        open();
        check(1)->click();
        check(2)->click();
        QVERIFY(!check(1)->isChecked());
        QVERIFY(check(2)->isChecked());
        check(1)->click();
        QVERIFY(check(1)->isChecked());
        QVERIFY(!check(2)->isChecked());
        check(1)->click();
        QVERIFY(!check(1)->isChecked());
        QVERIFY(!check(2)->isChecked());
    }

    void artistAndAlbumMakeTheName_data()
    {
        QTest::addColumn<QString>("artist");
        QTest::addColumn<QString>("album");
        QTest::addColumn<QString>("expected");
        QTest::newRow("both") << u"Band"_s << u"Live"_s << u"Band - Live"_s;
        QTest::newRow("album only") << QString() << u"Live"_s << u"Live"_s;
        QTest::newRow("artist only") << u"Band"_s << QString() << u"Band"_s;
        QTest::newRow("neither") << QString() << QString() << QString();
    }
    void artistAndAlbumMakeTheName()
    {
        QFETCH(QString, expected);
        QFETCH(QString, artist);
        QFETCH(QString, album);
        openFor({.title = u"x"_s, .artist = artist, .album = album});
        check(1)->click();
        QCOMPARE(shownName(), expected.isEmpty() ? m_captions.text(Text::NoNewName) : expected);
        QCOMPARE(askedFor(), expected.isEmpty() ? u"none"_s : beside(expected));
        QVERIFY(!m_dialog->isVisible());
    }

    void aSlashOfTheAlbumIsKeptAndWouldLeadIntoAnotherFolderAndIsRefused()
    {
        openFor({.artist = u"Band"_s, .album = u"A/B"_s});
        check(1)->click();
        QVERIFY(shownName().startsWith(u"Band - A/B\n"_s));
        QCOMPARE(askedFor(), u"refused"_s);
    }

    void thePatternMakesTheName_data()
    {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QString>("year");
        QTest::addColumn<QString>("album");
        QTest::addColumn<QString>("expected");
        QTest::newRow("year and album") << u"%3 - %2"_s << u"1999"_s << u"Live"_s << u"1999 - Live"_s;
        QTest::newRow("empty year") << u"%3 - %2"_s << QString() << u"Live"_s << u"%3 - Live"_s;
        QTest::newRow("slash is cleaned") << u"%2"_s << QString() << u"A/B"_s << u"AB"_s;
        QTest::newRow("Japanese") << u"%2"_s << QString() << u"人間"_s << u"人間"_s;
    }
    void thePatternMakesTheName()
    {
        QFETCH(QString, pattern);
        QFETCH(QString, year);
        QFETCH(QString, album);
        QFETCH(QString, expected);
        openFor({.album = album, .year = year});
        check(2)->click();
        this->pattern()->setEditText(pattern);
        QCOMPARE(shownName(), expected);
        QCOMPARE(askedFor(), beside(expected));
    }

    void aTakenNameIsToldBeforeItIsAskedForAndKeepsTheFolderAtFirst()
    {
        QVERIFY(QDir().mkpath(beside(u"Live"_s)));
        openFor({.album = u"Live"_s});
        const QWidget *choice = control(m_dialog.get(), u"takenName"_s);
        QVERIFY(!choice->isVisible());
        check(1)->click();
        QCOMPARE(shownName(), u"Live\n"_s + m_captions.text(Text::ErrorAlreadyExists));
        QVERIFY(choice->isVisible());
        QVERIFY(control<QRadioButton>(m_dialog.get(), u"takenSkip"_s)->isChecked());
        QCOMPARE(askedFor(), u"none"_s);
        QVERIFY(!m_dialog->isVisible());
    }

    void aTakenNameGetsANumberIfTheUserWants()
    {
        QVERIFY(QDir().mkpath(beside(u"Live"_s)));
        openFor({.album = u"Live"_s});
        check(1)->click();
        control<QRadioButton>(m_dialog.get(), u"takenNumber"_s)->click();
        QCOMPARE(shownName(), u"Live (2)\n"_s + m_captions.text(Text::ErrorAlreadyExists));
        ClashAnswer answer = ClashAnswer::Stop;
        connect(m_dialog.get(), &Dialog::renameRequested, this,
            [&answer](const RenameRow &, ClashAnswer given) { answer = given; });
        QCOMPARE(askedFor(), beside(u"Live"_s));
        QVERIFY(answer == ClashAnswer::KeepBoth);
    }

    void theWindowHasRoomForWhatItTells_data()
    {
        QTest::addColumn<QString>("language");
        for (const char *language : {"english", "spanish", "french"})
            QTest::newRow(language) << QString::fromLatin1(language);
    }
    void theWindowHasRoomForWhatItTells()
    {
        QFETCH(QString, language);
        speak(language);
        QVERIFY(QDir().mkpath(beside(u"Band - Live"_s)));
        openFor({.artist = u"Band"_s, .album = u"Live"_s});
        QVERIFY(QTest::qWaitForWindowExposed(m_dialog.get()));
        const auto *label = control<QPushButton>(m_dialog.get(), u"lt_0"_s);
        check(1)->click();
        QApplication::processEvents();
        QVERIFY(label->height() >= label->fontMetrics().height());
        QCOMPARE(label->visibleRegion().boundingRect().height(), label->height());
        const auto *name = control<QLabel>(m_dialog.get(), u"newName"_s);
        QVERIFY(name->height() >= name->heightForWidth(name->width()));
    }

    void aNameThatIsFreeAsksForNothing()
    {
        QVERIFY(QDir().mkpath(beside(u"Live"_s)));
        openFor({.album = u"Live"_s});
        check(2)->click();
        pattern()->setEditText(u"%2"_s);
        QVERIFY(control(m_dialog.get(), u"takenName"_s)->isVisible());
        pattern()->setEditText(u"%2 x"_s);
        QCOMPARE(shownName(), u"Live x"_s);
        QVERIFY(!control(m_dialog.get(), u"takenName"_s)->isVisible());
        QCOMPARE(askedFor(), beside(u"Live x"_s));
    }

    void aFolderThatWouldGoIntoItselfIsTold()
    {
        openFor({.album = u"Live"_s});
        check(2)->click();
        pattern()->setEditText(QFileInfo(musicFolder()).fileName() + u"/a/b/%2"_s);
        QVERIFY(shownName().endsWith(u'\n' + m_captions.text(Text::ErrorIntoItself)));
        QVERIFY(!QFileInfo::exists(at(u"a"_s)));
    }

    void withoutARuleNothingIsRenamed()
    {
        openFor({.artist = u"Band"_s, .album = u"Live"_s});
        QCOMPARE(shownName(), m_captions.text(Text::NoNewName));
        QCOMPARE(askedFor(), u"none"_s);
        QVERIFY(!m_dialog->isVisible());
    }

    void withoutAFirstFileNothingIsRenamed_data()
    {
        QTest::addColumn<QString>("file");
        QTest::newRow("empty list") << QString();
        QTest::newRow("file that is gone") << u"gone.mp3"_s;
    }
    void withoutAFirstFileNothingIsRenamed()
    {
        QFETCH(QString, file);
        m_firstFile = file.isEmpty() ? QString() : at(file);
        open();
        check(2)->click();
        pattern()->setEditText(u"fixed"_s);
        QCOMPARE(shownName(), m_captions.text(Text::NoFirstTag));
        QCOMPARE(askedFor(), u"none"_s);
    }

    void cancelAsksForNothing()
    {
        openFor({.artist = u"Band"_s, .album = u"Live"_s});
        check(1)->click();
        QSignalSpy asked(m_dialog.get(), &Dialog::renameRequested);
        press(u"CancelButton"_s);
        QCOMPARE(asked.size(), 0);
        QVERIFY(!m_dialog->isVisible());
    }

    void theLabelsAppendTheirPlaceholders()
    {
        openFor({.artist = u"Band"_s, .album = u"Live"_s});
        speak(u"spanish"_s);
        open();
        const QStringList texts{u"%1 - artista"_s, u"%2 - album"_s, u"%3 - año"_s, u"%4 - estilo"_s};
        QString expected;
        for (int number = 0; number < 4; ++number) {
            auto *label = control<QPushButton>(m_dialog.get(), u"lt_%1"_s.arg(number));
            QCOMPARE(label->text(), texts.at(number));
            pattern()->lineEdit()->setCursorPosition(0);
            QTest::mouseClick(label, Qt::LeftButton);
            expected += texts.at(number).left(2);
            QCOMPARE(pattern()->currentText(), expected);
        }
    }

    void enterOnALabelDoesNotRename()
    {
        openFor({.artist = u"Band"_s});
        QSignalSpy asked(m_dialog.get(), &Dialog::renameRequested);
        QTest::keyClick(control(m_dialog.get(), u"lt_0"_s), Qt::Key_Return);
        QVERIFY(m_dialog->isVisible());
        QCOMPARE(asked.size(), 0);
        QCOMPARE(pattern()->currentText(), u"%1"_s);
    }

    void theSettingsAreWrittenWheneverItIsClosed_data()
    {
        QTest::addColumn<QString>("how");
        QTest::addColumn<int>("box");
        for (const QString &how : {u"OKButton"_s, u"CancelButton"_s, u"Escape"_s, u"close"_s}) {
            for (const int box : {0, 1, 2})
                QTest::addRow("%s, box %d", qPrintable(how), box) << how << box;
        }
    }
    void theSettingsAreWrittenWheneverItIsClosed()
    {
        QFETCH(QString, how);
        QFETCH(int, box);
        m_settings->write(settingskey::DirRename, box == 2 ? u"1"_s : u"2"_s);
        openFor({.artist = u"Band"_s});
        check(box == 2 ? 1 : 2)->click(); // off
        if (box != 0)
            check(box)->click();
        pattern()->setEditText(u"%2 x"_s);
        if (how == u"Escape"_s)
            QTest::keyClick(m_dialog.get(), Qt::Key_Escape);
        else if (how == u"close"_s)
            m_dialog->close();
        else
            press(how);
        QCOMPARE(stored(settingskey::DirRename), box == 0 ? QString() : QString::number(box));
        QCOMPARE(stored(settingskey::DirRenameVar), u"%2 x"_s);
    }

    void theSettingsAreReadWhenItOpens_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<bool>("first");
        QTest::addColumn<bool>("second");
        QTest::newRow("1") << u"1"_s << true << false;
        QTest::newRow("2") << u"2"_s << false << true;
        QTest::newRow("empty") << QString() << false << false;
        QTest::newRow("nonsense") << u"3"_s << false << false;
    }
    void theSettingsAreReadWhenItOpens()
    {
        QFETCH(QString, value);
        m_settings->write(settingskey::DirRename, value);
        m_settings->write(settingskey::DirRenameVar, u"%1"_s);
        open();
        QTEST(check(1)->isChecked(), "first");
        QTEST(check(2)->isChecked(), "second");
        QCOMPARE(pattern()->currentText(), u"%1"_s);
    }

    void usedPatternsAreOfferedTheLastOneFirst()
    {
        for (const QString &used : {u"%1"_s, u"%2"_s}) {
            openFor({.artist = u"Band"_s, .album = u"Live"_s});
            if (!check(2)->isChecked())
                check(2)->click();
            pattern()->setEditText(used);
            press(u"OKButton"_s);
        }
        reopenSettings();
        open();
        QCOMPARE(pattern()->count(), 2);
        QCOMPARE(pattern()->itemText(0), u"%2"_s);
        QCOMPARE(pattern()->itemText(1), u"%1"_s);
    }

    void captionsInThreeLanguages_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QStringList>("texts");
        QTest::newRow("english") << u"english"_s
                                 << QStringList{u"rename dir"_s, u"artist - album"_s, u"advanced"_s,
                                        u"advanced mode variables"_s, u"&rename"_s, u"cancel"_s};
        QTest::newRow("spanish") << u"spanish"_s
                                 << QStringList{u"renombrar directorio"_s, u"artista - album"_s, u"avanzado"_s,
                                        u"variables modo avanzado"_s, u"&renombrar"_s, u"cancelar"_s};
        QTest::newRow("french") << u"french"_s
                                << QStringList{u"renomme répertoire"_s, u"artiste - album"_s, u"avancé"_s,
                                       u"mode avancé des variables"_s, u"&renommer"_s, u"annuler"_s};
    }
    void captionsInThreeLanguages()
    {
        QFETCH(QString, language);
        speak(language);
        open();
        const QStringList texts{m_dialog->windowTitle(), check(1)->text(), check(2)->text(),
            m_dialog->findChild<QGroupBox *>()->title(), control<QPushButton>(m_dialog.get(), u"OKButton"_s)->text(),
            control<QPushButton>(m_dialog.get(), u"CancelButton"_s)->text()};
        QTEST(texts, "texts");
    }
};

QTEST_MAIN(TestDialog)
#include "tst_dialog.moc"
