// SPDX-License-Identifier: GPL-3.0-or-later
// Busy: the caller gets a plain call, the windows go on painting, the user's input is dropped and not kept, and the
// wait window's state is what the work reported.

#include "ui/controls/busy.h"
#include "ui/controls/esperate.h"

#include <QCloseEvent>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QShortcut>
#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <QTimer>
#include <QWindow>

#include <algorithm>
#include <memory>
#include <new>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace ravlin;

namespace {

class MainWindow : public QWidget
{
public:
    int paints = 0;
    int closes = 0;

protected:
    void paintEvent(QPaintEvent *) override { ++paints; }
    void closeEvent(QCloseEvent *event) override
    {
        ++closes;
        event->accept();
    }
};

} // namespace

class TestBusy : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<MainWindow> m_main;
    QPushButton *m_button = nullptr;
    QLineEdit *m_field = nullptr;
    esperate *m_wait = nullptr;
    std::unique_ptr<Busy> m_busy;

    /// Runs work that lasts until the given doings on the interface thread are over.
    template <typename Doings>
    void during(Doings doings)
    {
        std::atomic<bool> over{false};
        QTimer::singleShot(30ms, m_main.get(), [&] {
            doings();
            over = true;
        });
        QVERIFY(m_busy->run(1, [&](const ProgressReport &) {
            while (!over)
                std::this_thread::sleep_for(1ms);
        }));
    }
    QPoint middleOfTheButton() const { return m_button->geometry().center(); }

private Q_SLOTS:
    void init();
    void cleanup();

    void returnsWhenTheWorkHasEnded();
    void worksOnAnotherThread();
    void stateIsWhatTheWorkReported();
    void stepsFromManyThreads();
    void stepsBecomeKnownOnTheWay();
    void endsWithTheFinalStateAndAClosedWindow();
    void longWorkShowsWindowFileAndCursor();
    void closingTheWaitWindowDoesNotStopTheWork();
    void workThatCanBeStoppedIsStopped_data();
    void workThatCanBeStoppedIsStopped();
    void otherWorkHasNoButtonToStopIt();
    void readingIsStopped_data();
    void readingIsStopped();
    void closingTheWaitWindowDoesNotStopReading();
    void closingTheMainWindowStopsReadingOnly();
    void bytesAreShownInsteadOfSteps();

    void clicksAreDroppedForGood();
    void nativeClicksAreDroppedForGood();
    void clicksLeftInTheQueueAreDropped();
    void keysAndShortcutsAreDropped();
    void buttonHeldBeforeIsReleasedAfterwards();
    void waitWindowTakesInput();
    void paintsMeanwhile();
    void closingTheMainWindowWaits();
    void closingAnotherWindowIsRefused();
    void inputWorksAgainAfterwards();

    void nestedRunIsRefused();
    void manyRunsInARow();
    void exceptionsReachTheCaller();
    void quitMeanwhileDoesNotCutTheWorkShort();
    void shortWorkIsNotSlowedDown();
    void stepsAreCheap();
};

void TestBusy::init()
{
    m_main = std::make_unique<MainWindow>();
    m_main->setGeometry(50, 50, 500, 300);
    m_button = new QPushButton(m_main.get());
    m_button->setGeometry(20, 20, 120, 40);
    m_field = new QLineEdit(m_main.get());
    m_field->setGeometry(20, 80, 200, 30);
    m_main->show();
    m_main->activateWindow();
    QVERIFY(QTest::qWaitForWindowExposed(m_main.get()));
    m_field->setFocus();
    m_wait = new esperate(m_main.get());
    m_busy = std::make_unique<Busy>(*m_wait, m_main.get());
}

void TestBusy::cleanup()
{
    m_busy.reset();
    m_main.reset();
}

void TestBusy::returnsWhenTheWorkHasEnded()
{
    bool ended = false;
    QVERIFY(m_busy->run(1, [&](const ProgressReport &) {
        std::this_thread::sleep_for(60ms);
        ended = true;
    }));
    QVERIFY(ended);
    QVERIFY(!m_busy->isRunning());
}

