// SPDX-License-Identifier: GPL-3.0-or-later
// The second page of the options shows what is stored. Its choices are saved with those of the first page and apply at
// once.

#include "core/app/programstate.h"
#include "core/app/settings.h"
#include "ui/app/furtheroptions.h"
#include "ui/app/opciones.h"
#include "ui/app/program.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace ravlin;

class TestFurtherOptions : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Program> m_program;
    std::unique_ptr<opciones> m_dialog;

    void open()
    {
        m_dialog.reset();
        m_program = std::make_unique<Program>();
        m_program->captions.chooseAtStart(m_program->settings);
        m_dialog = std::make_unique<opciones>(*m_program);
        m_dialog->show();
        control<QTabWidget>(u"optionPages"_s)->setCurrentIndex(1);
    }
    template <typename Control>
    Control *control(const QString &name) const
    {
        auto *found = m_dialog->findChild<Control *>(name);
        if (!found)
            qFatal("no control %s", qPrintable(name));
        return found;
    }
    QCheckBox *column(int number) const { return control<QCheckBox>(u"chcolumn_%1"_s.arg(number)); }
    void press(const QString &button) const { control<QPushButton>(button)->click(); }
    static QByteArray file()
    {
        QFile settings(Settings::defaultPath());
        return settings.open(QIODevice::ReadOnly) ? settings.readAll() : QByteArray();
    }

