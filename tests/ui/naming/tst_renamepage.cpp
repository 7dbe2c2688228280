// SPDX-License-Identifier: GPL-3.0-or-later
// The page that names files after their tags, through its real controls over real files: the rules, their captions and
// what they enable, the names that a run gives, its questions about names that are taken, and what the settings
// remember.

#include "core/naming/sessionchoices.h"
#include "ui/naming/namingfixture.h"
#include "ui/naming/preview.h"
#include "ui/naming/renamepage.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QGroupBox>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

class TestRenamePage : public NamingFixture
{
    Q_OBJECT

private:
    std::unique_ptr<RenamePage> m_page;

    QComboBox *pattern() const { return control<QComboBox>(m_page.get(), u"tavanzado"_s); }
    QRadioButton *option(int number) const { return control<QRadioButton>(m_page.get(), u"op%1"_s.arg(number)); }
    QPushButton *label(int number) const { return control<QPushButton>(m_page.get(), u"lt_%1"_s.arg(number)); }
    void choose(int rule, const QString &advanced = {}) const
    {
        option(rule)->click();
        pattern()->setEditText(advanced);
    }
    void convert(int pair, int entry) const
    {
        auto *box = control<QCheckBox>(m_page.get(), u"op4_%1"_s.arg(pair));
        if (!box->isChecked())
            box->click();
        control<QComboBox>(m_page.get(), u"ccase_%1"_s.arg(pair))->setCurrentIndex(entry);
    }
    void rename() const { control<QPushButton>(m_page.get(), u"Command2"_s)->click(); }
    QString hint() const { return control<QLabel>(m_page.get(), u"renameHint"_s)->text(); }
    /// The existing file is in the way of new.mp3, which would get its name.
    void addClash()
    {
        writeFile(musicFolder(), u"Song.mp3"_s, audio(1));
        addFile(u"new.mp3"_s, {.title = u"Song"_s});
        choose(3, u"%3"_s);
    }
    void whenAsked(const QString &button, bool forAll = false)
    {
        whenOpened(u"clash"_s, [button, forAll](QWidget *window) {
            control<QCheckBox>(window, u"clashForAll"_s)->setChecked(forAll);
            control<QPushButton>(window, button)->click();
        });
    }

private Q_SLOTS:
    void init()
    {
        m_page.reset();
        startAfresh();
        m_page = std::make_unique<RenamePage>(context());
    }

    void atTheFirstStartOp2IsChosenAndNothingConverts()
    {
        m_page->showChoices({});
        QVERIFY(option(2)->isChecked());
        QCOMPARE(pattern()->currentText(), QString());
        for (const QString &name : {u"op4_0"_s, u"op4_3"_s})
            QVERIFY(!control<QCheckBox>(m_page.get(), name)->isChecked());
        for (const QString &name : {u"ccase_0"_s, u"ccase_3"_s})
            QCOMPARE(control<QComboBox>(m_page.get(), name)->currentIndex(), 1);
    }