void TestBusy::worksOnAnotherThread()
{
    QThread *thread = nullptr;
    m_busy->run(1, [&](const ProgressReport &) { thread = QThread::currentThread(); });
    QVERIFY(thread != QThread::currentThread());
}

void TestBusy::stateIsWhatTheWorkReported()
{
    int seen = -1;
    int seenMaximum = -1;
    std::atomic<bool> look{false};
    std::atomic<bool> looked{false};
    QTimer poll;
    poll.callOnTimeout([&] {
        if (look && m_wait->value() == 4) {
            seen = m_wait->value();
            seenMaximum = m_wait->maximum();
            looked = true;
        }
    });
    poll.start(5ms);
    QVERIFY(m_busy->run(9, [&](const ProgressReport &report) {
        for (int i = 0; i < 4; ++i)
            report({.done = i + 1, .path = u"file %1.mp3"_s.arg(i)});
        look = true;
        for (int i = 0; i < 1000 && !looked; ++i)
            std::this_thread::sleep_for(2ms);
    }));
    QCOMPARE(seen, 4);
    QCOMPARE(seenMaximum, 9);
}

void TestBusy::stepsFromManyThreads()
{
    QVERIFY(m_busy->run(4000, [](const ProgressReport &report) {
        std::atomic<int> done = 0;
        std::vector<std::jthread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([&] {
                for (int i = 0; i < 1000; ++i)
                    report({.done = ++done, .path = u"x.mp3"_s});
            });
        }
    }));
    QCOMPARE(m_wait->value(), 4000);
}

void TestBusy::stepsBecomeKnownOnTheWay()
{
    QVERIFY(m_busy->run(0, [](const ProgressReport &report) {
        for (int i = 0; i < 5; ++i)
            report({.done = i + 1, .total = 7, .path = {}});
    }));
    QCOMPARE(m_wait->maximum(), 7);
    QCOMPARE(m_wait->value(), 5);
}

void TestBusy::endsWithTheFinalStateAndAClosedWindow()
{
    QVERIFY(m_busy->run(3, [](const ProgressReport &report) {
        for (int i = 0; i < 4; ++i)
            report({.done = i + 1, .path = {}});
    }));
    QCOMPARE(m_wait->value(), 3);
    QCOMPARE(m_wait->maximum(), 3);
    QVERIFY(!m_wait->isVisible());
    QTest::qWait(int(esperate::ShowDelay.count()) + 50);
    QVERIFY(!m_wait->isVisible());
}

void TestBusy::longWorkShowsWindowFileAndCursor()
{
    bool shown = false;
    bool cursor = false;
    QString file;
    std::atomic<bool> seenAll{false};
    QTimer poll;
    poll.callOnTimeout([&] {
        shown = shown || m_wait->isVisible();
        cursor = cursor ||
                 (QGuiApplication::overrideCursor() && QGuiApplication::overrideCursor()->shape() == Qt::BusyCursor);
        file = m_wait->findChild<QLabel *>(u"file"_s)->text();
        seenAll = shown && cursor && !file.isEmpty();
    });
    poll.start(10ms);
    QVERIFY(m_busy->run(100, [&](const ProgressReport &report) {
        report({.done = 1, .path = u"song.mp3"_s});
        for (int i = 0; i < 1500 && !seenAll; ++i)
            std::this_thread::sleep_for(2ms);
    }));
    QVERIFY(shown);
    QVERIFY(cursor);
    QCOMPARE(file, u"song.mp3"_s);
    QVERIFY(!m_wait->isVisible());
    QVERIFY(!QGuiApplication::overrideCursor());
}

