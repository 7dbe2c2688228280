// SPDX-License-Identifier: GPL-3.0-or-later
// SplitPanel as a widget: its eight properties and their storage, mouse and keyboard, and panels placed as the layout
// rule says.

#include "ui/controls/splitpanel.h"

#include <QAccessible>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace ravlin;

class TestSplitPanel : public QObject
{
    Q_OBJECT

private:
    static constexpr int ExtentInPixels = 800; // 12000 twips

    std::unique_ptr<SplitPanel> m_split;
    QPushButton *m_first = nullptr;
    QPushButton *m_second = nullptr;
    QWidget *m_bar = nullptr;

    void drag(QPoint from, QPoint to);
    QPoint barCentre() const { return m_bar->geometry().center(); }

private Q_SLOTS:
    void init();
    void cleanup() { m_split.reset(); }

    void propertiesAndDefaults();
    void everySetterNotifies();
    void colorsFollowThePaletteUntilSet();
    void propertiesAreKeptUnderTheirNames();
    void propertiesAreReadFromText();
    void missingAndBrokenPropertiesTakeTheirDefaults();

    void panelsLieBesideTheBar();
    void stackedPanels();
    void notEnoughRoomPutsTheBarInTheMiddle();
    void positionIsCorrected();
    void settingThePositionUnsnaps();
    void snappedHidesAPanel();
    void resizingCorrectsThePosition();
    void positionSetBeforeTheFirstSizeIsKept();
    void rightToLeftChangesNothing();
    void panelsCanBeReplacedAndDeleted();
    void emptyPlacesAndOddSizes();

    void dragMovesOnlyTheBar();
    void releaseSetsThePosition();
    void dragAlongYWhenHorizontal();
    void onlyTheLeftButtonDrags();
    void snapsFirstPanelShut();
    void snapsSecondPanelShut();
    void doesNotSnapUnlessTold();
    void dragsOpenAgain();
    void barShowsItsColors();
    void barHasAResizeCursor();

    void keysMoveTheBar();
    void keysOpenAShutPanel();
    void wheelLeavesTheBarAlone();
    void focusGoesFirstPanelBarSecondPanel();
    void assistiveToolsSeeNameAndValue();
};

void TestSplitPanel::init()
{
    m_split = std::make_unique<SplitPanel>();
    m_first = new QPushButton;
    m_second = new QPushButton;
    m_split->setFirstPanel(m_first);
    m_split->setSecondPanel(m_second);
    m_split->resize(ExtentInPixels, 400);
    m_split->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_split.get()));
    m_bar = m_split->findChild<QWidget *>(u"pbSplit"_s);
    QVERIFY(m_bar);
}

/// Both points in the control's coordinates.
void TestSplitPanel::drag(QPoint from, QPoint to)
{
    QTest::mousePress(m_bar, Qt::LeftButton, {}, m_bar->mapFromParent(from));
    QTest::mouseMove(m_bar, m_bar->mapFromParent(to));
    QTest::mouseRelease(m_bar, Qt::LeftButton, {}, m_bar->mapFromParent(to));
}

void TestSplitPanel::propertiesAndDefaults()
{
    const SplitPanel split;
    QCOMPARE(split.property("MinPanelSize").toInt(), 2000);
    QCOMPARE(split.property("Horizontal").toBool(), false);
    QCOMPARE(split.property("SnapToEdge").toBool(), false);
    QCOMPARE(split.property("SplitterWidth").toInt(), 75);
    QCOMPARE(split.property("Position").toInt(), 3000);
    QCOMPARE(split.property("BackColor").value<QColor>(), split.palette().color(QPalette::Button));
    QCOMPARE(split.property("DragColor").value<QColor>(), split.palette().color(QPalette::ButtonText));
    QCOMPARE(split.property("Snapped").toInt(), 0);
}

void TestSplitPanel::everySetterNotifies()
{
    const std::pair<const char *, QVariant> values[] = {{"MinPanelSize", 1500}, {"Horizontal", true},
        {"SnapToEdge", true}, {"SplitterWidth", 90}, {"Position", 2700}, {"BackColor", QColor(Qt::red)},
        {"DragColor", QColor(Qt::blue)}, {"Snapped", 1}};
    const QMetaObject *meta = m_split->metaObject();
    for (const auto &[name, value] : values) {
        const QMetaProperty property = meta->property(meta->indexOfProperty(name));
        QSignalSpy spy(m_split.get(), property.notifySignal());
        QVERIFY2(property.write(m_split.get(), value), name);
        QVERIFY2(spy.count() >= 1, name);
        QCOMPARE(property.read(m_split.get()), value);
    }
}

