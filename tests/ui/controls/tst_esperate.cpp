// SPDX-License-Identifier: GPL-3.0-or-later
// The wait window's state exists at once; the window appears only if the work lasts, and closing it has no effect on
// the work.

#include "ui/controls/esperate.h"

#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QTest>

#include <limits>
#include <memory>

using namespace Qt::StringLiterals;
using namespace ravlin;

class TestEsperate : public QObject
{
    Q_OBJECT

private:
    static constexpr int LongEnough = 2000; ///< milliseconds within which the window must appear

    std::unique_ptr<QWidget> m_main;
    esperate *m_wait = nullptr;
    QFrame *m_frame = nullptr;
    QProgressBar *m_bar = nullptr;
    QLabel *m_count = nullptr;

private Q_SLOTS:
    void init();
    void cleanup() { m_main.reset(); }

    void threeStepsAndFourStepCalls();
    void stateIsThereAtOnce();
    void beginStartsAnew();
    void advancingIsManySteps();
    void stepsBecomeKnownOnTheWay();
    void unknownAndExtremeNumbersOfSteps();

    void shortWorkDoesNotShowIt();
    void longWorkShowsItAndTheEndClosesIt();
    void workThatIsNearlyDoneDoesNotShowIt();
    void closingItDoesNotStopTheWork();
    void clickingTheFrameClosesIt();
    void escapeClosesIt();
    void stepsAfterTheEndDoNotShowIt();

    void liesOverTheMiddleOfItsWindow();
    void takesNoFocus();
    void longFileNamesLeaveTheSizeAlone();
};

void TestEsperate::init()
{
    m_main = std::make_unique<QWidget>();
    m_main->setGeometry(100, 100, 600, 400);
    m_main->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_main.get()));
    m_wait = new esperate(m_main.get());
    m_frame = m_wait->findChild<QFrame *>(u"frame1"_s);
    m_bar = m_wait->findChild<QProgressBar *>();
    m_count = m_wait->findChild<QLabel *>(u"count"_s);
    QVERIFY(m_frame && m_bar && m_count);
    QCOMPARE(m_wait->objectName(), u"esperate"_s);
    QVERIFY(m_wait->isWindow());
}

void TestEsperate::threeStepsAndFourStepCalls()
{
    m_wait->BeginProgress(3);
    for (int i = 0; i < 4; ++i)
        m_wait->StepProgress();
    QCOMPARE(m_bar->value(), 3);
    QCOMPARE(m_bar->maximum(), 3);
    QCOMPARE(m_count->text(), u"3 / 3"_s);
    m_wait->EndProgress();
    QCOMPARE(m_bar->value(), 3);
}

void TestEsperate::stateIsThereAtOnce()
{
    m_wait->BeginProgress(10);
    QCOMPARE(m_bar->minimum(), 0);
    QCOMPARE(m_bar->value(), 0);
    QCOMPARE(m_bar->maximum(), 10);
    QCOMPARE(m_count->text(), u"0 / 10"_s);
    m_wait->StepProgress();
    QCOMPARE(m_bar->value(), 1);
    m_wait->StepProgress();
    m_wait->StepProgress();
    QCOMPARE(m_wait->value(), 3);
    QCOMPARE(m_wait->maximum(), 10);
    QCOMPARE(m_count->text(), u"3 / 10"_s);
}

void TestEsperate::beginStartsAnew()
{
    m_wait->BeginProgress(5);
    m_wait->StepProgress();
    m_wait->setCurrentFile(u"a.mp3"_s);
    m_wait->BeginProgress(7);
    QCOMPARE(m_count->text(), u"0 / 7"_s);
    QCOMPARE(m_wait->findChild<QLabel *>(u"file"_s)->text(), QString());
}

void TestEsperate::advancingIsManySteps()
{
    m_wait->BeginProgress(10);
    m_wait->advance(4);
    QCOMPARE(m_wait->value(), 4);
    m_wait->advance(0);
    m_wait->advance(-3);
    QCOMPARE(m_wait->value(), 4);
    m_wait->advance(std::numeric_limits<int>::max());
    QCOMPARE(m_wait->value(), 10);
}

void TestEsperate::stepsBecomeKnownOnTheWay()
{
    m_wait->BeginProgress(10);
    m_wait->advance(5);
    m_wait->setSteps(20);
    QCOMPARE(m_count->text(), u"5 / 20"_s);
    m_wait->setSteps(3);
    QCOMPARE(m_count->text(), u"3 / 3"_s);
}

