// SPDX-License-Identifier: GPL-3.0-or-later
// The page for one file while fields that nobody edited are left alone: what was typed is written, in each selected
// file; a text that no tag can hold is refused at its box. The hint says beforehand what a save removes, in bold for
// many files.

#include "core/tags/store/tagstore.h"
#include "support/tagfixture.h"
#include "ui/tags/singlefilepagefixture.h"

#include <QAction>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

class TestOnlyEditedPage : public SingleFilePageFixture
{
    Q_OBJECT

private:
    /// A file whose genre, track and date no page can show or save as they are.
    QString addSpecial(const QString &name)
    {
        return addFile(name, id3v2(3, textFrame(3, "TIT2", name) + kept()) + audio());
    }
    static QByteArray kept()
    {
        return textFrame(3, "TCON", u"own genre"_s) + textFrame(3, "TRCK", u"107"_s) + textFrame(3, "TYER", u"2003"_s) +
               textFrame(3, "TDAT", u"0105"_s);
    }
    static QByteArray keptIn(const QString &path)
    {
        QByteArray frames;
        for (const RawFrame &frame : rawFrames(readFile(path))) {
            if (frame.id != "TIT2" && frame.id != "TALB")
                frames += frame.bytes;
        }
        return frames;
    }
    bool isMarked(const char *name) const { return control<QLineEdit>(name)->findChild<QAction *>(u"refused"_s); }

private Q_SLOTS:
    void init()
    {
        start();
        m_state.options.onlyEditedFields = true;
    }

    void whatWasTypedIsWrittenAndNothingElse()
    {
        const QString one = addSpecial(u"1.mp3"_s);
        const QString two = addSpecial(u"2.mp3"_s);
        clickRow(0);
        m_owner.selectAll();
        setText("talbum", u"new"_s);
        press("edita");
        for (const QString &path : {one, two}) {
            QCOMPARE(keptIn(path), kept());
            QCOMPARE(readRecord(path).Album, u"new"_s);
        }
        QCOMPARE(readRecord(two).Title, u"2.mp3"_s);
    }

    void withoutTheOptionThePageIsWritten()
    {
        m_state.options.onlyEditedFields = false;
        addSpecial(u"1.mp3"_s);
        const QString two = addSpecial(u"2.mp3"_s);
        clickRow(0);
        m_owner.selectAll();
        setText("talbum", u"new"_s);
        press("edita");
        QCOMPARE(keptIn(two), textFrame(3, "TYER", u"2003"_s) + textFrame(3, "TDAT", u"0105"_s));
        QCOMPARE(readRecord(two).Title, u"1.mp3"_s);
    }

    void aConversionChangesEachFilesOwnTexts()
    {
        addSpecial(u"one.mp3"_s);
        const QString two = addSpecial(u"two.mp3"_s);
        clickRow(0);
        m_owner.selectAll();
        convertBy(0); // upper case
        press("edita");
        QCOMPARE(readRecord(two).Title, u"TWO.MP3"_s);
        QCOMPARE(keptIn(two), kept());
    }

    void theFirstGenreIsStored()
    {
        const QString path = addSpecial(u"1.mp3"_s);
        clickRow(0);
        control<QComboBox>("cestilo")->setCurrentIndex(1);
        press("edita");
        QCOMPARE(readRecord(path).Genre, u"Blues"_s);
        QCOMPARE(readRecord(path).Track, u"107"_s);
    }

    void whatNoTagCanHoldIsRefusedAtItsBox_data()
    {
        QTest::addColumn<QByteArray>("box");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("reason");
        QTest::newRow("year") << QByteArray("ta_o") << u"99"_s
                              << u"the year “99” is not saved: a year has four digits"_s;
        QTest::newRow("track") << QByteArray("Tpista") << u"108"_s
                               << u"the track “108” is not saved: a track has one or two digits"_s;
    }
    void whatNoTagCanHoldIsRefusedAtItsBox()
    {
        QFETCH(QByteArray, box);
        QFETCH(QString, typed);
        QFETCH(QString, reason);
        const QString path = addSpecial(u"1.mp3"_s);
        const QByteArray before = readFile(path);
        clickRow(0);
        const QString toolTip = control<QLineEdit>(box)->toolTip();
        setText("talbum", u"new"_s);
        setText(box, typed);
        press("edita");
        QCOMPARE(readFile(path), before);
        QCOMPARE(m_owner.events, QStringList()); // no box, and nothing ran
        QVERIFY(isMarked(box));
        QCOMPARE(label("saveHint"), reason);
        QCOMPARE(control<QLineEdit>(box)->toolTip(), reason);
        QCOMPARE(text("talbum"), u"new"_s);
        press("edita"); // once more
        QVERIFY(isMarked(box));

        setText(box, u"12"_s);
        QVERIFY(!isMarked(box));
        QCOMPARE(control<QLineEdit>(box)->toolTip(), toolTip);
        QVERIFY(label("saveHint") != reason);

        m_state.options.onlyEditedFields = false;
        setText(box, typed);
        press("edita");
        QVERIFY(readFile(path) != before);
    }

    void theHintSaysWhatGoesInBoldForManyFiles()
    {
        addSpecial(u"1.mp3"_s);
        addSpecial(u"2.mp3"_s);
        m_page->show();
        m_state.options.onlyEditedFields = false;
        clickRow(0);
        QTRY_COMPARE(label("saveHint"), u"the file loses these fields: track, genre"_s);
        QVERIFY(!control<QLabel>("saveHint")->font().bold());
        m_owner.selectAll();
        m_page->selectionChanged();
        QTRY_COMPARE(label("saveHint"), u"goes into 2 files; removes the track of 2, the genre of 2"_s);
        QVERIFY(control<QLabel>("saveHint")->font().bold());
        m_state.options.onlyEditedFields = true;
        m_page->selectionChanged();
        QTRY_COMPARE(label("saveHint"), u"goes into 2 files"_s);
        setText("Ttitulo", QString());
        QTRY_COMPARE(label("saveHint"), u"goes into 2 files; removes the title of 2"_s);
    }
};

QTEST_MAIN(TestOnlyEditedPage)
#include "tst_onlyeditedpage.moc"
