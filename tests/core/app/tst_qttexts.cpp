// SPDX-License-Identifier: GPL-3.0-or-later
// Qt's own texts follow the interface's language, back and forth, and are English again at the end.

#include "core/app/qttexts.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;

class TestQtTexts : public QObject
{
    Q_OBJECT

private:
    static QString yes() { return QCoreApplication::translate("QPlatformTheme", "&Yes"); }
    static QString cancel() { return QCoreApplication::translate("QPlatformTheme", "Cancel"); }

private Q_SLOTS:
    void theyFollowTheLanguage()
    {
        {
            QtTexts texts;
            QCOMPARE(yes(), u"&Yes"_s);
            QVERIFY(texts.speak(u"spanish"));
            QCOMPARE(yes(), u"&Sí"_s);
            QCOMPARE(cancel(), u"Cancelar"_s);
            QVERIFY(texts.speak(u"french"));
            QCOMPARE(yes(), u"&Oui"_s);
            QCOMPARE(cancel(), u"Annuler"_s);
            QVERIFY(texts.speak(u"french"));
            QCOMPARE(yes(), u"&Oui"_s);
            QVERIFY(texts.speak(u"english"));
            QCOMPARE(yes(), u"&Yes"_s);
            QVERIFY(texts.speak(u"spanish"));
        }
        QCOMPARE(yes(), u"&Yes"_s);
    }

    void anUnknownLanguageChangesNothing()
    {
        QtTexts texts;
        QVERIFY(texts.speak(u"spanish"));
        QVERIFY(!texts.speak(u"german"));
        QVERIFY(!texts.speak(u"es"));
        QVERIFY(!texts.speak(u""));
        QCOMPARE(yes(), u"&Sí"_s);
    }
};

QTEST_GUILESS_MAIN(TestQtTexts)
#include "tst_qttexts.moc"