void TestBusy::closingTheWaitWindowDoesNotStopTheWork()
{
    bool closed = false;
    QTimer poll;
    poll.callOnTimeout([&] {
        if (m_wait->isVisible()) {
            QTest::mouseClick(m_wait->windowHandle(), Qt::LeftButton, {}, m_wait->rect().center());
            closed = !m_wait->isVisible();
        }
    });
    poll.start(10ms);
    bool ended = false;
    QVERIFY(m_busy->run(2, [&](const ProgressReport &report) {
        std::this_thread::sleep_for(600ms);
        report({.done = 1, .path = {}});
        report({.done = 2, .path = {}});
        ended = true;
    }));
    QVERIFY(closed);
    QVERIFY(ended);
    QCOMPARE(m_wait->value(), 2);
}

void TestBusy::workThatCanBeStoppedIsStopped_data()
{
    QTest::addColumn<QString>("way");
    QTest::newRow("button") << u"button"_s;
    QTest::newRow("escape") << u"escape"_s;
    QTest::newRow("closing") << u"closing"_s;
}

void TestBusy::workThatCanBeStoppedIsStopped()
{
    QFETCH(QString, way);
    std::stop_source stop;
    bool stayed = false;
    QTimer poll;
    poll.callOnTimeout([&] {
        if (!m_wait->isVisible() || stop.stop_requested())
            return;
        auto *button = m_wait->findChild<QPushButton *>(u"stop"_s);
        if (way == u"button"_s)
            QTest::mouseClick(button, Qt::LeftButton);
        else if (way == u"escape"_s)
            QTest::keyClick(m_wait, Qt::Key_Escape);
        else
            m_wait->close();
        stayed = m_wait->isVisible() && !button->isEnabled();
    });
    poll.start(10ms);
    QVERIFY(m_busy->run(1, stop, [&](const ProgressReport &) {
        for (int i = 0; i < 15000 && !stop.stop_requested(); ++i)
            std::this_thread::sleep_for(2ms);
    }));
    QVERIFY(stop.stop_requested());
    QVERIFY(stayed); // until the work has ended
    QVERIFY(!m_wait->isVisible());
}

void TestBusy::otherWorkHasNoButtonToStopIt()
{
    std::stop_source stop;
    m_busy->run(1, stop, [](const ProgressReport &) {});
    QVERIFY(!m_wait->findChild<QPushButton *>(u"stop"_s)->isHidden());
    m_busy->run(1, [](const ProgressReport &) {});
    QVERIFY(m_wait->findChild<QPushButton *>(u"stop"_s)->isHidden());
    QVERIFY(!stop.stop_requested());
}

void TestBusy::readingIsStopped_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("click") << 0;
    QTest::newRow("escape") << int(Qt::Key_Escape);
    QTest::newRow("enter") << int(Qt::Key_Return);
    QTest::newRow("space") << int(Qt::Key_Space);
}

void TestBusy::readingIsStopped()
{
    QFETCH(int, key);
    std::stop_source stop;
    bool stayed = false;
    bool wasDropped = true;
    QTimer poll;
    poll.callOnTimeout([&] {
        if (!m_wait->isVisible() || !m_wait->isActiveWindow() || stop.stop_requested())
            return;
        auto *button = m_wait->findChild<QPushButton *>(u"stop"_s);
        QTest::keyClick(m_field, Qt::Key_X); // still for nobody
        wasDropped = m_field->text().isEmpty() && button->hasFocus();
        if (key == 0)
            QTest::mouseClick(button, Qt::LeftButton);
        else
            QTest::keyClick(m_wait->windowHandle(), Qt::Key(key));
        stayed = m_wait->isVisible() && !button->isEnabled();
    });
    poll.start(10ms);
    QVERIFY(m_busy->runReading(1, stop, [&](const ProgressReport &) {
        for (int i = 0; i < 15000 && !stop.stop_requested(); ++i)
            std::this_thread::sleep_for(2ms);
    }));
    QVERIFY(stop.stop_requested());
    QVERIFY(stayed);
    QVERIFY(wasDropped);
    QVERIFY(!m_wait->isVisible());
}

