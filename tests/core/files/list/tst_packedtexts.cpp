// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: texts packed into one piece of memory come back unchanged, whatever they hold.

#include "core/files/list/listrow.h"

#include <QTest>

using namespace ravlin;

class TestPackedTexts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aTextComesBackAsItWas_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << QString();
        QTest::newRow("ASCII") << QStringLiteral("Title of the song 1.mp3");
        QTest::newRow("Latin-1") << QStringLiteral("Café Niño ÿ");
        QTest::newRow("the first that is not Latin-1") << QStringLiteral("aĀ");
        QTest::newRow("Japanese") << QStringLiteral("日本");
        QTest::newRow("outside the first plane") << QStringLiteral("a𝄞");
        QTest::newRow("a byte that is no Unicode") << QStringLiteral("caf") + QChar(0xDCE9) + QStringLiteral(".mp3");
        QTest::newRow("zeros") << QString(3, QChar(u'\0'));
        QTest::newRow("long") << QString(100'000, u'é');
        QTest::newRow("long and wide") << QString(100'000, u'日');
    }
    void aTextComesBackAsItWas()
    {
        QFETCH(QString, text);
        // Between texts of either width, so that wide ones also begin at odd addresses.
        const PackedTexts packed{u"x", text, u"日本", text, u"ñ"};
        QCOMPARE(packed.at(0), QStringLiteral("x"));
        QCOMPARE(packed.at(1), text);
        QCOMPARE(packed.at(2), QStringLiteral("日本"));
        QCOMPARE(packed.at(3), text);
        QCOMPARE(packed.at(4), QStringLiteral("ñ"));
        QVERIFY(packed.equals(1, text) && packed.equals(3, text));
        QVERIFY(!packed.equals(1, text + u'x'));
        QVERIFY(!packed.equals(1, u'日' + text));
    }

    void textsThatDifferAreNotEqual()
    {
        const PackedTexts packed{u"a", u"é", u"日"};
        QVERIFY(!packed.equals(0, u"b"));
        QVERIFY(!packed.equals(1, u"日"));
        QVERIFY(!packed.equals(2, u"é"));
        QVERIFY(!packed.equals(2, u"月"));
        QVERIFY(!packed.equals(0, u"A"));
    }

    void whereNothingWasPackedIsNothing()
    {
        const PackedTexts packed{u"a"};
        QCOMPARE(packed.at(1), QString());
        QCOMPARE(packed.at(-1), QString());
        QCOMPARE(PackedTexts().at(0), QString());
        QVERIFY(PackedTexts().equals(0, u""));
        QVERIFY(!PackedTexts().equals(0, u"a"));
    }

    void aCopyOutlivesWhatItWasCopiedFrom()
    {
        PackedTexts copy;
        {
            const PackedTexts packed{u"a", u"日"};
            copy = packed;
        }
        QCOMPARE(copy.at(1), QStringLiteral("日"));
    }

    void aFileKeepsItsNameAndTags()
    {
        const ListFields tag{QStringLiteral("t"), QStringLiteral("日本"), QStringLiteral("Á"), QStringLiteral("1999"),
            QStringLiteral("7"), true, false};
        const ListedFile file(u"a.mp3", tag);
        QVERIFY(file.isNamed(u"a.mp3"));
        const ListFields back = file.tag();
        QCOMPARE(back.title, tag.title);
        QCOMPARE(back.artist, tag.artist);
        QCOMPARE(back.album, tag.album);
        QCOMPARE(back.year, tag.year);
        QCOMPARE(back.track, tag.track);
        QVERIFY(back.hasV1 && !back.hasV2);
    }

    void aRowTakesTheTagsOfAnotherAndKeepsItsName()
    {
        ListFields tag;
        tag.title = QStringLiteral("new");
        ListRow row{QStringLiteral("cd1/"), ListedFile(u"a.mp3")};
        row.takeTags(ListedFile(u"a.mp3", tag));
        QCOMPARE(row.file.title(), QStringLiteral("new"));
        QCOMPARE(row.text(), QStringLiteral("cd1/a.mp3"));
        row.takeTags(ListedFile(u"b.mp3"));
        QVERIFY(row.file.title().isEmpty());
        QCOMPARE(row.text(), QStringLiteral("cd1/a.mp3"));
    }
};

QTEST_GUILESS_MAIN(TestPackedTexts)
#include "tst_packedtexts.moc"
