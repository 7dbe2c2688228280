// SPDX-License-Identifier: GPL-3.0-or-later
// The about box shows version, addresses and thanks, and hands each address to the system.

#include "core/app/idiomas.h"
#include "ui/app/frmabout.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <tuple>

using namespace Qt::StringLiterals;
using namespace ravlin;

class TestFrmAbout : public QObject
{
    Q_OBJECT

private:
    Captions m_captions;
    QList<QUrl> m_opened;
    QTemporaryDir m_programFolder;
    std::unique_ptr<frmAbout> m_box;

    void open(const QString &language)
    {
        m_captions.setLanguageName(language);
        m_captions.fill();
        m_box = std::make_unique<frmAbout>(
            m_captions, nullptr, [this](const QUrl &address) { m_opened << address; }, m_programFolder.path());
        m_box->show();
    }
    QString guideIn(const QString &code) const
    {
        return m_programFolder.filePath(u"guide/"_s + code + u"/index.html"_s);
    }
    void installGuide(const QString &code) const
    {
        QFile page(guideIn(code));
        QVERIFY(QDir(m_programFolder.path()).mkpath(u"guide/"_s + code) && page.open(QIODevice::WriteOnly));
    }
    template <typename Control>
    Control *control(const QString &name) const
    {
        auto *found = m_box->findChild<Control *>(name);
        if (!found)
            qFatal("no control %s", qPrintable(name));
        return found;
    }
    void click(const QString &name) const { QTest::mouseClick(control<QAbstractButton>(name), Qt::LeftButton); }

private Q_SLOTS:
    void init() { m_opened.clear(); }
    void cleanup()
    {
        m_box.reset();
        QVERIFY(QDir(m_programFolder.filePath(u"guide"_s)).removeRecursively());
    }

    void theTitleIsEntry32()
    {
        for (const QString &language : {u"english"_s, u"spanish"_s, u"french"_s}) {
            open(language);
            QCOMPARE(m_box->windowTitle(), u"info"_s);
        }
    }

    void theVersionIsTheProgramsOwn()
    {
        open(u"english"_s);
        const QString version = control<QLabel>(u"lblVersion"_s)->text();
        QCOMPARE(version, u"version "_s + QStringLiteral(RAVLIN_VERSION));
        static const QRegularExpression form(u"^version \\d+\\.\\d+\\.\\d+$"_s);
        QVERIFY2(form.match(version).hasMatch(), qPrintable(version));
    }

    void clickingLabel1OpensTheAddressWrittenInIt()
    {
        open(u"english"_s);
        click(u"Label1"_s);
        QCOMPARE(m_opened, QList<QUrl>{QUrl(control<QAbstractButton>(u"Label1"_s)->text())});
        QCOMPARE(m_opened.first().scheme(), u"https"_s);
    }

    void clickingLabel2WritesAMessageToTheAddressWrittenInIt()
    {
        open(u"english"_s);
        click(u"Label2"_s);
        const QString address = control<QAbstractButton>(u"Label2"_s)->text();
        QVERIFY(address.contains(u'@'));
        QCOMPARE(m_opened, QList<QUrl>{QUrl(u"mailto:"_s + address)});
    }

    void theLogosOpenTheSitesOfTheTagLibraryAndOfFreedb()
    {
        open(u"english"_s);
        click(u"Pic"_s);
        click(u"Picture1"_s);
        QCOMPARE(m_opened, (QList<QUrl>{QUrl(u"https://taglib.org/"_s), QUrl(u"https://gnudb.org/"_s)}));
        QVERIFY(!control<QAbstractButton>(u"Pic"_s)->icon().isNull());
        QVERIFY(!control<QAbstractButton>(u"Picture1"_s)->icon().isNull());
    }

    void theGuideIsOpenedInTheLanguageThatIsSpoken()
    {
        const std::tuple<QString, QString, QString> languages[] = {{u"english"_s, u"en"_s, u"user guide"_s},
            {u"spanish"_s, u"es"_s, u"guía del usuario"_s}, {u"french"_s, u"fr"_s, u"guide de l'utilisateur"_s}};
        for (const auto &[language, code, text] : languages)
            installGuide(code);
        for (const auto &[language, code, text] : languages) {
            m_opened.clear();
            open(language);
            QVERIFY(control<QPushButton>(u"guide"_s)->isVisible());
            QCOMPARE(control<QPushButton>(u"guide"_s)->text(), text);
            click(u"guide"_s);
            QCOMPARE(m_opened, QList<QUrl>{QUrl::fromLocalFile(guideIn(code))});
        }
    }

    void aGuideThatIsNotInstalledIsNotOffered()
    {
        open(u"english"_s);
        QVERIFY(!control<QPushButton>(u"guide"_s)->isVisible());
        QVERIFY(control<QPushButton>(u"cmdOK"_s)->isVisible());
    }