void TestSplitPanel::colorsFollowThePaletteUntilSet()
{
    QPalette palette;
    palette.setColor(QPalette::Button, Qt::darkGreen);
    palette.setColor(QPalette::ButtonText, Qt::yellow);
    m_split->setPalette(palette);
    QCOMPARE(m_split->backColor(), QColor(Qt::darkGreen));
    QCOMPARE(m_split->dragColor(), QColor(Qt::yellow));

    m_split->setBackColor(Qt::red);
    m_split->setDragColor(Qt::blue);
    palette.setColor(QPalette::Button, Qt::darkBlue);
    m_split->setPalette(palette);
    QCOMPARE(m_split->backColor(), QColor(Qt::red));
    QCOMPARE(m_split->dragColor(), QColor(Qt::blue));

    m_split->resetBackColor();
    m_split->resetDragColor();
    QCOMPARE(m_split->backColor(), QColor(Qt::darkBlue));
    QCOMPARE(m_split->dragColor(), QColor(Qt::yellow));
}

void TestSplitPanel::propertiesAreKeptUnderTheirNames()
{
    m_split->setMinPanelSize(1500);
    m_split->setSnapToEdge(true);
    m_split->setSplitterWidth(90);
    m_split->setPosition(4500);
    m_split->setBackColor(QColor(1, 2, 3, 4));
    m_split->setHorizontal(true);
    m_split->setPosition(100);
    m_split->setSnapped(2);

    QVariantMap kept;
    QVariantMap defaults;
    m_split->writeProperties([&](const QString &name, const QVariant &value, const QVariant &defaultValue) {
        kept.insert(name, value);
        defaults.insert(name, defaultValue);
    });
    const QStringList names{u"BackColor"_s, u"DragColor"_s, u"Horizontal"_s, u"MinPanelSize"_s, u"Position"_s,
        u"SnapToEdge"_s, u"Snapped"_s, u"SplitterWidth"_s};
    QCOMPARE(kept.keys(), names);
    QCOMPARE(defaults.value(u"MinPanelSize"_s), QVariant(2000));
    QCOMPARE(defaults.value(u"Position"_s), QVariant(3000));
    QCOMPARE(kept.value(u"DragColor"_s), defaults.value(u"DragColor"_s));

    SplitPanel other;
    other.readProperties([&](const QString &name, const QVariant &) { return kept.value(name); });
    for (const QString &name : names)
        QCOMPARE(other.property(name.toLatin1().constData()), m_split->property(name.toLatin1().constData()));
}

void TestSplitPanel::propertiesAreReadFromText()
{
    m_split->setHorizontal(true);
    m_split->setPosition(2100);
    m_split->setDragColor(Qt::magenta);
    QMap<QString, QString> texts;
    m_split->writeProperties([&](const QString &name, const QVariant &value, const QVariant &defaultValue) {
        if (value != defaultValue)
            texts.insert(name, value.toString());
    });
    QCOMPARE(texts.keys(), (QStringList{u"DragColor"_s, u"Horizontal"_s, u"Position"_s}));

    SplitPanel other;
    other.readProperties([&](const QString &name, const QVariant &defaultValue) {
        return texts.contains(name) ? QVariant(texts.value(name)) : defaultValue;
    });
    QCOMPARE(other.isHorizontal(), true);
    QCOMPARE(other.position(), 2100);
    QCOMPARE(other.dragColor(), QColor(Qt::magenta));
    QCOMPARE(other.minPanelSize(), 2000);
}

void TestSplitPanel::missingAndBrokenPropertiesTakeTheirDefaults()
{
    m_split->setPosition(4000);
    m_split->setSnapToEdge(true);
    m_split->readProperties([](const QString &name, const QVariant &) {
        return name == u"Snapped" || name == u"Position" ? QVariant(u"rubbish"_s) : QVariant();
    });
    QCOMPARE(m_split->position(), 3000);
    QCOMPARE(m_split->snapToEdge(), false);
    QCOMPARE(m_split->snapped(), 0);
    QCOMPARE(m_split->backColor(), m_split->palette().color(QPalette::Button));
    m_split->setSnapped(7);
    QCOMPARE(m_split->snapped(), 0);
}

void TestSplitPanel::panelsLieBesideTheBar()
{
    QCOMPARE(m_split->position(), 3000);
    QCOMPARE(m_bar->geometry(), QRect(197, 0, 5, 400)); // 3000 - 37.5 twips
    QCOMPARE(m_first->geometry(), QRect(0, 0, 197, 400));
    QCOMPARE(m_second->geometry(), QRect(202, 0, 598, 400));
}

