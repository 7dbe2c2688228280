// SPDX-License-Identifier: GPL-3.0-or-later
// The dialogs of the main window: the controls and keys that open them, and what the window does once the options are
// closed. No state of the settings file keeps the program from starting or loses data.

#include "ui/app/principalfixture.h"
#include "ui/app/programdialogs.h"

#include <QDesktopServices>
#include <QDialog>
#include <QToolButton>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

class TestProgramDialogs : public PrincipalFixture
{
    Q_OBJECT

private:
    QList<QUrl> m_opened;

    QDialog *dialog(const QString &name) const
    {
        auto *found = m_window->findChild<QDialog *>(name);
        return found && found->isVisible() ? found : nullptr;
    }
    void openOptions() const
    {
        control<QAbstractButton>(u"tb_16"_s)->click();
        QVERIFY(dialog(u"opciones"_s));
    }
    static QByteArray file()
    {
        QFile settings(Settings::defaultPath());
        return settings.open(QIODevice::ReadOnly) ? settings.readAll() : QByteArray();
    }
    static void put(const QByteArray &content)
    {
        QDir().mkpath(QFileInfo(Settings::defaultPath()).path());
        QFile settings(Settings::defaultPath());
        QVERIFY(settings.open(QIODevice::WriteOnly));
        QCOMPARE(settings.write(content), content.size());
    }

public Q_SLOTS:
    void noteOpened(const QUrl &address) { m_opened << address; }

private Q_SLOTS:
    void init()
    {
        startAfresh();
        m_opened.clear();
        store({{u"tags"_s, u"2"_s}});
    }
    void cleanup() { closeWindow(); }

    void button16OpensTheOptions()
    {
        open();
        QCOMPARE(control<QToolButton>(u"tb_16"_s)->defaultAction()->text(), u"options"_s);
        QVERIFY(!dialog(u"opciones"_s));
        openOptions();
        QVERIFY(dialog(u"opciones"_s)->isModal());
        control<QAbstractButton>(u"tb_16"_s)->click(); // as a tool that bypasses the modality does
        QCOMPARE(m_window->findChildren<QDialog *>(u"opciones"_s).size(), 1);
    }

    void theInfoControlIsCaptionedWithEntry32AndOpensTheAboutBox()
    {
        open();
        auto *button = control<QToolButton>(u"tb_info"_s);
        QCOMPARE(button->defaultAction()->text(), u"info"_s);
        QCOMPARE(button->accessibleName(), u"info"_s);
        button->click();
        QVERIFY(dialog(u"frmAbout"_s));
        dialog(u"frmAbout"_s)->findChild<QPushButton *>(u"cmdOK"_s)->click();
        QTRY_VERIFY_WITH_TIMEOUT(!m_window->findChild<QDialog *>(u"frmAbout"_s), 30000);
    }

    void f1OpensTheAboutBox()
    {
        open();
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        QTest::keyClick(m_window.get(), Qt::Key_F1);
        QVERIFY(dialog(u"frmAbout"_s));
    }

    void theAboutBoxHandsAddressesToTheSystem()
    {
        open();
        QDesktopServices::setUrlHandler(u"mailto"_s, this, "noteOpened");
        QDesktopServices::setUrlHandler(u"https"_s, this, "noteOpened");
        control<QAbstractButton>(u"tb_info"_s)->click();
        for (const QString &name : {u"Label1"_s, u"Label2"_s})
            dialog(u"frmAbout"_s)->findChild<QAbstractButton *>(name)->click();
        QDesktopServices::unsetUrlHandler(u"mailto"_s);
        QDesktopServices::unsetUrlHandler(u"https"_s);
        QCOMPARE(m_opened.size(), 2);
        QCOMPARE(m_opened.at(0).scheme(), u"https"_s);
        QCOMPARE(m_opened.at(1).scheme(), u"mailto"_s);
    }

    void theColumnsChangeWhenTheOptionsAreSaved()
    {
        open({}, QSize(1000, 700));
        openOptions();
        dialog(u"opciones"_s)->findChild<QCheckBox *>(u"chcolumn_1"_s)->click();
        dialog(u"opciones"_s)->findChild<QCheckBox *>(u"chcolumn_7"_s)->click();
        QVERIFY(!list()->isColumnHidden(1));
        const int titleBefore = list()->columnWidth(2);
        dialog(u"opciones"_s)->findChild<QPushButton *>(u"ok"_s)->click();
        for (int column = 0; column < 8; ++column)
            QCOMPARE(list()->isColumnHidden(column), column == 1 || column == 7);
        QVERIFY(list()->columnWidth(2) > titleBefore);
        closeWindow();
        open({}, QSize(1000, 700)); // a restart
        for (int column = 0; column < 8; ++column)
            QCOMPARE(list()->isColumnHidden(column), column == 1 || column == 7);
        m_window->resize(1300, 700);
        QCoreApplication::processEvents();
        QVERIFY(list()->isColumnHidden(1));
    }