    void theRulesAreNamedAfterTheFieldsOfTheLanguage_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QStringList>("texts");
        QTest::newRow("english") << u"english"_s
                                 << QStringList{u"artist - title"_s, u"track - title"_s, u"advanced"_s, u"&rename"_s,
                                        u"&preview"_s, u"advanced mode variables"_s};
        QTest::newRow("spanish") << u"spanish"_s
                                 << QStringList{u"artista - título"_s, u"pista - título"_s, u"avanzado"_s,
                                        u"&renombrar"_s, u"&vista previa"_s, u"variables modo avanzado"_s};
        QTest::newRow("french") << u"french"_s
                                << QStringList{u"artiste - titre"_s, u"piste - titre"_s, u"avancé"_s, u"&renommer"_s,
                                       u"&prévisualiser"_s, u"mode avancé des variables"_s};
    }
    void theRulesAreNamedAfterTheFieldsOfTheLanguage()
    {
        QFETCH(QString, language);
        speak(language);
        m_page->applyCaptions();
        const QStringList texts{option(1)->text(), option(2)->text(), option(3)->text(),
            control<QPushButton>(m_page.get(), u"Command2"_s)->text(),
            control<QPushButton>(m_page.get(), u"renamePreview"_s)->text(), m_page->findChild<QGroupBox *>()->title()};
        QTEST(texts, "texts");
    }

    void theLabelsAppendToTheAdvancedPatternOnlyWhileThatRuleIsChosen()
    {
        for (const int rule : {1, 2}) {
            choose(rule);
            QVERIFY(!pattern()->isEnabled());
            for (int number = 0; number < 8; ++number)
                QTest::mouseClick(label(number), Qt::LeftButton);
            QCOMPARE(pattern()->currentText(), QString());
        }
        choose(3);
        QVERIFY(pattern()->isEnabled());
        pattern()->lineEdit()->setCursorPosition(0);
        QString expected;
        for (int number = 0; number < 8; ++number) {
            QTest::mouseClick(label(number), Qt::LeftButton);
            expected += u"%%1"_s.arg(number + 1);
            QCOMPARE(pattern()->currentText(), expected);
        }
    }

    void theLabelsNameTheirFields()
    {
        QStringList texts;
        for (int number = 0; number < 8; ++number)
            texts << label(number)->text();
        QCOMPARE(texts, QStringList({u"%1 - artist"_s, u"%2 - album"_s, u"%3 - title"_s, u"%4 - track"_s,
                            u"%5 - year"_s, u"%6 - file"_s, u"%7 - genre"_s, u"%8 - comment"_s}));
    }

    void filesGetTheirNames_data()
    {
        QTest::addColumn<int>("rule");
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QStringList>("fields"); // title, artist, track
        QTest::addColumn<QString>("expected");
        QTest::newRow("slash and dots") << 1 << QString() << QStringList{u"T.N.T."_s, u"AC/DC"_s, QString()}
                                        << u"ACDC - T.N.T..mp3"_s;
        QTest::newRow("track 3") << 2 << QString() << QStringList{u"Song"_s, QString(), u"3"_s} << u"03 - Song.mp3"_s;
        QTest::newRow("track 11") << 2 << QString() << QStringList{u"Song"_s, QString(), u"11"_s} << u"11 - Song.mp3"_s;
        QTest::newRow("no artist") << 1 << QString() << QStringList{u"Song"_s, QString(), QString()} << u"old.mp3"_s;
        QTest::newRow("no track") << 2 << QString() << QStringList{u"Song"_s, QString(), QString()} << u"old.mp3"_s;
        QTest::newRow("empty album") << 3 << u"%4 %1 - %3 [%2]"_s << QStringList{u"Title"_s, u"Artist"_s, u"5"_s}
                                     << u"05 Artist - Title [%2].mp3"_s;
        QTest::newRow("title twice") << 3 << u"%3 (%3)"_s << QStringList{u"Song"_s, QString(), QString()}
                                     << u"Song (%3).mp3"_s;
        QTest::newRow("character after >") << 3 << u"%3"_s << QStringList{u"a>b"_s, QString(), QString()} << u"a.mp3"_s;
        QTest::newRow("own name") << 3 << u"%6 %3"_s << QStringList{u"人間"_s, QString(), QString()}
                                  << u"old 人間.mp3"_s;
    }
    void filesGetTheirNames()
    {
        QFETCH(int, rule);
        QFETCH(QString, pattern);
        QFETCH(QStringList, fields);
        addFile(u"old.mp3"_s, {.title = fields.at(0), .artist = fields.at(1), .track = fields.at(2)});
        const QByteArray content = readFile(m_owner.rows.at(0));
        choose(rule, pattern);
        rename();
        QTEST(filesInMusic().join(u'|'), "expected");
        QCOMPARE(readFile(at(filesInMusic().value(0))), content);
    }

    void theCaseIsConvertedBeforeTheBlanks()
    {
        addFile(u"old.mp3"_s, {.title = u"my song"_s, .artist = u"artist"_s});
        choose(1);
        convert(0, 2);
        convert(3, 0);
        rename();
        QCOMPARE(filesInMusic(), QStringList{u"Artist_-_My_Song.mp3"_s});
    }

    void namesThatSwapComeOutRight()
    {
        addFile(u"a.mp3"_s, {.title = u"b"_s});
        addFile(u"b.mp3"_s, {.title = u"a"_s});
        choose(3, u"%3"_s);
        rename();
        QCOMPARE(filesInMusic(), QStringList({u"a.mp3"_s, u"b.mp3"_s}));
        QCOMPARE(read(at(u"a.mp3"_s)).Title, u"a"_s);
        QCOMPARE(read(at(u"b.mp3"_s)).Title, u"b"_s);
    }

    void aTakenNameIsNeverOverwritten_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("skip") << u"clashSkip"_s << QStringList{u"Song.mp3"_s, u"new.mp3"_s};
        QTest::newRow("keep both") << u"clashKeepBoth"_s << QStringList{u"Song (2).mp3"_s, u"Song.mp3"_s};
        QTest::newRow("stop") << u"clashStop"_s << QStringList{u"Song.mp3"_s, u"new.mp3"_s};
    }
    void aTakenNameIsNeverOverwritten()
    {
        QFETCH(QString, button);
        addClash();
        whenAsked(button);
        rename();
        QTEST(filesInMusic(), "expected");
        QCOMPARE(readFile(at(u"Song.mp3"_s)), audio(1));
    }

    void toCloseTheQuestionIsToGiveUpTheWholeRun()
    {
        addFile(u"earlier.mp3"_s, {.title = u"Earlier"_s});
        addClash();
        addFile(u"later.mp3"_s, {.title = u"Later"_s});
        whenOpened(u"clash"_s, [](QWidget *window) { QTest::keyClick(window, Qt::Key_Escape); });
        rename();
        QCOMPARE(filesInMusic(), QStringList({u"Song.mp3"_s, u"earlier.mp3"_s, u"later.mp3"_s, u"new.mp3"_s}));
        QCOMPARE(hint(), u"given up: no file was renamed"_s);
        QVERIFY(!m_owner.events.contains(u"refresh"_s));
    }

    void toStopKeepsWhatComesBefore()
    {
        addFile(u"earlier.mp3"_s, {.title = u"Earlier"_s});
        addClash();
        addFile(u"later.mp3"_s, {.title = u"Later"_s});
        whenAsked(u"clashStop"_s);
        rename();
        QCOMPARE(filesInMusic(), QStringList({u"Earlier.mp3"_s, u"Song.mp3"_s, u"later.mp3"_s, u"new.mp3"_s}));
        QCOMPARE(hint(), u"renamed: 1; left as they were: 2"_s);
    }

    void theQuestionAboutTwoRowsDoesNotSayThatTheNameExists()
    {
        addFile(u"1.mp3"_s, {.title = u"Twice"_s});
        addFile(u"2.mp3"_s, {.title = u"Twice"_s});
        choose(3, u"%3"_s);
        QString question;
        whenOpened(u"clash"_s, [&question](QWidget *window) {
            question = control<QLabel>(window, u"clashQuestion"_s)->text();
            control<QPushButton>(window, u"clashSkip"_s)->click();
        });
        rename();
        QCOMPARE(question, u"two files would get the name “Twice.mp3”. what shall become of “2.mp3”?"_s);
        QCOMPARE(filesInMusic(), QStringList({u"2.mp3"_s, u"Twice.mp3"_s}));
    }

    void anAnswerForAllIsAskedForOnce()
    {
        addClash();
        addFile(u"newer.mp3"_s, {.title = u"Song"_s});
        whenAsked(u"clashKeepBoth"_s, true);
        rename();
        QCOMPARE(filesInMusic(), QStringList({u"Song (2).mp3"_s, u"Song (3).mp3"_s, u"Song.mp3"_s}));
    }

    void theQuestionNamesBothFiles()
    {
        addClash();
        QString question;
        whenOpened(u"clash"_s, [&question](QWidget *window) {
            question = control<QLabel>(window, u"clashQuestion"_s)->text();
            window->close();
        });
        rename();
        QVERIFY(question.contains(u"Song.mp3"_s));
        QVERIFY(question.contains(u"new.mp3"_s));
    }

    void anEmptyPatternHarmsNoFile()
    {
        addFile(u"old.mp3"_s, {.title = u"x"_s});
        choose(3, QString());
        rename();
        QCOMPARE(filesInMusic(), QStringList{u"old.mp3"_s});
        QCOMPARE(hint(), u"renamed: 0; left as they were: 1"_s);
    }

    void afterARunTheListIsFilledAgainAndTheOutcomeTold()
    {
        addFile(u"old.mp3"_s, {.title = u"x"_s});
        addFile(u"y.mp3"_s, {.title = u"y"_s});
        m_owner.current = 0;
        QSignalSpy finished(m_page.get(), &RenamePage::finished);
        choose(3, u"%3"_s);
        rename();
        QCOMPARE(m_owner.events.last(), u"refresh at "_s + at(u"x.mp3"_s));
        QVERIFY(m_owner.selectedNow.contains(at(u"x.mp3"_s)));
        QCOMPARE(m_owner.selectedNow.size(), m_owner.selectedCount());
        QCOMPARE(m_owner.recorded, QList<history::Kind>{history::Kind::Rename});
        QCOMPARE(finished.size(), 1);
        QCOMPARE(hint(), u"renamed: 1; left as they were: 1"_s);
    }

    void whileOtherWorkIsUnderWayNothingHappens()
    {
        addFile(u"old.mp3"_s, {.title = u"x"_s});
        m_owner.isBusy = true;
        choose(3, u"%3"_s);
        rename();
        QCOMPARE(filesInMusic(), QStringList{u"old.mp3"_s});
        QCOMPARE(m_owner.events, QStringList());
    }

    void theChoicesComeFromTheSettingsAndGoBackThere()
    {
        SessionChoices choices;
        choices.renameMode = 3;
        choices.renamePattern = u"%4 %3"_s;
        choices.conversions[RenameCasePair] = {true, 0};
        choices.conversions[RenameReplacePair] = {true, 1};
        m_page->showChoices(choices);
        QVERIFY(option(3)->isChecked());
        QCOMPARE(pattern()->currentText(), u"%4 %3"_s);
        QCOMPARE(control<QComboBox>(m_page.get(), u"ccase_0"_s)->currentIndex(), 0);
        SessionChoices stored;
        m_page->storeChoices(stored);
        QCOMPARE(stored.renameMode, 3);
        QCOMPARE(stored.renamePattern, u"%4 %3"_s);
        QVERIFY(stored.conversions == choices.conversions);
        choose(1, u"kept"_s);
        m_page->storeChoices(stored);
        QCOMPARE(stored.renameMode, 1);
        QCOMPARE(stored.renamePattern, u"kept"_s);
    }

    void aStoredModeThatIsNoneChoosesNone()
    {
        SessionChoices choices;
        choices.renameMode = 0;
        m_page->showChoices(choices);
        for (const int number : {1, 2, 3})
            QVERIFY(!option(number)->isChecked());
        SessionChoices stored;
        m_page->storeChoices(stored);
        QCOMPARE(stored.renameMode, 0);
        option(1)->click();
        option(2)->click();
        QVERIFY(!option(1)->isChecked());
    }

    void usedPatternsAreOfferedTheLastOneFirst()
    {
        for (const QString &used : {u"%3"_s, u"%1"_s}) {
            choose(3, used);
            rename();
        }
        choose(1);
        rename();
        QCOMPARE(pattern()->count(), 2);
        QCOMPARE(pattern()->itemText(0), u"%1"_s);
        QCOMPARE(pattern()->itemText(1), u"%3"_s);
    }

    void thePreviewShowsTheNewNamesAndRenamesNothing()
    {
        addFile(u"old.mp3"_s, {.title = u"Song"_s, .track = u"3"_s});
        choose(2);
        control<QPushButton>(m_page.get(), u"renamePreview"_s)->click();
        auto *window = m_page->findChild<preview *>();
        QVERIFY(window);
        QCOMPARE(m_state.previewMode, PreviewMode::Rename);
        QCOMPARE(control<QAbstractItemView>(window, u"ListView1"_s)->model()->index(0, 0).data().toString(),
            u"03 - Song.mp3"_s);
        window->close();
        QCOMPARE(filesInMusic(), QStringList{u"old.mp3"_s});
    }
};

QTEST_MAIN(TestRenamePage)
#include "tst_renamepage.moc"