void TestEsperate::unknownAndExtremeNumbersOfSteps()
{
    for (const int steps : {0, -1, std::numeric_limits<int>::min()}) {
        m_wait->BeginProgress(steps);
        m_wait->StepProgress();
        QCOMPARE(m_wait->maximum(), 0);
        QCOMPARE(m_wait->value(), 0);
        QCOMPARE(m_count->text(), QString());
    }
    m_wait->BeginProgress(32767);
    m_wait->advance(32767);
    QCOMPARE(m_count->text(), u"32767 / 32767"_s);
    m_wait->BeginProgress(100'000);
    m_wait->StepProgress();
    QCOMPARE(m_count->text(), u"1 / 100000"_s);
}

void TestEsperate::shortWorkDoesNotShowIt()
{
    m_wait->BeginProgress(2);
    m_wait->StepProgress();
    QTest::qWait(30);
    QVERIFY(!m_wait->isVisible());
    m_wait->EndProgress();
    QTest::qWait(int(esperate::ShowDelay.count()) + 200);
    QVERIFY(!m_wait->isVisible());
}

void TestEsperate::longWorkShowsItAndTheEndClosesIt()
{
    m_wait->BeginProgress(100);
    m_wait->StepProgress();
    QVERIFY(!m_wait->isVisible());
    QTRY_VERIFY_WITH_TIMEOUT(m_wait->isVisible(), LongEnough);
    QCOMPARE(m_bar->value(), 1);
    m_wait->EndProgress();
    QVERIFY(!m_wait->isVisible());
}

void TestEsperate::workThatIsNearlyDoneDoesNotShowIt()
{
    m_wait->BeginProgress(100);
    m_wait->advance(99);
    QTest::qWait(int(esperate::ShowDelay.count()) + 100);
    QVERIFY(!m_wait->isVisible());
    QTRY_VERIFY_WITH_TIMEOUT(m_wait->isVisible(), LongEnough); // the last step takes its time
}

void TestEsperate::closingItDoesNotStopTheWork()
{
    m_wait->BeginProgress(10);
    QTRY_VERIFY_WITH_TIMEOUT(m_wait->isVisible(), LongEnough);
    m_wait->close();
    QVERIFY(!m_wait->isVisible());
    m_wait->StepProgress();
    QCOMPARE(m_wait->value(), 1);
    QTest::qWait(int(esperate::ShowDelay.count()) + 200);
    QVERIFY(!m_wait->isVisible());
    m_wait->EndProgress();

    m_wait->BeginProgress(10);
    QTRY_VERIFY_WITH_TIMEOUT(m_wait->isVisible(), LongEnough);
}

void TestEsperate::clickingTheFrameClosesIt()
{
    m_wait->BeginProgress(10);
    QTRY_VERIFY_WITH_TIMEOUT(m_wait->isVisible(), LongEnough);
    QTest::mouseClick(m_frame, Qt::RightButton);
    QVERIFY(m_wait->isVisible());
    QTest::mouseClick(m_frame, Qt::LeftButton);
    QVERIFY(!m_wait->isVisible());
    QCOMPARE(m_wait->maximum(), 10);

    m_wait->BeginProgress(10);
    QTRY_VERIFY_WITH_TIMEOUT(m_wait->isVisible(), LongEnough);
    const QPoint onTheBar = m_bar->mapTo(m_wait, m_bar->rect().center());
    QTest::mouseClick(m_wait->windowHandle(), Qt::LeftButton, {}, onTheBar);
    QVERIFY(!m_wait->isVisible());
}

void TestEsperate::escapeClosesIt()
{
    m_wait->BeginProgress(10);
    QTRY_VERIFY_WITH_TIMEOUT(m_wait->isVisible(), LongEnough);
    QTest::keyClick(m_wait, Qt::Key_A);
    QVERIFY(m_wait->isVisible());
    QTest::keyClick(m_wait, Qt::Key_Escape);
    QVERIFY(!m_wait->isVisible());
}

void TestEsperate::stepsAfterTheEndDoNotShowIt()
{
    m_wait->BeginProgress(3);
    m_wait->EndProgress();
    m_wait->StepProgress();
    QTest::qWait(int(esperate::ShowDelay.count()) + 100);
    QVERIFY(!m_wait->isVisible());
    m_wait->EndProgress();
}

void TestEsperate::liesOverTheMiddleOfItsWindow()
{
    m_wait->BeginProgress(10);
    QTRY_VERIFY_WITH_TIMEOUT(m_wait->isVisible(), LongEnough);
    const QPoint away = m_wait->geometry().center() - m_main->frameGeometry().center();
    QVERIFY2(away.manhattanLength() <= 4, qPrintable(u"%1, %2"_s.arg(away.x()).arg(away.y())));
}

void TestEsperate::takesNoFocus()
{
    auto *field = new QLineEdit(m_main.get());
    field->show();
    m_main->activateWindow();
    field->setFocus();
    QTRY_VERIFY(field->hasFocus());
    m_wait->BeginProgress(10);
    QTRY_VERIFY_WITH_TIMEOUT(m_wait->isVisible(), LongEnough);
    QVERIFY(m_wait->testAttribute(Qt::WA_ShowWithoutActivating));
    QVERIFY(!m_wait->testAttribute(Qt::WA_QuitOnClose));
}

void TestEsperate::longFileNamesLeaveTheSizeAlone()
{
    m_wait->BeginProgress(10);
    m_wait->setCurrentFile(u"a.mp3"_s);
    QTRY_VERIFY_WITH_TIMEOUT(m_wait->isVisible(), LongEnough);
    const QSize before = m_wait->size();
    m_wait->setCurrentFile(QString(5000, u'x') + u"<b>.mp3"_s);
    m_wait->StepProgress();
    QTest::qWait(20);
    QCOMPARE(m_wait->size(), before);
    QVERIFY(m_frame->rect().contains(m_count->geometry()));
}

QTEST_MAIN(TestEsperate)
#include "tst_esperate.moc"