void TestBusy::closingTheWaitWindowDoesNotStopReading()
{
    for (const bool byClick : {false, true}) {
        std::stop_source stop;
        bool isGone = false;
        QTimer poll;
        poll.callOnTimeout([&] {
            if (!m_wait->isVisible() || isGone)
                return;
            if (byClick)
                QTest::mouseClick(m_wait->findChild<QWidget *>(u"frame1"_s), Qt::LeftButton, {}, QPoint(4, 4));
            else
                m_wait->close();
            isGone = !m_wait->isVisible();
        });
        poll.start(10ms);
        QVERIFY(m_busy->runReading(1, stop, [&](const ProgressReport &) {
            for (int i = 0; i < 15000 && !isGone; ++i)
                std::this_thread::sleep_for(2ms);
            std::this_thread::sleep_for(100ms);
        }));
        QVERIFY(isGone);
        QVERIFY(!stop.stop_requested());
    }
}

void TestBusy::closingTheMainWindowStopsReadingOnly()
{
    for (const bool isReading : {true, false}) {
        std::stop_source stop;
        std::atomic<bool> closed{false};
        QTimer::singleShot(30ms, m_main.get(), [&] {
            m_main->close();
            closed = true;
        });
        const auto work = [&](const ProgressReport &) {
            while (!closed)
                std::this_thread::sleep_for(1ms);
        };
        QVERIFY(isReading ? m_busy->runReading(1, stop, work) : m_busy->run(1, stop, work));
        QCOMPARE(stop.stop_requested(), isReading);
        QTRY_VERIFY(!m_main->isVisible());
        m_main->show();
    }
    QCOMPARE(m_main->closes, 2);
}

void TestBusy::bytesAreShownInsteadOfSteps()
{
    QVERIFY(m_busy->run(
        0, [](const ProgressReport &report) { report({.path = u"a.mp3"_s, .bytesDone = 1024, .bytesTotal = 4096}); }));
    QCOMPARE(4 * m_wait->value(), m_wait->maximum());
    const QLocale locale;
    QCOMPARE(m_wait->findChild<QLabel *>(u"count"_s)->text(),
        locale.formattedDataSize(1024, 1) + u" / "_s + locale.formattedDataSize(4096, 1));
    QCOMPARE(m_wait->findChild<QLabel *>(u"file"_s)->text(), u"a.mp3"_s);
}

void TestBusy::clicksAreDroppedForGood()
{
    QSignalSpy clicked(m_button, &QPushButton::clicked);
    during([&] { QTest::mouseClick(m_button, Qt::LeftButton); });
    QCOMPARE(clicked.count(), 0);
    QTest::qWait(50);
    QCOMPARE(clicked.count(), 0);
}

void TestBusy::nativeClicksAreDroppedForGood()
{
    QSignalSpy clicked(m_button, &QPushButton::clicked);
    during([&] { QTest::mouseClick(m_main->windowHandle(), Qt::LeftButton, {}, middleOfTheButton()); });
    QTest::qWait(50);
    QCOMPARE(clicked.count(), 0);
    QVERIFY(!m_button->isDown());
    QTest::mouseClick(m_main->windowHandle(), Qt::LeftButton, {}, middleOfTheButton());
    QCOMPARE(clicked.count(), 1);
}

void TestBusy::clicksLeftInTheQueueAreDropped()
{
    // The click comes while the windows stand still for a moment, in which the work ends.
    QSignalSpy clicked(m_button, &QPushButton::clicked);
    std::atomic<bool> over{false};
    QTimer::singleShot(30ms, m_main.get(), [&] {
        over = true;
        std::this_thread::sleep_for(50ms);
        const QPointF place = middleOfTheButton();
        for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
            const Qt::MouseButtons down = type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton;
            QCoreApplication::postEvent(m_main->windowHandle(),
                new QMouseEvent(type, place, place, m_main->mapToGlobal(place), Qt::LeftButton, down, {}));
        }
    });
    QVERIFY(m_busy->run(1, [&](const ProgressReport &) {
        while (!over)
            std::this_thread::sleep_for(1ms);
    }));
    QTest::qWait(50);
    QCOMPARE(clicked.count(), 0);
}

