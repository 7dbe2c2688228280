#include "controls/ui/icons.h"

#include <QPainter>
#include <QPalette>
#include <QPixmap>

#include <array>

namespace ravlin {

namespace {

constexpr std::array DrawingSizes{16, 24, 32, 48, 64};
constexpr std::array ProgramSizes{16, 24, 32, 48, 64, 128, 256};

QPixmap tinted(const QPixmap &drawing, const QColor &colour)
{
    QPixmap pixmap = drawing;
    QPainter painter(&pixmap);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(pixmap.rect(), colour);
    return pixmap;
}

QPixmap drawing(const QString &name, int size)
{
    return QPixmap(QStringLiteral(":/icons/%1/%2.png").arg(size).arg(name));
}

} // namespace

QIcon themedIcon(const QString &name, const QPalette &palette)
{
    QIcon icon;
    for (const int size : DrawingSizes) {
        const QPixmap pixmap = drawing(name, size);
        if (pixmap.isNull())
            continue;
        icon.addPixmap(tinted(pixmap, palette.color(QPalette::Active, QPalette::ButtonText)), QIcon::Normal);
        icon.addPixmap(tinted(pixmap, palette.color(QPalette::Disabled, QPalette::ButtonText)), QIcon::Disabled);
    }
    return icon;
}

QIcon programIcon()
{
    QIcon icon;
    for (const int size : ProgramSizes)
        icon.addPixmap(drawing(QStringLiteral("ravlin"), size));
    return icon;
}

} // namespace ravlin