private Q_SLOTS:
    void init() { QFile::remove(Settings::defaultPath()); }
    void cleanup()
    {
        m_dialog.reset();
        m_program.reset();
    }

    void theDefaultsAreShown()
    {
        open();
        QCOMPARE(control<QComboBox>(u"cversion"_s)->currentText(), u"ID3v2.3"_s);
        QVERIFY(!control<QCheckBox>(u"chtimes"_s)->isChecked());
        QCOMPARE(control<QComboBox>(u"cclick"_s)->currentIndex(), 0);
        for (int i = 0; i < 8; ++i) {
            QVERIFY(column(i)->isChecked());
            QCOMPARE(column(i)->isEnabled(), i != 0);
        }
    }

    void whatIsChosenIsStoredInForceAndShownAgain()
    {
        open();
        control<QComboBox>(u"cversion"_s)->setCurrentIndex(1);
        control<QCheckBox>(u"chtimes"_s)->setChecked(true);
        control<QComboBox>(u"cclick"_s)->setCurrentIndex(1);
        column(1)->setChecked(false);
        column(7)->setChecked(false);
        press(u"ok"_s);
        const FurtherOptions expected{4, true, DoubleClick::Edit, u"track id3v2"_s};
        QVERIFY(m_program->state.options == expected);
        QVERIFY(FurtherOptions::restored(Settings()) == expected);

        open();
        QCOMPARE(control<QComboBox>(u"cversion"_s)->currentText(), u"ID3v2.4"_s);
        QVERIFY(control<QCheckBox>(u"chtimes"_s)->isChecked());
        QCOMPARE(control<QComboBox>(u"cclick"_s)->currentIndex(), 1);
        for (int i = 0; i < 8; ++i)
            QCOMPARE(column(i)->isChecked(), i != 1 && i != 7);
    }

    void cancelWritesNothingAndChangesNothing()
    {
        open();
        control<QComboBox>(u"cversion"_s)->setCurrentIndex(1);
        column(1)->setChecked(false);
        press(u"cancel"_s);
        QVERIFY(!QFile::exists(Settings::defaultPath()));
        QVERIFY(m_program->state.options == FurtherOptions());
    }

    void whatIsNotSavedYetStaysWhenTheLanguageChanges()
    {
        open();
        control<QComboBox>(u"cversion"_s)->setCurrentIndex(1);
        control<QComboBox>(u"cclick"_s)->setCurrentIndex(1);
        column(3)->setChecked(false);
        auto *pages = control<QTabWidget>(u"optionPages"_s);
        pages->setCurrentIndex(0);
        auto *languages = control<QComboBox>(u"cidioma"_s);
        languages->setFocus();
        QTest::keyClick(languages, Qt::Key_Home);
        QCOMPARE(m_program->captions.languageName(), u"spanish"_s);
        QCOMPARE(control<QComboBox>(u"cversion"_s)->currentIndex(), 1);
        QCOMPARE(control<QComboBox>(u"cclick"_s)->currentIndex(), 1);
        QVERIFY(!column(3)->isChecked());
        QCOMPARE(column(3)->text(), u"artista"_s);
        QCOMPARE(column(6)->text(), u"id3v1"_s);
        QCOMPARE(pages->tabText(1), u"más opciones"_s);
    }

    void valuesOfALaterVersionAreKept()
    {
        const QByteArray later = "[ini]\nid3v2 version=5\nkeep times=weekly\ndouble click=rate\n"
                                 "hidden columns=bpm  track rating\n";
        {
            QDir().mkpath(QFileInfo(Settings::defaultPath()).path());
            QFile settings(Settings::defaultPath());
            QVERIFY(settings.open(QIODevice::WriteOnly));
            settings.write(later);
        }
        open();
        QVERIFY(!column(1)->isChecked());
        press(u"ok"_s);
        for (const QByteArray &line : later.split('\n'))
            QVERIFY2(file().contains(line), line);
        open();
        column(5)->setChecked(false);
        press(u"ok"_s);
        QVERIFY2(file().contains("\nhidden columns=track year bpm rating\n"), file());
    }

    void theHistorysLimitsAreShownAndStored()
    {
        open();
        auto *days = control<QSpinBox>(u"dias"_s);
        auto *megabytes = control<QSpinBox>(u"megas"_s);
        QCOMPARE(days->value(), 90);
        QCOMPARE(megabytes->value(), 500);
        days->setValue(7);
        megabytes->setValue(50);
        press(u"ok"_s);
        QCOMPARE(m_program->state.options.historyDays, 7);
        QCOMPARE(m_program->state.options.historyMegabytes, 50);
        QVERIFY2(file().contains("\nhistoria dias=7\nhistoria megas=50\n"), file());
        open();
        QCOMPARE(control<QSpinBox>(u"dias"_s)->value(), 7);
        QCOMPARE(control<QSpinBox>(u"megas"_s)->value(), 50);
        control<QSpinBox>(u"dias"_s)->setValue(100'000);
        QCOMPARE(control<QSpinBox>(u"dias"_s)->value(), 3650);
    }

    void allIsForgottenOnlyAfterAYes()
    {
        m_program = std::make_unique<Program>();
        m_program->history.beginEntry(history::Kind::Single, u"/music"_s);
        storage::ChangeRecord change;
        change.path = u"/music/a.mp3"_s;
        m_program->history.end(m_program->history.begin(change).value(), storage::ChangeDone{});
        QVERIFY(m_program->history.endEntry().entry.id != 0);
        open();
        auto *forget = control<QPushButton>(u"forgetAll"_s);
        QVERIFY(forget->isEnabled());
        QVERIFY(control<QLabel>(u"historySize"_s)->text().startsWith(u"it takes "_s));
        const auto answer = [&](QMessageBox::StandardButton button) {
            forget->click();
            auto *question = m_dialog->findChild<QMessageBox *>(u"question"_s);
            QVERIFY(question != nullptr);
            QCOMPARE(question->defaultButton(), question->button(QMessageBox::No));
            question->button(button)->click();
            QTRY_VERIFY_WITH_TIMEOUT(m_dialog->findChild<QMessageBox *>(u"question"_s) == nullptr, 30'000);
        };
        answer(QMessageBox::No);
        QCOMPARE(m_program->history.entries().value().size(), 1U);
        answer(QMessageBox::Yes);
        QVERIFY(m_program->history.entries().value().empty());
        QVERIFY(m_dialog->isVisible());
    }

    void everyControlHasANameAndATabStop()
    {
        open();
        QVERIFY(QTest::qWaitForWindowActive(m_dialog.get()));
        auto *first = control<QComboBox>(u"cversion"_s);
        first->setFocus();
        QStringList way;
        do {
            const QWidget *widget = QApplication::focusWidget();
            way << widget->objectName();
            const auto *button = qobject_cast<const QAbstractButton *>(widget);
            QVERIFY2(!widget->accessibleName().isEmpty() || (button && !button->text().isEmpty()),
                qPrintable(widget->objectName()));
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        } while (QApplication::focusWidget() != first && way.size() < 30);
        QCOMPARE(way.join(u' '), u"cversion chtimes cclick chcolumn_1 chcolumn_2 chcolumn_3 chcolumn_4 chcolumn_5 "
                                 u"chcolumn_6 chcolumn_7 dias "
                                 u"megas forgetAll ok cancel qt_tabwidget_tabbar"_s);
    }
};

QTEST_MAIN(TestFurtherOptions)
#include "tst_furtheroptions.moc"