void TestBusy::keysAndShortcutsAreDropped()
{
    QShortcut shortcut(QKeySequence(Qt::CTRL | Qt::Key_K), m_main.get());
    QSignalSpy activated(&shortcut, &QShortcut::activated);
    QTest::keyClick(m_main->windowHandle(), Qt::Key_K, Qt::ControlModifier);
    QCOMPARE(activated.count(), 1);
    QTest::keyClicks(m_field, u"before"_s);
    during([&] {
        QTest::keyClicks(m_field, u"typed"_s);
        QTest::keyClick(m_main->windowHandle(), Qt::Key_X);
        QTest::keyClick(m_main->windowHandle(), Qt::Key_K, Qt::ControlModifier);
    });
    QTest::qWait(50);
    QCOMPARE(m_field->text(), u"before"_s);
    QCOMPARE(activated.count(), 1);
}

void TestBusy::buttonHeldBeforeIsReleasedAfterwards()
{
    // What acts at the press has its release come during the work.
    QSignalSpy clicked(m_button, &QPushButton::clicked);
    int clickedMeanwhile = -1;
    connect(m_button, &QPushButton::pressed, this, [&] {
        during([&] {
            QTest::mouseRelease(m_main->windowHandle(), Qt::LeftButton, {}, middleOfTheButton());
            clickedMeanwhile = int(clicked.count());
        });
    });
    QTest::mousePress(m_main->windowHandle(), Qt::LeftButton, {}, middleOfTheButton());
    QCOMPARE(clickedMeanwhile, 0);
    QTRY_COMPARE(clicked.count(), 1);
    QVERIFY(!m_button->isDown());
}

void TestBusy::waitWindowTakesInput()
{
    auto *inside = new QPushButton(m_wait);
    QSignalSpy clicked(inside, &QPushButton::clicked);
    during([&] {
        QTest::mouseClick(inside, Qt::LeftButton);
        QTest::keyClick(inside, Qt::Key_Space);
    });
    QCOMPARE(clicked.count(), 2);
}

void TestBusy::paintsMeanwhile()
{
    QTRY_VERIFY(m_main->paints > 0);
    int painted = 0;
    during([&] {
        const int before = m_main->paints;
        m_main->update();
        QCoreApplication::processEvents();
        painted = m_main->paints - before;
    });
    QVERIFY(painted > 0);
    // The same without any help: only the loop inside run() paints.
    const int before = m_main->paints;
    QTimer::singleShot(20ms, m_main.get(), [&] { m_main->update(); });
    int afterwards = 0;
    QVERIFY(m_busy->run(1, [&](const ProgressReport &) { std::this_thread::sleep_for(200ms); }));
    afterwards = m_main->paints;
    QVERIFY(afterwards > before);
}

void TestBusy::closingTheMainWindowWaits()
{
    during([&] {
        QVERIFY(!m_main->close());
        QVERIFY(m_main->isVisible());
        m_main->windowHandle()->close();
        QVERIFY(m_main->isVisible());
    });
    QCOMPARE(m_main->closes, 0);
    QVERIFY(m_main->isVisible()); // whoever ran the work may still use it
    QTRY_COMPARE(m_main->closes, 1);
    QVERIFY(!m_main->isVisible());
    QTest::qWait(20);
    QCOMPARE(m_main->closes, 1);
}

void TestBusy::closingAnotherWindowIsRefused()
{
    MainWindow other;
    other.show();
    during([&] { QVERIFY(!other.close()); });
    QTest::qWait(20);
    QVERIFY(other.isVisible());
    QCOMPARE(other.closes, 0);
    QVERIFY(other.close());
}