    void aHiddenColumnsRowsAreStillChosenAndShown()
    {
        addFile(u"a.mp3"_s, titled(u"first"_s));
        addFile(u"b.mp3"_s, titled(u"second"_s));
        store({{u"hidden columns"_s, u"title artist album year"_s}});
        open(path());
        clickRow(1);
        QCOMPARE(field(u"Ttitulo"_s), u"second"_s);
        QTest::keyClick(list(), Qt::Key_Up);
        QCOMPARE(field(u"Ttitulo"_s), u"first"_s);
    }

    void aDoubleClickShowsTheTagWhereThatIsChosen()
    {
        addFile(u"a.mp3"_s, titled(u"first"_s));
        addFile(u"b.mp3"_s, titled(u"second"_s));
        store({{u"double click"_s, u"edit"_s}});
        open(path());
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        tabs()->setCurrentIndex(1);
        QDesktopServices::setUrlHandler(u"file"_s, this, "noteOpened");
        clickRow(1);
        QTest::mouseDClick(
            list()->viewport(), Qt::LeftButton, {}, list()->visualRect(list()->model()->index(1, 0)).center());
        QDesktopServices::unsetUrlHandler(u"file"_s);
        QVERIFY(m_opened.isEmpty());
        QCOMPARE(tabs()->currentIndex(), 0);
        QCOMPARE(field(u"Ttitulo"_s), u"second"_s);
        QVERIFY(control<QLineEdit>(u"Ttitulo"_s)->hasFocus());
        QCOMPARE(control<QLineEdit>(u"Ttitulo"_s)->selectedText(), u"second"_s);
    }

    void aDoubleClickOpensTheFileUnlessToldOtherwise()
    {
        const QString file = addFile(u"a.mp3"_s, titled(u"first"_s));
        open(path());
        QDesktopServices::setUrlHandler(u"file"_s, this, "noteOpened");
        clickRow(0);
        QTest::mouseDClick(
            list()->viewport(), Qt::LeftButton, {}, list()->visualRect(list()->model()->index(0, 0)).center());
        QDesktopServices::unsetUrlHandler(u"file"_s);
        QCOMPARE(m_opened, QList<QUrl>{QUrl::fromLocalFile(file)});
    }

    void aChosenVersionIsThatOfTheNextSave()
    {
        const QString file = addFile(u"a.mp3"_s);
        open(path());
        openOptions();
        dialog(u"opciones"_s)->findChild<QComboBox *>(u"cversion"_s)->setCurrentIndex(1);
        dialog(u"opciones"_s)->findChild<QPushButton *>(u"ok"_s)->click();
        clickRow(0);
        control<QLineEdit>(u"Ttitulo"_s)->setText(u"new"_s);
        control<QPushButton>(u"edita"_s)->click();
        const QByteArray written = readFile(file);
        QCOMPARE(written.left(3), QByteArray("ID3"));
        QCOMPARE(int(written[3]), 4);
    }

    void aDamagedSettingsFileIsKeptAside()
    {
        const QByteArray damaged = QByteArray("[ini]\ntags=1\nidioma=fr\n") + QByteArray(4096, '\0');
        put(damaged);
        open();
        QCOMPARE(m_program->captions.languageName(), u"english"_s);
        QCOMPARE(file(), damaged);
        openOptions();
        dialog(u"opciones"_s)->findChild<QPushButton *>(u"ok"_s)->click();
        closeWindow();
        QCOMPARE(stored(u"tags"_s), u"3"_s);
        QFile copy(Settings::defaultPath() + u".damaged"_s);
        QVERIFY(copy.open(QIODevice::ReadOnly));
        QCOMPARE(copy.readAll(), damaged);
        QVERIFY(copy.remove());
    }

    void whereTheSettingsCannotBeReadOrWrittenTheProgramWorksAllTheSame()
    {
        QVERIFY(QFile::remove(Settings::defaultPath()));
        QVERIFY(QDir().mkpath(Settings::defaultPath() + u"/in the way"_s));
        addFile(u"a.mp3"_s, titled(u"first"_s));
        open(path());
        QCOMPARE(list()->rowCount(), 1);
        closeWindow();
        QVERIFY(QFileInfo(Settings::defaultPath() + u"/in the way"_s).isDir());
        QVERIFY(QDir(Settings::defaultPath()).removeRecursively());
    }

    void whatALaterVersionWroteIsNotOverwrittenWithLess()
    {
        const QByteArray later = "# version 9\n[theme]\nink=blue\nlist=a, b\n"
                                 "[ini]\ntags=4\nrating=stars\nid3v2 version=5\ndouble click=queue\n"
                                 "hidden columns=bpm year\nnested/key=@escaped(\\u0001)\n[more]\n\xc3\xa1=1\n";
        put(later);
        open();
        QCOMPARE(m_program->state.tagSaveMode, 4);
        openOptions();
        dialog(u"opciones"_s)->findChild<QPushButton *>(u"ok"_s)->click();
        closeWindow();
        const QByteArray now = file();
        for (const QByteArray &line : later.split('\n'))
            QVERIFY2(now.contains(line + '\n') || line.isEmpty(), line);
        QVERIFY(now.contains("\nidioma=en\n"));
    }
};

QTEST_MAIN(TestProgramDialogs)
#include "tst_programdialogs.moc"