    void theKeyboardOpensThemToo()
    {
        installGuide(u"en"_s);
        open(u"english"_s);
        for (const QString &name : {u"Label1"_s, u"Label2"_s, u"Pic"_s, u"Picture1"_s, u"guide"_s}) {
            control<QAbstractButton>(name)->setFocus();
            QTest::keyClick(control<QAbstractButton>(name), Qt::Key_Space);
        }
        QCOMPARE(m_opened.size(), 5);
        QVERIFY(m_box->isVisible());
    }

    void cmdOKCloses()
    {
        open(u"english"_s);
        click(u"cmdOK"_s);
        QVERIFY(!m_box->isVisible());
        QVERIFY(m_opened.isEmpty());
    }

    void enterAndEscapeClose()
    {
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape}) {
            open(u"english"_s);
            QTest::keyClick(m_box.get(), key);
            QVERIFY(!m_box->isVisible());
        }
    }

    void theTextsAreThoseOfTheLanguage()
    {
        const std::pair<QString, QString> languages[] = {
            {u"english"_s, u"ok"_s}, {u"spanish"_s, u"aceptar"_s}, {u"french"_s, u"ok"_s}};
        for (const auto &[language, ok] : languages) {
            open(language);
            QCOMPARE(control<QPushButton>(u"cmdOK"_s)->text(), ok);
            QCOMPARE(control<QLabel>(u"Label3"_s)->text(), m_captions.text(Text::AboutThanks));
            QVERIFY(control<QLabel>(u"lblDisclaimer"_s)->text().startsWith(m_captions.text(Text::AboutAuthors)));
            QVERIFY(control<QLabel>(u"libraries"_s)->text().startsWith(m_captions.text(Text::AboutLibraries)));
        }
    }

    void theThanksNameTheTagLibraryAndFreedb()
    {
        for (const QString &language : {u"english"_s, u"spanish"_s, u"french"_s}) {
            open(language);
            const QString thanks = control<QLabel>(u"Label3"_s)->text();
            QVERIFY(thanks.contains(u"TagLib"_s) && thanks.contains(u"freedb"_s));
        }
        QVERIFY(control<QLabel>(u"Label3"_s)->text().contains(u"dans les tests"_s)); // what it serves for
    }

    void everyLibraryIsNamedWithItsLicence()
    {
        open(u"english"_s);
        const QString libraries = control<QLabel>(u"libraries"_s)->text();
        for (const QString &library :
            {u"Qt "_s + QString::fromLatin1(qVersion()) + u" (LGPL 3)"_s, u"zlib (zlib)"_s, u"SQLite (public domain)"_s,
                u"tl::expected (CC0 1.0)"_s, u"Lucide (ISC, MIT)"_s, u"GCC (GPL 3, GCC Runtime Library Exception)"_s})
            QVERIFY2(libraries.contains(library), qPrintable(library));
        QVERIFY(libraries.startsWith(u"made with: Qt "_s));
        QVERIFY(!libraries.contains(u"TagLib"_s)); // is not linked
        open(u"french"_s);
        QVERIFY(control<QLabel>(u"libraries"_s)->text().startsWith(u"fait avec\u00a0: Qt "_s));
    }

    void everyControlHasAName()
    {
        open(u"french"_s);
        for (const QWidget *widget : m_box->findChildren<QWidget *>()) {
            const auto *button = qobject_cast<const QAbstractButton *>(widget);
            if (widget->focusPolicy() & Qt::TabFocus)
                QVERIFY(!widget->accessibleName().isEmpty() || (button && !button->text().isEmpty()));
        }
        QCOMPARE(control<QWidget>(u"Label1"_s)->accessibleDescription(), control<QAbstractButton>(u"Label1"_s)->text());
    }

    void theDrawingsAreSeenOnADarkWindow()
    {
        open(u"english"_s);
        QPalette dark = QApplication::palette();
        dark.setColor(QPalette::Window, QColor(35, 38, 41));
        dark.setColor(QPalette::ButtonText, Qt::white);
        m_box->setPalette(dark);
        QCoreApplication::processEvents();
        const QImage drawing = control<QAbstractButton>(u"Pic"_s)->icon().pixmap(32).toImage();
        bool hasWhite = false;
        for (int x = 0; x < drawing.width(); ++x) {
            for (int y = 0; y < drawing.height(); ++y)
                hasWhite = hasWhite || drawing.pixelColor(x, y) == QColor(Qt::white);
        }
        QVERIFY(hasWhite);
    }
};

QTEST_MAIN(TestFrmAbout)
#include "tst_frmabout.moc"