void TestSplitPanel::stackedPanels()
{
    m_split->setHorizontal(true);
    m_split->resize(500, 700);
    QCOMPARE(m_bar->geometry(), QRect(0, 197, 500, 5));
    QCOMPARE(m_first->geometry(), QRect(0, 0, 500, 197));
    QCOMPARE(m_second->geometry(), QRect(0, 202, 500, 498));
}

void TestSplitPanel::notEnoughRoomPutsTheBarInTheMiddle()
{
    m_split->resize(200, 400); // 3000 twips
    QCOMPARE(m_split->position(), 1500);
    QVERIFY(qAbs(barCentre().x() - 100) <= 1);
}

void TestSplitPanel::positionIsCorrected()
{
    m_split->setPosition(500);
    QCOMPARE(m_split->position(), 2000);
    m_split->setPosition(11000);
    QCOMPARE(m_split->position(), 10000);
}

void TestSplitPanel::settingThePositionUnsnaps()
{
    m_split->setSnapped(1);
    QVERIFY(!m_first->isVisible());
    QSignalSpy opened(m_split.get(), &SplitPanel::snappedChanged);
    m_split->setPosition(5000);
    QCOMPARE(m_split->snapped(), 0);
    QCOMPARE(opened.count(), 1);
    QVERIFY(m_first->isVisible());
    QVERIFY(m_second->isVisible());
}

void TestSplitPanel::snappedHidesAPanel()
{
    m_split->setSnapped(2);
    QVERIFY(m_first->isVisible());
    QVERIFY(!m_second->isVisible());
    m_split->setSnapped(1);
    QVERIFY(!m_first->isVisible());
    QVERIFY(m_second->isVisible());
    m_split->setSnapped(0);
    QVERIFY(m_first->isVisible());
    QVERIFY(m_second->isVisible());
}

void TestSplitPanel::resizingCorrectsThePosition()
{
    m_split->setPosition(9000);
    QSignalSpy moved(m_split.get(), &SplitPanel::positionChanged);
    m_split->resize(600, 400);
    QCOMPARE(m_split->position(), 7000);
    QCOMPARE(moved.count(), 1);
}

void TestSplitPanel::positionSetBeforeTheFirstSizeIsKept()
{
    QWidget window;
    auto *split = new SplitPanel(&window);
    split->setFirstPanel(new QWidget);
    split->setSecondPanel(new QWidget);
    split->setPosition(3800);
    QCOMPARE(split->position(), 3800);
    split->setGeometry(0, 0, 900, 300);
    window.resize(900, 300);
    window.show();
    QCOMPARE(split->position(), 3800);
    QCOMPARE(split->firstPanel()->width(), 251); // 3762 twips
}

void TestSplitPanel::rightToLeftChangesNothing()
{
    const QRect first = m_first->geometry();
    m_split->setLayoutDirection(Qt::RightToLeft);
    m_split->setPosition(3000);
    QCOMPARE(m_first->geometry(), first);
    m_bar->setFocus();
    QTest::keyClick(m_bar, Qt::Key_Right);
    QCOMPARE(m_split->position(), 3150);
}

void TestSplitPanel::panelsCanBeReplacedAndDeleted()
{
    auto *other = new QLineEdit;
    m_split->setSecondPanel(other);
    QVERIFY(!m_second->isVisible());
    QVERIFY(other->isVisible());
    QCOMPARE(other->geometry(), QRect(202, 0, 598, 400));
    delete other;
    m_split->setPosition(4000);
    QCOMPARE(m_split->secondPanel(), nullptr);
    m_split->setFirstPanel(nullptr);
    QVERIFY(!m_first->isVisible());
    m_split->setSnapped(1);
}