void TestBusy::inputWorksAgainAfterwards()
{
    during([] {});
    QSignalSpy clicked(m_button, &QPushButton::clicked);
    QTest::mouseClick(m_button, Qt::LeftButton);
    QTest::keyClicks(m_field, u"again"_s);
    QCOMPARE(clicked.count(), 1);
    QCOMPARE(m_field->text(), u"again"_s);
}

void TestBusy::nestedRunIsRefused()
{
    bool nestedRan = false;
    bool refused = false;
    bool running = false;
    during([&] {
        running = m_busy->isRunning();
        refused = !m_busy->run(5, [&](const ProgressReport &) { nestedRan = true; });
    });
    QVERIFY(running);
    QVERIFY(refused);
    QVERIFY(!nestedRan);
    QCOMPARE(m_wait->maximum(), 1); // the refused one has left the state alone
}

void TestBusy::manyRunsInARow()
{
    for (int i = 0; i < 300; ++i) {
        QVERIFY(m_busy->run(1, [&](const ProgressReport &report) {
            if (i % 50 == 0)
                std::this_thread::sleep_for(15ms);
            report({.done = 1, .path = {}});
        }));
        QCOMPARE(m_wait->value(), 1);
    }
}

void TestBusy::exceptionsReachTheCaller()
{
    for (const auto lasting : {0ms, 400ms}) {
        bool caught = false;
        try {
            m_busy->run(1, [&](const ProgressReport &) {
                std::this_thread::sleep_for(lasting);
                throw std::bad_alloc();
            });
        } catch (const std::bad_alloc &) {
            caught = true;
        }
        QVERIFY(caught);
        QVERIFY(!m_busy->isRunning());
        QVERIFY(!m_wait->isVisible());
        QVERIFY(!QGuiApplication::overrideCursor());
    }
    inputWorksAgainAfterwards();
}

void TestBusy::quitMeanwhileDoesNotCutTheWorkShort()
{
    bool ended = false;
    bool paintedAfterTheQuit = false;
    QTimer::singleShot(0, m_main.get(), [&] {
        QTimer::singleShot(20ms, m_main.get(), [&] {
            QCoreApplication::exit(0);
            QTimer::singleShot(50ms, m_main.get(), [&] { paintedAfterTheQuit = true; });
        });
        m_busy->run(1, [&](const ProgressReport &) {
            std::this_thread::sleep_for(200ms);
            ended = true;
        });
    });
    QCoreApplication::exec();
    QVERIFY(ended);
    QVERIFY(paintedAfterTheQuit);
}

void TestBusy::shortWorkIsNotSlowedDown()
{
    qint64 fastest = std::numeric_limits<qint64>::max();
    for (int i = 0; i < 50; ++i) {
        qint64 workItself = 0;
        QElapsedTimer whole;
        whole.start();
        QVERIFY(m_busy->run(1, [&](const ProgressReport &report) {
            QElapsedTimer timer;
            timer.start();
            while (timer.nsecsElapsed() < 1'000'000)
                std::this_thread::yield();
            report({.done = 1, .path = {}});
            workItself = timer.nsecsElapsed();
        }));
        fastest = std::min(fastest, whole.nsecsElapsed() - workItself);
    }
    qInfo("overhead of one run: %lld µs", static_cast<long long>(fastest / 1000));
    QVERIFY(fastest < 1'000'000);
}

void TestBusy::stepsAreCheap()
{
    constexpr int Steps = 100'000;
    const QString file = u"folder/file.mp3"_s;
    qint64 nanoseconds = 0;
    QVERIFY(m_busy->run(Steps, [&](const ProgressReport &report) {
        QElapsedTimer timer;
        timer.start();
        for (int i = 0; i < Steps; ++i)
            report({.done = i + 1, .path = file});
        nanoseconds = timer.nsecsElapsed();
    }));
    QCOMPARE(m_wait->value(), Steps);
    qInfo("one step: %lld ns", static_cast<long long>(nanoseconds / Steps));
    QVERIFY(nanoseconds / Steps < 20'000); // a painted step would take more
}

QTEST_MAIN(TestBusy)
#include "tst_busy.moc"
