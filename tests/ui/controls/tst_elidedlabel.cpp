// SPDX-License-Identifier: GPL-3.0-or-later
// A label that is too narrow for its text leaves out the middle and shows all in the tooltip, as plain text. Assistive
// tools always get the whole text.

#include "ui/controls/elidedlabel.h"

#include <QResizeEvent>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;

class TestElidedLabel : public QObject
{
    Q_OBJECT

private:
    static inline const QString Text = u"/music/<b>a long name</b> & more.mp3"_s;

private Q_SLOTS:
    void aTextWithRoomIsShownWhole()
    {
        ElidedLabel label;
        label.setFullText(Text);
        label.resize(label.sizeHint());
        label.show();
        QCOMPARE(label.text(), Text);
        QCOMPARE(label.toolTip(), QString());
        QCOMPARE(label.textFormat(), Qt::PlainText);
    }

    void aNarrowLabelLeavesOutTheMiddle()
    {
        ElidedLabel label;
        label.setFullText(Text);
        label.resize(label.sizeHint().width() / 2, label.sizeHint().height());
        label.show();
        QVERIFY(label.text().startsWith(u"/m"_s));
        QVERIFY(label.text().endsWith(u"p3"_s));
        QVERIFY(label.text().size() < Text.size());
        QCOMPARE(label.toolTip(), Text);
        QCOMPARE(label.accessibleName(), Text);
        QCOMPARE(label.fullText(), Text);

        label.resize(label.sizeHint());
        QCOMPARE(label.text(), Text);
        QCOMPARE(label.toolTip(), QString());
    }

    void aLargerFontElidesAgain()
    {
        ElidedLabel label;
        label.setFullText(Text);
        label.resize(label.sizeHint());
        label.show();
        QFont large = label.font();
        large.setPointSizeF(3 * large.pointSizeF());
        label.setFont(large);
        QVERIFY(label.text().size() < Text.size());
    }

    void aDetailIsTheTooltipWhateverTheRoom()
    {
        ElidedLabel label;
        label.setFullText(Text, u"1 < 2"_s);
        label.resize(label.sizeHint());
        label.show();
        QCOMPARE(label.toolTip(), u"1 < 2"_s);
        label.resize(label.minimumSizeHint());
        QVERIFY(label.text().size() < Text.size());
        QCOMPARE(label.toolTip(), u"1 < 2"_s);
    }
};

QTEST_MAIN(TestElidedLabel)
#include "tst_elidedlabel.moc"
