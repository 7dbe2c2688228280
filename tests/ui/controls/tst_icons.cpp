// SPDX-License-Identifier: GPL-3.0-or-later
// Icons have the palette's colour and the requested size, and are grey if disabled.

#include "ui/controls/icons.h"

#include <QImage>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QTest>

using namespace ravlin;

class TestIcons : public QObject
{
    Q_OBJECT

private:
    static QPalette palette(const QColor &normal, const QColor &disabled)
    {
        QPalette palette;
        palette.setColor(QPalette::Active, QPalette::ButtonText, normal);
        palette.setColor(QPalette::Disabled, QPalette::ButtonText, disabled);
        return palette;
    }
    /// The colour of the opaque pixels; invalid if there are none or several colours.
    static QColor colourOf(const QImage &image)
    {
        QColor colour;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QColor pixel = image.pixelColor(x, y);
                if (pixel.alpha() < 255)
                    continue;
                if (colour.isValid() && pixel != colour)
                    return {};
                colour = pixel;
            }
        }
        return colour;
    }
    static QColor colourOf(const QPixmap &pixmap) { return colourOf(pixmap.toImage()); }

private Q_SLOTS:
    void anIconHasThePalettesColours()
    {
        const QIcon light = themedIcon(QStringLiteral("save"), palette(Qt::black, Qt::gray));
        QCOMPARE(colourOf(light.pixmap(24)), QColor(Qt::black));
        QCOMPARE(colourOf(light.pixmap(24, QIcon::Disabled)), QColor(Qt::gray));
        const QIcon dark = themedIcon(QStringLiteral("save"), palette(Qt::white, Qt::darkGray));
        QCOMPARE(colourOf(dark.pixmap(24)), QColor(Qt::white));
        QCOMPARE(colourOf(light.pixmap(24)), QColor(Qt::black)); // each keeps its own
    }

    void anIconIsAsLargeAsAskedForAndNeverBlown_data()
    {
        QTest::addColumn<int>("asked");
        QTest::addColumn<int>("given");
        QTest::newRow("16") << 16 << 16;
        QTest::newRow("made smaller") << 20 << 20;
        QTest::newRow("24") << 24 << 24;
        QTest::newRow("64") << 64 << 64;
        QTest::newRow("larger than any") << 200 << 64;
    }
    void anIconIsAsLargeAsAskedForAndNeverBlown()
    {
        QFETCH(int, asked);
        QFETCH(int, given);
        const QIcon icon = themedIcon(QStringLiteral("save"), palette(Qt::black, Qt::gray));
        QCOMPARE(icon.pixmap(QSize(asked, asked), 1.0).size(), QSize(given, given));
    }

    void sharpOnDenseScreens()
    {
        const QIcon icon = themedIcon(QStringLiteral("save"), palette(Qt::black, Qt::gray));
        const QPixmap dense = icon.pixmap(QSize(16, 16), 2.0);
        QCOMPARE(dense.size(), QSize(32, 32));
        QCOMPARE(dense.devicePixelRatio(), 2.0);
        QImage screen(64, 64, QImage::Format_ARGB32_Premultiplied);
        screen.setDevicePixelRatio(2.0);
        screen.fill(Qt::transparent);
        QPainter painter(&screen);
        icon.paint(&painter, QRect(0, 0, 32, 32));
        painter.end();
        QCOMPARE(colourOf(screen), QColor(Qt::black));
    }

    void anUnknownNameIsAnEmptyIcon() { QVERIFY(themedIcon(QStringLiteral("no such drawing"), {}).isNull()); }

    void theProgramHasItsIconInEverySizeOfATaskBar()
    {
        const QIcon icon = programIcon();
        for (const int size : {16, 24, 32, 48, 64, 128})
            QCOMPARE(icon.pixmap(QSize(size, size), 1.0).size(), QSize(size, size));
    }
};

QTEST_MAIN(TestIcons)
#include "tst_icons.moc"
