// SPDX-License-Identifier: GPL-3.0-or-later
// The options dialog shows the settings and changes the language at once; save writes the choices, cancel does not.

#include "core/app/programstate.h"
#include "core/app/settings.h"
#include "support/cddbtest.h"
#include "support/updateserver.h"
#include "ui/app/opciones.h"
#include "ui/app/program.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QScopeGuard>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>
#include <QTimer>
#include <QWheelEvent>

#include <memory>
#include <tuple>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

class TestOpciones : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Program> m_program;
    std::unique_ptr<opciones> m_dialog;

    static void store(const QList<std::pair<QString, QString>> &values)
    {
        Settings settings;
        for (const auto &[key, value] : values)
            settings.write(key, value);
        QVERIFY(settings.save());
    }
    static QString stored(const QString &key) { return Settings().read(key); }
    static QByteArray file()
    {
        QFile settings(Settings::defaultPath());
        return settings.open(QIODevice::ReadOnly) ? settings.readAll() : QByteArray();
    }

    /// Starts the program and opens the dialog.
    void open()
    {
        m_dialog.reset();
        m_program = std::make_unique<Program>();
        m_program->captions.chooseAtStart(m_program->settings);
        openAgain();
    }
    void openAgain()
    {
        m_dialog = std::make_unique<opciones>(*m_program);
        m_dialog->show();
    }
    template <typename Control>
    Control *control(const QString &name) const
    {
        auto *found = m_dialog->findChild<Control *>(name);
        if (!found)
            qFatal("no control %s", qPrintable(name));
        return found;
    }
    QComboBox *list(const QString &name) const { return control<QComboBox>(name); }
    QLineEdit *field(const QString &name) const { return control<QLineEdit>(name); }
    QString label(const QString &name) const { return control<QLabel>(name)->text(); }
    QCheckBox *opreme() const { return control<QCheckBox>(u"opreme"_s); }
    /// Chooses an entry as a user does.
    void choose(const QString &name, int index) const
    {
        QComboBox *box = list(name);
        box->setFocus();
        QTest::keyClick(box, Qt::Key_Home);
        for (int i = 0; i < index; ++i)
            QTest::keyClick(box, Qt::Key_Down);
        QCOMPARE(box->currentIndex(), index);
    }
    void chooseLanguage(const QString &language) const
    {
        choose(u"cidioma"_s, list(u"cidioma"_s)->findText(language));
        QCOMPARE(m_program->captions.languageName(), language);
    }
    void press(const QString &button) const
    {
        QTest::mouseClick(control<QPushButton>(button), Qt::LeftButton);
        QVERIFY(!m_dialog->isVisible());
    }
    QStringList modes() const
    {
        QStringList texts;
        for (int i = 0; i < list(u"ctags"_s)->count(); ++i)
            texts << list(u"ctags"_s)->itemText(i);
        return texts;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(!qEnvironmentVariable("XDG_CONFIG_HOME").isEmpty());
        leaveProxiesOut();
    }
    void init() { QFile::remove(Settings::defaultPath()); }
    void cleanup()
    {
        m_dialog.reset();
        m_program.reset();
    }

    void freshInstallation()
    {
        open();
        QCOMPARE(list(u"cidioma"_s)->currentText(), u"english"_s);
        QCOMPARE(list(u"ctags"_s)->currentText(), u"save id3v1 and id3v2"_s);
        QCOMPARE(list(u"ctags"_s)->currentIndex(), 2);
        QCOMPARE(field(u"tserver"_s)->text(), defaults::Server.toString());
        QCOMPARE(field(u"tmail"_s)->text(), defaults::Mail.toString());
        QVERIFY(!opreme()->isChecked());
        QVERIFY(!QFile::exists(Settings::defaultPath())); // opening writes nothing
        QCOMPARE(m_program->state.tagSaveMode, 2);
    }

    void theListsHoldTheirItemsInOrder()
    {
        open();
        const QComboBox *languages = list(u"cidioma"_s);
        QCOMPARE(languages->count(), 3);
        QCOMPARE(languages->itemText(0), u"spanish"_s);
        QCOMPARE(languages->itemText(1), u"english"_s);
        QCOMPARE(languages->itemText(2), u"french"_s);
        QCOMPARE(modes(), (QStringList{u"save id3v1 only"_s, u"save id3v2 only"_s, u"save id3v1 and id3v2"_s,
                              u"save id3v1 and remove id3v2"_s, u"save id3v2 and remove id3v1"_s}));
        for (int i = 0; i < 5; ++i)
            QCOMPARE(list(u"ctags"_s)->itemData(i).toInt(), i + 1);
    }

    void theTextsAreThoseOfTheLanguage_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QStringList>("texts");
        QTest::addColumn<QStringList>("modes");
        QTest::newRow("english") << u"english"_s
                                 << QStringList{u"options"_s, u"lenguage"_s, u"remember last directory"_s, u"server"_s,
                                        u"save"_s, u"cancel"_s, u"ravlin! update"_s, u"check for new version"_s}
                                 << QStringList{u"save id3v1 only"_s, u"save id3v2 only"_s, u"save id3v1 and id3v2"_s,
                                        u"save id3v1 and remove id3v2"_s, u"save id3v2 and remove id3v1"_s};
        QTest::newRow("spanish") << u"spanish"_s
                                 << QStringList{u"opciones"_s, u"lenguaje"_s, u"recuerda último directorio"_s,
                                        u"servidor"_s, u"guardar"_s, u"cancelar"_s, u"actualización de ravlin!"_s,
                                        u"buscar nueva version"_s}
                                 << QStringList{u"guarda solo id3v1"_s, u"guarda solo id3v2"_s,
                                        u"guarda id3v1 y id3v2"_s, u"guarda id3v1 y borra id3v2"_s,
                                        u"guarda id3v2 y borra id3v1"_s};
        QTest::newRow("french") << u"french"_s
                                << QStringList{u"options"_s, u"langue"_s, u"se souvenir de ce répertoire"_s,
                                       u"serveur"_s, u"sauvegarder"_s, u"annuler"_s, u"mise à jour ravlin!"_s,
                                       u"chercher nouvelle version"_s}
                                << QStringList{u"sauvegarder tag id3v1 uniquement"_s,
                                       u"sauvegarder tag id3v2 uniquement"_s, u"sauvegarder tags id3v1 et id3v2"_s,
                                       u"sauvegarder tag id3v1 et supprimer tag id3v2"_s,
                                       u"sauvegarder tag id3v2 et supprimer tag id3v1"_s};
    }
    void theTextsAreThoseOfTheLanguage()
    {
        QFETCH(QString, language);
        open();
        chooseLanguage(language);
        const QStringList texts{m_dialog->windowTitle(), label(u"lidioma"_s), opreme()->text(), label(u"lserver"_s),
            control<QPushButton>(u"ok"_s)->text(), control<QPushButton>(u"cancel"_s)->text(),
            control<QGroupBox>(u"update"_s)->title(), control<QPushButton>(u"upd"_s)->text()};
        QTEST(texts, "texts");
        QTEST(modes(), "modes");
        QCOMPARE(label(u"Label1"_s), u"tags"_s);
        QCOMPARE(label(u"lmail"_s), u"email"_s);
        QCOMPARE(control<QGroupBox>(u"general"_s)->title(), u"general"_s);
        QCOMPARE(control<QGroupBox>(u"freedb"_s)->title(), u"freedb"_s);
    }

    void storedTags5SelectsTheLastItemAndIsSavedAgain()
    {
        store({{u"tags"_s, u"5"_s}});
        open();
        QCOMPARE(list(u"ctags"_s)->currentIndex(), 4);
        QCOMPARE(list(u"ctags"_s)->currentText(), u"save id3v2 and remove id3v1"_s);
        press(u"ok"_s);
        QCOMPARE(stored(u"tags"_s), u"5"_s);
        QCOMPARE(m_program->state.tagSaveMode, 5);
    }

    void everyStoredModeIsSelected()
    {
        for (int mode = 1; mode <= 5; ++mode) {
            store({{u"tags"_s, QString::number(mode)}});
            open();
            QCOMPARE(list(u"ctags"_s)->currentIndex(), mode - 1);
        }
    }

    void anyOtherStoredModeLeavesNothingSelected()
    {
        for (const QString &other : {u"0"_s, u"6"_s, u" 3"_s, u"33"_s, u"x"_s}) {
            store({{u"tags"_s, other}});
            open();
            QCOMPARE(list(u"ctags"_s)->currentIndex(), -1);
            m_program->state.tagSaveMode = 4;
            press(u"ok"_s);
            QCOMPARE(stored(u"tags"_s), other);
            QCOMPARE(m_program->state.tagSaveMode, 4);
        }
    }

    void storedIdiomaDeLeavesCidiomaAsDesignedAndTheInterfaceEnglish()
    {
        store({{u"idioma"_s, u"de"_s}});
        open();
        QCOMPARE(list(u"cidioma"_s)->currentText(), u"english"_s);
        QCOMPARE(m_program->captions.languageName(), u"english"_s);
        QCOMPARE(m_program->captions.text(Caption::Options), u"options"_s);
    }

    void theStoredLanguageIsShown_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("name");
        QTest::newRow("es") << u"es"_s << u"spanish"_s;
        QTest::newRow("en") << u"en"_s << u"english"_s;
        QTest::newRow("fr") << u"fr"_s << u"french"_s;
    }
    void theStoredLanguageIsShown()
    {
        QFETCH(QString, code);
        QFETCH(QString, name);
        store({{u"idioma"_s, code}});
        open();
        QCOMPARE(list(u"cidioma"_s)->currentText(), name);
        QCOMPARE(m_program->captions.languageName(), name);
        press(u"ok"_s);
        QCOMPARE(stored(u"idioma"_s), code);
    }

    void changeLanguageChangeTagModeChangeLanguageAgain()
    {
        store({{u"tags"_s, u"2"_s}});
        open();
        chooseLanguage(u"french"_s);
        choose(u"ctags"_s, 4);
        QCOMPARE(list(u"ctags"_s)->currentData().toInt(), 5);
        chooseLanguage(u"spanish"_s);
        QCOMPARE(list(u"ctags"_s)->currentData().toInt(), 2);
        QCOMPARE(list(u"ctags"_s)->currentText(), u"guarda solo id3v2"_s);
        QCOMPARE(m_program->state.tagSaveMode, 2);
    }

    void whatElseWasChangedStaysWhenTheLanguageChanges()
    {
        open();
        opreme()->setChecked(true);
        field(u"tserver"_s)->setText(u"cd.example.org"_s);
        chooseLanguage(u"french"_s);
        QVERIFY(opreme()->isChecked());
        QCOMPARE(field(u"tserver"_s)->text(), u"cd.example.org"_s);
    }

    void changeLanguageThenCancel()
    {
        store({{u"idioma"_s, u"es"_s}, {u"tags"_s, u"2"_s}});
        const QByteArray before = file();
        open();
        chooseLanguage(u"french"_s);
        choose(u"ctags"_s, 0);
        opreme()->setChecked(true);
        field(u"tserver"_s)->setText(u"cd.example.org"_s);
        press(u"cancel"_s);
        QCOMPARE(m_program->captions.languageName(), u"french"_s);
        QCOMPARE(m_program->captions.text(Caption::Cancel), u"annuler"_s);
        QCOMPARE(QCoreApplication::translate("QPlatformTheme", "&Yes"), u"&Oui"_s);
        QCOMPARE(stored(u"idioma"_s), u"es"_s);
        QCOMPARE(file(), before);
        QVERIFY(m_program->settings.save()); // has nothing to write
        QCOMPARE(file(), before);
        QCOMPARE(m_program->state.tagSaveMode, 2);
        open(); // the next start
        QCOMPARE(m_program->captions.languageName(), u"spanish"_s);
    }

    void escapeIsCancel()
    {
        open();
        opreme()->setChecked(true);
        QTest::keyClick(m_dialog.get(), Qt::Key_Escape);
        QVERIFY(!m_dialog->isVisible());
        QVERIFY(!QFile::exists(Settings::defaultPath()));
    }

    void clearingTserverAndSaving()
    {
        store({{u"servidor"_s, u"cd.example.org"_s}, {u"correo"_s, u"me@example.org"_s}});
        open();
        QCOMPARE(field(u"tserver"_s)->text(), u"cd.example.org"_s);
        QCOMPARE(field(u"tmail"_s)->text(), u"me@example.org"_s);
        field(u"tserver"_s)->clear();
        press(u"ok"_s);
        QCOMPARE(stored(u"servidor"_s), QString());
        QVERIFY(file().contains("servidor=\n"));
        QCOMPARE(stored(u"correo"_s), u"me@example.org"_s);
        openAgain();
        QCOMPARE(field(u"tserver"_s)->text(), defaults::Server.toString());
    }

    void saveWritesAllFiveKeys()
    {
        open();
        chooseLanguage(u"french"_s);
        choose(u"ctags"_s, 4);
        opreme()->setChecked(true);
        field(u"tserver"_s)->setText(u"  cd.example.org "_s);
        field(u"tmail"_s)->setText(u"no address at all"_s);
        press(u"ok"_s);
        QCOMPARE(file(), QByteArray("[ini]\ncorreo=no address at all\nidioma=fr\nrecuerda=si\n"
                                    "servidor=\"  cd.example.org \"\ntags=5\n"));
        QCOMPARE(m_program->state.tagSaveMode, 5);
        QCOMPARE(m_program->captions.languageName(), u"french"_s);
    }

    void theBoxForTheFolderIsSiAndNoExactly()
    {
        const std::pair<QString, bool> values[] = {
            {u"si"_s, true}, {u"no"_s, false}, {u"Si"_s, false}, {u"yes"_s, false}, {QString(), false}};
        for (const auto &[value, checked] : values) {
            store({{u"recuerda"_s, value}});
            open();
            QCOMPARE(opreme()->isChecked(), checked);
            press(u"ok"_s);
            QCOMPARE(stored(u"recuerda"_s), checked ? u"si"_s : u"no"_s);
        }
    }

    void itIsLoadedEachTimeItIsOpened()
    {
        open();
        press(u"cancel"_s);
        store({{u"idioma"_s, u"fr"_s}, {u"tags"_s, u"1"_s}}); // by another instance
        openAgain();
        QCOMPARE(list(u"cidioma"_s)->currentText(), u"french"_s);
        QCOMPARE(list(u"ctags"_s)->currentIndex(), 0);
    }

    void settingsThatCannotBeSavedAreToldAndInForce()
    {
        open();
        QVERIFY(QDir().mkpath(Settings::defaultPath() + u"/in the way"_s)); // a folder in the file's place
        chooseLanguage(u"spanish"_s);
        choose(u"ctags"_s, 0);
        QString told;
        QTimer::singleShot(0, this, [&told] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            told = box ? box->text() : QString();
            if (box)
                box->accept();
        });
        press(u"ok"_s);
        QCOMPARE(told, u"la configuración no se puede leer o guardar"_s);
        QCOMPARE(m_program->state.tagSaveMode, 1);
        QCOMPARE(m_program->captions.languageName(), u"spanish"_s);
        QVERIFY(QDir(Settings::defaultPath()).removeRecursively());
        QVERIFY(m_program->settings.save()); // as the program does when it ends
        QCOMPARE(stored(u"tags"_s), u"1"_s);
        QCOMPARE(stored(u"idioma"_s), u"es"_s);
    }

    void theKeyboardReachesEverything()
    {
        open();
        QVERIFY(QTest::qWaitForWindowActive(m_dialog.get()));
        QStringList way;
        list(u"cidioma"_s)->setFocus();
        do {
            way << QApplication::focusWidget()->objectName();
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        } while (QApplication::focusWidget() != list(u"cidioma"_s) && way.size() < 20);
        QCOMPARE(way.join(u' '),
            u"cidioma ctags opreme tserver tmail upd chcampos chseleccion chsubcarpetas chpapelera ok "
            u"cancel qt_tabwidget_tabbar"_s);
    }

    void enterInATextBoxSaves()
    {
        open();
        field(u"tmail"_s)->setText(u"me@example.org"_s);
        QTest::keyClick(field(u"tmail"_s), Qt::Key_Return);
        QVERIFY(!m_dialog->isVisible());
        QCOMPARE(stored(u"correo"_s), u"me@example.org"_s);
    }

    void theWheelChangesNothingOnItsWay()
    {
        open();
        opreme()->setFocus();
        QWheelEvent turn(QPointF(5, 5), list(u"cidioma"_s)->mapToGlobal(QPointF(5, 5)), {}, QPoint(0, -120),
            Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(list(u"cidioma"_s), &turn);
        QCOMPARE(list(u"cidioma"_s)->currentText(), u"english"_s);
        QCOMPARE(m_program->captions.languageName(), u"english"_s);
    }

    void labelsAreTheBuddiesOfTheirFields()
    {
        open();
        const std::pair<QString, QString> pairs[] = {{u"lidioma"_s, u"cidioma"_s}, {u"Label1"_s, u"ctags"_s},
            {u"lserver"_s, u"tserver"_s}, {u"lmail"_s, u"tmail"_s}};
        for (const QString &language : {u"spanish"_s, u"french"_s, u"english"_s}) {
            chooseLanguage(language);
            for (const auto &[name, field] : pairs) {
                const QWidget *buddy = control<QLabel>(name)->buddy();
                QVERIFY(buddy);
                QCOMPARE(buddy->objectName(), field);
                QCOMPARE(buddy->accessibleName(), label(name));
            }
        }
    }

    void updOpensTheUpdateWindowAndTheOptionsStayOpenBeneath()
    {
        UpdateServer server;
        server.serveVersionFile({}, Serving::Silence);
        qputenv("RAVLIN_UPDATE_URL", server.origin().toLatin1());
        open();
        control<QPushButton>(u"upd"_s)->click();
        qunsetenv("RAVLIN_UPDATE_URL");
        QPointer<QDialog> window = control<QDialog>(u"mainform"_s);
        QVERIFY(window->isVisible());
        QVERIFY(window->isModal());
        QVERIFY(m_dialog->isVisible());
        QTRY_COMPARE_WITH_TIMEOUT(server.requests(), QByteArrayList{"/ravlin/app/ravlin.ver"}, PatientWait);
        window->close();
        QTRY_VERIFY_WITH_TIMEOUT(!window, PatientWait);
        QTRY_COMPARE_WITH_TIMEOUT(server.openConnections(), 0, PatientWait);
        QVERIFY(m_dialog->isVisible());
    }

    void fieldsStandInOneLine()
    {
        open();
        for (const QString &language : {u"spanish"_s, u"french"_s, u"english"_s}) {
            chooseLanguage(language);
            QCoreApplication::processEvents();
            const auto leftOf = [this](const QString &name) {
                return control<QWidget>(name)->mapTo(m_dialog.get(), QPoint()).x();
            };
            QCOMPARE(leftOf(u"ctags"_s), leftOf(u"cidioma"_s));
            QCOMPARE(leftOf(u"tserver"_s), leftOf(u"cidioma"_s));
            QCOMPARE(leftOf(u"tmail"_s), leftOf(u"cidioma"_s));
            control<QTabWidget>(u"optionPages"_s)->setCurrentIndex(1);
            QCoreApplication::processEvents();
            QCOMPARE(leftOf(u"cclick"_s), leftOf(u"cversion"_s));
            control<QTabWidget>(u"optionPages"_s)->setCurrentIndex(0);
        }
    }

    void itFitsTheScreenInAnyLetters_data()
    {
        QTest::addColumn<int>("points");
        for (const int points : {7, 9, 14, 24, 32})
            QTest::addRow("%d points", points) << points;
    }
    void itFitsTheScreenInAnyLetters()
    {
        QFETCH(int, points);
        const QFont before = QApplication::font();
        QFont font = before;
        font.setPointSize(points);
        QApplication::setFont(font);
        const auto restore = qScopeGuard([&] {
            m_dialog.reset();
            QApplication::setFont(before);
        });
        open();
        const QSize screen = m_dialog->screen()->availableSize();
        for (const QString &language : {u"french"_s, u"english"_s}) {
            chooseLanguage(language);
            QCoreApplication::processEvents();
            QVERIFY(m_dialog->width() <= screen.width());
            QVERIFY(m_dialog->height() < screen.height()); // the title bar needs room, too
            QVERIFY(!control<QPushButton>(u"cancel"_s)->visibleRegion().isEmpty());
            for (int number = 0; number < 2; ++number) {
                control<QTabWidget>(u"optionPages"_s)->setCurrentIndex(number);
                QCoreApplication::processEvents();
                // A page scrolls only where the screen is too small for it.
                const auto *page = qobject_cast<QScrollArea *>(control<QTabWidget>(u"optionPages"_s)->widget(number));
                const bool fits = page->widget()->sizeHint().height() <= page->viewport()->height();
                QCOMPARE(page->verticalScrollBar()->maximum() > 0, !fits);
                QVERIFY(fits || points > 14);
            }
        }
        // The Tab key scrolls to what it reaches.
        control<QTabWidget>(u"optionPages"_s)->setCurrentIndex(0);
        control<QPushButton>(u"upd"_s)->setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
        QTRY_VERIFY(!field(u"tmail"_s)->visibleRegion().isEmpty());
    }

    void nothingIsCutOffInAnyLanguage()
    {
        open();
        for (const QString &language : {u"spanish"_s, u"french"_s, u"english"_s}) {
            chooseLanguage(language);
            auto *pages = control<QTabWidget>(u"optionPages"_s);
            for (int page = 0; page < pages->count(); ++page) {
                pages->setCurrentIndex(page);
                QCoreApplication::processEvents();
                for (const QWidget *widget : m_dialog->findChildren<QWidget *>()) {
                    const bool hasText =
                        qobject_cast<const QLabel *>(widget) || qobject_cast<const QAbstractButton *>(widget);
                    if (hasText && widget->isVisible() && !widget->inherits("QToolButton"))
                        QVERIFY2(widget->width() >= widget->sizeHint().width(),
                            qPrintable(language + u' ' + widget->objectName()));
                }
            }
            pages->setCurrentIndex(0);
        }
    }
};

QTEST_MAIN(TestOpciones)
#include "tst_opciones.moc"
