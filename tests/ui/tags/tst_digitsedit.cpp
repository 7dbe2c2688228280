// SPDX-License-Identifier: GPL-3.0-or-later
// A box for digits: what can be typed, what beeps, and that pasted text passes.

#include "ui/tags/digitsedit.h"

#include <QApplication>
#include <QClipboard>
#include <QInputMethodEvent>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;

class TestDigitsEdit : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void digitsAreTaken()
    {
        DigitsEdit edit;
        const QSignalSpy refused(&edit, &DigitsEdit::typingRefused);
        QTest::keyClicks(&edit, u"0123456789"_s);
        QCOMPARE(edit.text(), u"0123456789"_s);
        QCOMPARE(refused.size(), 0);
    }

    void anyOtherCharacterBeepsAndIsSwallowed()
    {
        DigitsEdit edit;
        edit.setText(u"12"_s);
        const QSignalSpy refused(&edit, &DigitsEdit::typingRefused);
        QTest::keyClicks(&edit, u"a-. /"_s);
        QCOMPARE(edit.text(), u"12"_s);
        QCOMPARE(refused.size(), 5);
    }

    void backspaceDeleteAndTheArrowsPass()
    {
        DigitsEdit edit;
        edit.setText(u"1234"_s);
        const QSignalSpy refused(&edit, &DigitsEdit::typingRefused);
        QTest::keyClick(&edit, Qt::Key_Backspace);
        QCOMPARE(edit.text(), u"123"_s);
        QTest::keyClick(&edit, Qt::Key_Home);
        QTest::keyClick(&edit, Qt::Key_Delete);
        QCOMPARE(edit.text(), u"23"_s);
        QCOMPARE(refused.size(), 0);
    }

    void enterIsSwallowed()
    {
        QWidget window;
        auto *edit = new DigitsEdit(&window);
        edit->setText(u"7"_s);
        const QSignalSpy refused(edit, &DigitsEdit::typingRefused);
        const QSignalSpy returned(edit, &QLineEdit::returnPressed);
        QTest::keyClick(edit, Qt::Key_Return);
        QTest::keyClick(edit, Qt::Key_Enter);
        QCOMPARE(edit->text(), u"7"_s);
        QCOMPARE(refused.size(), 0);
        QCOMPARE(returned.size(), 0);
    }

    void pastedTextPasses()
    {
        DigitsEdit edit;
        const QSignalSpy refused(&edit, &DigitsEdit::typingRefused);
        QApplication::clipboard()->setText(u"7/12"_s);
        QTest::keyClick(&edit, Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(edit.text(), u"7/12"_s);
        QTest::keyClick(&edit, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(&edit, Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(refused.size(), 0);
    }

    void whatAnInputMethodTypesIsTypedToo()
    {
        DigitsEdit edit;
        const QSignalSpy refused(&edit, &DigitsEdit::typingRefused);
        QInputMethodEvent digits;
        digits.setCommitString(u"19"_s);
        QApplication::sendEvent(&edit, &digits);
        QCOMPARE(edit.text(), u"19"_s);
        QInputMethodEvent composing(u"é"_s, {});
        QApplication::sendEvent(&edit, &composing);
        QInputMethodEvent letter;
        letter.setCommitString(u"é"_s);
        QApplication::sendEvent(&edit, &letter);
        QCOMPARE(edit.text(), u"19"_s);
        QCOMPARE(refused.size(), 1);
    }
};

QTEST_MAIN(TestDigitsEdit)
#include "tst_digitsedit.moc"
