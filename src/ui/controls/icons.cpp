// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controls/icons.h"

#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QPixmapCache>

#include <algorithm>
#include <array>
#include <utility>

namespace ravlin {

namespace {

constexpr std::array DrawingSizes{16, 24, 32, 48, 64};
/// The largest, 256, is for file managers, which take it from the installed files. Reading it would take as long as all
/// others together.
constexpr std::array ProgramSizes{16, 24, 32, 48, 64, 128};

QString fileOf(const QString &name, int size)
{
    return QStringLiteral(":/icons/%1/%2.png").arg(size).arg(name);
}

/// The smallest drawing that need not be enlarged, else the largest.
int drawingSizeFor(QSize wanted)
{
    const int edge = std::max(wanted.width(), wanted.height());
    const auto found =
        std::find_if(DrawingSizes.begin(), DrawingSizes.end(), [edge](int size) { return size >= edge; });
    return found == DrawingSizes.end() ? DrawingSizes.back() : *found;
}

/// A drawing in a colour. Reads and colours a size on its first use: a window shows its icons in one size and mostly
/// enabled.
class TintedIcon : public QIconEngine
{
public:
    TintedIcon(QString name, const QPalette &palette)
        : m_name(std::move(name)), m_normal(palette.color(QPalette::Active, QPalette::ButtonText)),
          m_disabled(palette.color(QPalette::Disabled, QPalette::ButtonText))
    {
    }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state) override
    {
        const qreal ratio = painter->device()->devicePixelRatioF();
        QPixmap drawing = pixmap(rect.size() * ratio, mode, state);
        drawing.setDevicePixelRatio(ratio);
        QRect place(QPoint(), drawing.deviceIndependentSize().toSize());
        place.moveCenter(rect.center());
        painter->drawPixmap(place, drawing);
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State) override
    {
        if (size.isEmpty())
            return {};
        const QColor colour = mode == QIcon::Disabled ? m_disabled : m_normal;
        const QString key = QStringLiteral("ravlin-icon %1 %2x%3 %4")
                                .arg(m_name)
                                .arg(size.width())
                                .arg(size.height())
                                .arg(colour.rgba(), 8, 16);
        QPixmap made;
        if (!QPixmapCache::find(key, &made)) {
            made = tinted(size, colour);
            QPixmapCache::insert(key, made);
        }
        return made;
    }

    QIconEngine *clone() const override { return new TintedIcon(*this); }
    QString key() const override { return QStringLiteral("ravlin tinted icon"); }
    bool isNull() override { return false; }
    QList<QSize> availableSizes(QIcon::Mode, QIcon::State) override
    {
        QList<QSize> sizes;
        for (const int size : DrawingSizes)
            sizes += QSize(size, size);
        return sizes;
    }

private:
    QPixmap tinted(QSize size, const QColor &colour) const
    {
        QPixmap drawing(fileOf(m_name, drawingSizeFor(size)));
        if (drawing.isNull())
            return drawing;
        if (drawing.width() > size.width() || drawing.height() > size.height())
            drawing = drawing.scaled(size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        QPainter painter(&drawing);
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(drawing.rect(), colour);
        return drawing;
    }

    QString m_name;
    QColor m_normal;
    QColor m_disabled;
};

} // namespace

QIcon themedIcon(const QString &name, const QPalette &palette)
{
    if (!QFile::exists(fileOf(name, DrawingSizes.front())))
        return {};
    return QIcon(new TintedIcon(name, palette)); // the icon owns its engine
}

QIcon programIcon()
{
    QIcon icon;
    for (const int size : ProgramSizes)
        icon.addFile(fileOf(QStringLiteral("ravlin"), size), QSize(size, size));
    return icon;
}

} // namespace ravlin
