// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/files/elidedtips.h"

#include <QHeaderView>
#include <QHelpEvent>
#include <QToolTip>

namespace ravlin {

bool ElidedTips::helpEvent(
    QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option, const QModelIndex &index)
{
    if (event->type() == QEvent::ToolTip && sizeHint(option, index).width() <= option.rect.width()) {
        QToolTip::hideText();
        return true;
    }
    return QStyledItemDelegate::helpEvent(event, view, option, index);
}

ElidedHeaderTips::ElidedHeaderTips(QHeaderView *header) : QObject(header), m_header(header)
{
    header->viewport()->installEventFilter(this);
}

bool ElidedHeaderTips::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::ToolTip)
        return QObject::eventFilter(watched, event);
    const auto *help = static_cast<QHelpEvent *>(event);
    const int section = m_header->logicalIndexAt(help->pos());
    if (section >= 0 && m_header->sectionSizeHint(section) > m_header->sectionSize(section)) {
        const QString text = m_header->model()->headerData(section, m_header->orientation()).toString();
        QToolTip::showText(help->globalPos(), text, m_header);
    } else {
        QToolTip::hideText();
    }
    return true;
}

} // namespace ravlin