void TestSplitPanel::emptyPlacesAndOddSizes()
{
    SplitPanel split;
    split.resize(0, 0);
    split.setSplitterWidth(-10);
    split.setMinPanelSize(-10);
    split.resize(3, 3);
    split.show();
    split.setSplitterWidth(1'000'000'000);
    const QWidget *bar = split.findChild<QWidget *>(u"pbSplit"_s);
    QVERIFY(split.rect().contains(bar->geometry()));
    QVERIFY(split.sizeHint().isValid());
    QVERIFY(split.minimumSizeHint().isValid());
}

void TestSplitPanel::dragMovesOnlyTheBar()
{
    const QRect first = m_first->geometry();
    const QRect second = m_second->geometry();
    QTest::mousePress(m_bar, Qt::LeftButton, {}, m_bar->mapFromParent(QPoint(199, 50)));
    for (const int x : {210, 350, 300, 420}) {
        QTest::mouseMove(m_bar, m_bar->mapFromParent(QPoint(x, 50)));
        QVERIFY(qAbs(barCentre().x() - x) <= 1);
        QCOMPARE(m_bar->width(), 5);
        QCOMPARE(m_first->geometry(), first);
        QCOMPARE(m_second->geometry(), second);
        QCOMPARE(m_split->position(), 3000);
    }
    QTest::mouseMove(m_bar, m_bar->mapFromParent(QPoint(-500, 50)));
    QCOMPARE(m_bar->x(), 0);
    QTest::mouseRelease(m_bar, Qt::LeftButton, {}, m_bar->mapFromParent(QPoint(420, 50)));
    QCOMPARE(m_first->width(), m_bar->x());
}

void TestSplitPanel::releaseSetsThePosition()
{
    drag({199, 50}, {400, 60});
    // The pointer (6000 twips) plus half of the bar's thickness, rounded.
    QCOMPARE(m_split->position(), 6038);
    QCOMPARE(m_first->geometry(), QRect(0, 0, m_bar->x(), 400));
    drag(barCentre(), {20, 50});
    QCOMPARE(m_split->position(), 2000);
    drag(barCentre(), {790, 50});
    QCOMPARE(m_split->position(), 10000);
    QCOMPARE(m_split->snapped(), 0);
}

void TestSplitPanel::dragAlongYWhenHorizontal()
{
    m_split->setHorizontal(true);
    m_split->resize(400, 800);
    drag({50, 199}, {300, 400});
    QCOMPARE(m_split->position(), 6038);
    QCOMPARE(m_first->geometry(), QRect(0, 0, 400, m_bar->y()));
}

void TestSplitPanel::onlyTheLeftButtonDrags()
{
    QTest::mousePress(m_bar, Qt::RightButton);
    QTest::mouseMove(m_bar, QPoint(100, 0));
    QTest::mouseRelease(m_bar, Qt::RightButton, {}, QPoint(100, 0));
    QCOMPARE(m_split->position(), 3000);
    QCOMPARE(m_bar->x(), 197);
}

void TestSplitPanel::snapsFirstPanelShut()
{
    m_split->setSnapToEdge(true);
    QSignalSpy snapped(m_split.get(), &SplitPanel::Snapped);
    drag({199, 50}, {24, 50}); // 360 twips, half a bar behind it 398
    QVERIFY(!m_first->isVisible());
    QCOMPARE(m_split->position(), 0);
    QCOMPARE(m_split->snapped(), 1);
    QCOMPARE(m_bar->x(), 0);
    QCOMPARE(m_second->geometry(), QRect(5, 0, 795, 400));
    QCOMPARE(snapped.count(), 1);
    QCOMPARE(snapped.at(0).at(0).toInt(), 1);
}

void TestSplitPanel::snapsSecondPanelShut()
{
    m_split->setSnapToEdge(true);
    QSignalSpy snapped(m_split.get(), &SplitPanel::Snapped);
    drag({199, 50}, {771, 50}); // 11565 twips, half a bar behind it 11602
    QVERIFY(!m_second->isVisible());
    QCOMPARE(m_split->snapped(), 2);
    QCOMPARE(m_split->position(), 11962); // 12000 - 37.5
    QCOMPARE(m_bar->geometry().right(), ExtentInPixels - 1);
    QCOMPARE(snapped.count(), 1);
    QCOMPARE(snapped.at(0).at(0).toInt(), 2);
    // The bar follows the edge while the window shrinks.
    m_split->resize(700, 400);
    QCOMPARE(m_bar->geometry().right(), 699);
}

void TestSplitPanel::doesNotSnapUnlessTold()
{
    QSignalSpy snapped(m_split.get(), &SplitPanel::Snapped);
    drag({199, 50}, {2, 50});
    QCOMPARE(m_split->snapped(), 0);
    QCOMPARE(m_split->position(), 2000);
    QCOMPARE(snapped.count(), 0);
}

void TestSplitPanel::dragsOpenAgain()
{
    m_split->setSnapToEdge(true);
    drag({199, 50}, {5, 50});
    QCOMPARE(m_split->snapped(), 1);
    drag(barCentre(), {400, 50});
    QCOMPARE(m_split->snapped(), 0);
    QCOMPARE(m_split->position(), 6038);
    QVERIFY(m_first->isVisible());
}

void TestSplitPanel::barShowsItsColors()
{
    m_split->setBackColor(Qt::red);
    m_split->setDragColor(Qt::blue);
    const auto shown = [this] { return m_bar->grab().toImage().pixelColor(2, 20); };
    QCOMPARE(shown(), QColor(Qt::red));
    QTest::mousePress(m_bar, Qt::LeftButton);
    QCOMPARE(shown(), QColor(Qt::blue));
    QTest::mouseRelease(m_bar, Qt::LeftButton);
    QCOMPARE(shown(), QColor(Qt::red));
}

void TestSplitPanel::barHasAResizeCursor()
{
    QCOMPARE(m_bar->cursor().shape(), Qt::SplitHCursor);
    m_split->setHorizontal(true);
    QCOMPARE(m_bar->cursor().shape(), Qt::SplitVCursor);
}

void TestSplitPanel::keysMoveTheBar()
{
    QTest::keyClick(m_bar, Qt::Key_Right);
    QCOMPARE(m_split->position(), 3150);
    QTest::keyClick(m_bar, Qt::Key_Left);
    QTest::keyClick(m_bar, Qt::Key_Left);
    QCOMPARE(m_split->position(), 2850);
    QTest::keyClick(m_bar, Qt::Key_Up);
    QTest::keyClick(m_bar, Qt::Key_Down);
    QCOMPARE(m_split->position(), 2850);
    QTest::keyClick(m_bar, Qt::Key_Home);
    QCOMPARE(m_split->position(), 2000);
    QTest::keyClick(m_bar, Qt::Key_Left);
    QCOMPARE(m_split->position(), 2000);
    QTest::keyClick(m_bar, Qt::Key_End);
    QCOMPARE(m_split->position(), 10000);
    QCOMPARE(m_first->width(), m_bar->x());

    m_split->setHorizontal(true);
    m_split->resize(400, 800);
    m_split->setPosition(3000);
    QTest::keyClick(m_bar, Qt::Key_Down);
    QCOMPARE(m_split->position(), 3150);
    QTest::keyClick(m_bar, Qt::Key_Up);
    QCOMPARE(m_split->position(), 3000);
    QTest::keyClick(m_bar, Qt::Key_Right);
    QCOMPARE(m_split->position(), 3000);
}

void TestSplitPanel::keysOpenAShutPanel()
{
    m_split->setSnapToEdge(true);
    drag({199, 50}, {5, 50});
    QTest::keyClick(m_bar, Qt::Key_Home);
    QCOMPARE(m_split->snapped(), 1);
    QTest::keyClick(m_bar, Qt::Key_Right);
    QCOMPARE(m_split->snapped(), 0);
    QCOMPARE(m_split->position(), 2000);
    drag(barCentre(), {795, 50});
    QCOMPARE(m_split->snapped(), 2);
    QTest::keyClick(m_bar, Qt::Key_Left);
    QCOMPARE(m_split->snapped(), 0);
    QCOMPARE(m_split->position(), 10000);
}

void TestSplitPanel::wheelLeavesTheBarAlone()
{
    QWheelEvent wheel(
        QPointF(2, 20), m_bar->mapToGlobal(QPointF(2, 20)), {}, {0, 120}, Qt::NoButton, {}, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(m_bar, &wheel);
    QCOMPARE(m_split->position(), 3000);
}

void TestSplitPanel::focusGoesFirstPanelBarSecondPanel()
{
    m_split->activateWindow();
    m_first->setFocus();
    QTRY_VERIFY(m_first->hasFocus());
    QTest::keyClick(m_first, Qt::Key_Tab);
    QVERIFY(m_bar->hasFocus());
    const QImage focused = m_bar->grab().toImage();
    QTest::keyClick(m_bar, Qt::Key_Tab);
    QVERIFY(m_second->hasFocus());
    QVERIFY(m_bar->grab().toImage() != focused);
    QTest::mouseClick(m_bar, Qt::LeftButton);
    QVERIFY(m_second->hasFocus());
}

void TestSplitPanel::assistiveToolsSeeNameAndValue()
{
    m_split->setBarAccessibleName(u"folders and files"_s);
    QAccessibleInterface *bar = QAccessible::queryAccessibleInterface(m_bar);
    QVERIFY(bar && bar->valueInterface());
    QCOMPARE(bar->text(QAccessible::Name), u"folders and files"_s);
    QCOMPARE(bar->valueInterface()->currentValue().toInt(), 3000);
    QCOMPARE(bar->valueInterface()->minimumValue().toInt(), 2000);
    QCOMPARE(bar->valueInterface()->maximumValue().toInt(), 10000);
    bar->valueInterface()->setCurrentValue(4500);
    QCOMPARE(m_split->position(), 4500);
}

QTEST_MAIN(TestSplitPanel)
#include "tst_splitpanel.moc"
