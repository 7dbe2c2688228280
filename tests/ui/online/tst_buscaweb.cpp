// SPDX-License-Identifier: GPL-3.0-or-later
// The window for the text of a new search: its text is selected at first, and the button or Enter reports whatever is
// in the box and closes the window.

#include "core/app/idiomas.h"
#include "ui/online/buscaweb.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;

class TestBuscaweb : public QObject
{
    Q_OBJECT

private:
    Captions m_captions;
    std::unique_ptr<buscaweb> m_window;
    QStringList m_asked;

    void open(const QString &text, const QString &language = u"english"_s)
    {
        m_captions.setLanguageName(language);
        m_captions.fill();
        m_asked.clear();
        m_window = std::make_unique<buscaweb>(m_captions, text);
        connect(m_window.get(), &buscaweb::searchRequested, this, [this](const QString &asked) { m_asked << asked; });
        m_window->show();
    }
    QLineEdit *busca() const { return m_window->findChild<QLineEdit *>(u"busca"_s); }
    QPushButton *buscar() const { return m_window->findChild<QPushButton *>(u"buscar"_s); }

private Q_SLOTS:
    void cleanup() { m_window.reset(); }

    void theTextIsThereAndAllOfItSelected()
    {
        open(u"Las Gaviotas"_s);
        QCOMPARE(busca()->text(), u"Las Gaviotas"_s);
        QCOMPARE(busca()->selectedText(), u"Las Gaviotas"_s);
        QTest::keyClicks(busca(), u"x"_s);
        QCOMPARE(busca()->text(), u"x"_s);
    }

    void theButtonOrEnterHandsTheTextOverAndClosesIt_data()
    {
        QTest::addColumn<QString>("how");
        QTest::addColumn<QString>("text");
        QTest::newRow("button") << u"button"_s << u"Ana / Faro"_s;
        QTest::newRow("Enter") << u"enter"_s << u"Ana / Faro"_s;
        QTest::newRow("Enter in an empty box") << u"enter"_s << QString();
        QTest::newRow("button, empty box") << u"button"_s << QString();
    }
    void theButtonOrEnterHandsTheTextOverAndClosesIt()
    {
        QFETCH(QString, how);
        QFETCH(QString, text);
        open(u"before"_s);
        busca()->setText(text);
        if (how == u"button"_s)
            buscar()->click();
        else
            QTest::keyClick(busca(), Qt::Key_Return);
        QCOMPARE(m_asked, QStringList{text});
        QVERIFY(!m_window->isVisible());
    }

    void escapeAsksForNothing()
    {
        open(u"Ana"_s);
        QTest::keyClick(busca(), Qt::Key_Escape);
        QVERIFY(m_asked.isEmpty());
        QVERIFY(!m_window->isVisible());
    }

    void captionsInThreeLanguages_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("title");
        QTest::newRow("english") << u"english"_s << u"&search"_s << u"search again"_s;
        QTest::newRow("spanish") << u"spanish"_s << u"&buscar"_s << u"buscar de nuevo"_s;
        QTest::newRow("french") << u"french"_s << u"&rechercher"_s << u"chercher à nouveau"_s;
    }
    void captionsInThreeLanguages()
    {
        QFETCH(QString, language);
        open({}, language);
        QTEST(buscar()->text(), "caption");
        QTEST(m_window->windowTitle(), "title");
    }
};

QTEST_MAIN(TestBuscaweb)
#include "tst_buscaweb.moc"
